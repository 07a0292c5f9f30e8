#define LOG_TAG "LogTest"

#include <android/log.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <thread>
#include <vector>

#include "LogCapture.h"
#include "TpsLog.h"

namespace tps::test {
namespace {

// Runs `body` with stderr redirected to a file and returns what was written.
template <typename Body>
std::string captureStderr(Body body) {
    char path[] = "/tmp/tps-stderr-XXXXXX";
    int fd = mkstemp(path);
    EXPECT_GE(fd, 0);
    fflush(stderr);
    int saved = dup(STDERR_FILENO);
    dup2(fd, STDERR_FILENO);
    body();
    dup2(saved, STDERR_FILENO);
    close(saved);
    std::string out;
    char buf[4096];
    lseek(fd, 0, SEEK_SET);
    ssize_t n;
    while ((n = read(fd, buf, sizeof(buf))) > 0) out.append(buf, static_cast<size_t>(n));
    close(fd);
    unlink(path);
    return out;
}

struct ThreadtimeLine {
    char priority = 0;
    std::string tagField;  // the tag padded to at least 8 columns
    std::string message;
};

// Parses "MM-DD HH:MM:SS.mmm  PID  TID P TAG     : message".
bool parseThreadtime(const std::string& line, ThreadtimeLine& out) {
    int month, day, hour, minute, second, millis, pid, tid, end = -1;
    char priority;
    if (sscanf(line.c_str(), "%2d-%2d %2d:%2d:%2d.%3d %d %d %c %n", &month, &day, &hour, &minute,
               &second, &millis, &pid, &tid, &priority, &end) != 9 ||
        end < 0) {
        return false;
    }
    if (line[2] != '-' || line[14] != '.' || line[18] != ' ') return false;
    size_t colon = line.find(": ", static_cast<size_t>(end));
    if (colon == std::string::npos) return false;
    out.priority = priority;
    out.tagField = line.substr(static_cast<size_t>(end), colon - static_cast<size_t>(end));
    out.message = line.substr(colon + 2);
    return pid == getpid() && out.tagField.size() >= 8;
}

TEST(LogOutput, DefaultLoggerWritesThreadtimeLinesPerMessageLine) {
    std::string out = captureStderr([] {
        __android_log_print(ANDROID_LOG_WARN, "Tag", "two %s\nlines", "short");
        __android_log_write(ANDROID_LOG_ERROR, "AVeryLongTagName", "x");
    });
    std::vector<std::string> texts;
    size_t start = 0;
    while (start < out.size()) {
        size_t end = out.find('\n', start);
        ASSERT_NE(std::string::npos, end) << "unterminated line in:\n" << out;
        texts.push_back(out.substr(start, end - start));
        start = end + 1;
    }
    ASSERT_EQ(3u, texts.size()) << out;
    ThreadtimeLine line;
    ASSERT_TRUE(parseThreadtime(texts[0], line)) << texts[0];
    EXPECT_EQ('W', line.priority);
    EXPECT_EQ("Tag     ", line.tagField);
    EXPECT_EQ("two short", line.message);
    ASSERT_TRUE(parseThreadtime(texts[1], line)) << texts[1];
    EXPECT_EQ("lines", line.message);
    ASSERT_TRUE(parseThreadtime(texts[2], line)) << texts[2];
    EXPECT_EQ('E', line.priority);
    EXPECT_EQ("AVeryLongTagName", line.tagField);
}

TEST(LogOutput, ForkedChildWritesItsOwnProcessAndThreadIds) {
    pid_t child = -1;
    std::string out = captureStderr([&child] {
        __android_log_write(ANDROID_LOG_INFO, "Tag", "parent");
        child = fork();
        if (child == 0) {
            __android_log_write(ANDROID_LOG_INFO, "Tag", "child");
            _exit(0);
        }
        waitpid(child, nullptr, 0);
    });
    const size_t second = out.find('\n') + 1;
    int pid = 0, tid = 0;
    ASSERT_EQ(2, sscanf(out.c_str() + second, "%*s %*s %d %d", &pid, &tid)) << out;
    EXPECT_EQ(child, pid) << out;
    EXPECT_EQ(child, tid) << out;
}

TEST(LogOutput, ConcurrentWritersNeverInterleaveWithinALine) {
    constexpr int kThreads = 4;
    constexpr int kPerThread = 200;
    std::string out = captureStderr([] {
        std::vector<std::thread> threads;
        for (int t = 0; t < kThreads; ++t) {
            threads.emplace_back([t] {
                std::string body(100, static_cast<char>('a' + t));
                for (int i = 0; i < kPerThread; ++i) {
                    __android_log_print(ANDROID_LOG_INFO, "Race", "%s", body.c_str());
                }
            });
        }
        for (auto& thread : threads) thread.join();
    });
    size_t start = 0;
    int count = 0;
    while (start < out.size()) {
        size_t end = out.find('\n', start);
        std::string text = out.substr(start, end - start);
        ThreadtimeLine line;
        ASSERT_TRUE(parseThreadtime(text, line)) << text;
        EXPECT_EQ('I', line.priority);
        EXPECT_EQ("Race    ", line.tagField);
        ASSERT_EQ(100u, line.message.size()) << text;
        EXPECT_EQ(std::string(100, line.message[0]), line.message) << text;
        ++count;
        start = end + 1;
    }
    EXPECT_EQ(kThreads * kPerThread, count);
}

TEST(LogApi, ReturnValuesLoggabilityAndTruncation) {
    LogCapture log;
    EXPECT_EQ(1, __android_log_write(ANDROID_LOG_INFO, "T", "m"));

    int32_t old = __android_log_set_minimum_priority(ANDROID_LOG_WARN);
    EXPECT_EQ(0, __android_log_is_loggable(ANDROID_LOG_INFO, "T", ANDROID_LOG_VERBOSE));
    EXPECT_LT(__android_log_print(ANDROID_LOG_INFO, "T", "dropped"), 0);
    EXPECT_EQ(1, __android_log_print(ANDROID_LOG_ERROR, "T", "kept"));
    __android_log_set_minimum_priority(old);

    // Formatted messages are cut to the device's 1024-byte buffer; plain writes are not.
    std::string longText(3000, 'x');
    __android_log_print(ANDROID_LOG_INFO, "T", "%s", longText.c_str());
    __android_log_write(ANDROID_LOG_INFO, "T", longText.c_str());

    auto lines = log.lines();
    ASSERT_EQ(4u, lines.size()) << log.dump();
    EXPECT_EQ("kept", lines[1].text);
    EXPECT_EQ(1023u, lines[2].text.size());
    EXPECT_EQ(3000u, lines[3].text.size());
}

TEST(LogCaptureTest, RecordsEveryLineFromConcurrentThreads) {
    LogCapture log;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([t] {
            for (int i = 0; i < 250; ++i) {
                __android_log_print(ANDROID_LOG_INFO, "T", "thread %d line %d", t, i);
            }
        });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(1000u, log.lines().size());
    EXPECT_EQ(250u, log.countContaining("thread 3 line"));
    EXPECT_EQ(1u, log.count(ANDROID_LOG_INFO, "T", "thread 2 line 249"));
}

class TpsLogLevels : public LoggingTest {
protected:
    void logAll() {
        TPS_LOGV("v");
        TPS_LOGD("d");
        TPS_LOGI("i");
        TPS_LOGW("w");
        TPS_LOGE("e");
        TPS_LOG_DUMP("dump");
    }
    std::string letters() {
        std::string s;
        for (const LogLine& line : mLog.lines()) {
            EXPECT_EQ("LogTest", line.tag);
            s += line.text + "/" + std::to_string(line.priority) + " ";
        }
        mLog.clear();
        return s;
    }
};

TEST_F(TpsLogLevels, LevelIsReadForEveryMessage) {
    logAll();  // unset property: level 2
    EXPECT_EQ("d/3 i/4 w/5 e/6 ", letters());
    mProperties.setLogLevel(0);
    logAll();
    EXPECT_EQ("w/5 e/6 ", letters());
    mProperties.setLogLevel(1);
    logAll();
    EXPECT_EQ("i/4 w/5 e/6 ", letters());
    mProperties.setLogLevel(3);
    logAll();
    EXPECT_EQ("v/2 d/3 i/4 w/5 e/6 ", letters());
    mProperties.setLogLevel(4);
    logAll();
    EXPECT_EQ("v/2 d/3 i/4 w/5 e/6 dump/2 ", letters());
    mProperties.set("persist.vendor.tavix.loglevel", "junk");
    logAll();
    EXPECT_EQ("d/3 i/4 w/5 e/6 ", letters());
}

}  // namespace
}  // namespace tps::test
