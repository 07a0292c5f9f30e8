#include "LogCapture.h"

#include <cutils/properties.h>
#include <stdlib.h>

#include <filesystem>
#include <mutex>
#include <sstream>

namespace tps::test {

namespace {

// Held by the logger callback while it appends, so a capture is never destroyed under a writer.
std::mutex gCaptureLock;
LogCapture* gActive = nullptr;  // GUARDED_BY(gCaptureLock)

char letter(int priority) {
    static const char kLetters[] = "??VDIWEFS";
    return priority >= 0 && priority <= ANDROID_LOG_SILENT ? kLetters[priority] : '?';
}

}  // namespace

LogCapture::LogCapture(bool echo) : mEcho(echo) {
    {
        std::lock_guard<std::mutex> lock(gCaptureLock);
        if (gActive != nullptr) {
            ADD_FAILURE() << "two LogCapture objects alive at once";
            return;
        }
        gActive = this;
    }
    __android_log_set_logger(&LogCapture::record);
}

LogCapture::~LogCapture() {
    std::lock_guard<std::mutex> lock(gCaptureLock);
    if (gActive != this) return;
    gActive = nullptr;
    __android_log_set_logger(__android_log_logd_logger);
}

void LogCapture::record(const __android_log_message* message) {
    std::lock_guard<std::mutex> lock(gCaptureLock);
    if (gActive == nullptr) {
        __android_log_logd_logger(message);
        return;
    }
    if (gActive->mEcho) __android_log_logd_logger(message);
    gActive->mLines.push_back({message->priority, message->tag != nullptr ? message->tag : "",
                               message->message != nullptr ? message->message : ""});
}

std::vector<LogLine> LogCapture::lines() const {
    std::lock_guard<std::mutex> lock(gCaptureLock);
    return mLines;
}

std::vector<LogLine> LogCapture::linesWithTag(const std::string& tag) const {
    std::vector<LogLine> out;
    for (const LogLine& line : lines()) {
        if (line.tag == tag) out.push_back(line);
    }
    return out;
}

void LogCapture::clear() {
    std::lock_guard<std::mutex> lock(gCaptureLock);
    mLines.clear();
}

size_t LogCapture::count(int priority, const std::string& tag, const std::string& text) const {
    size_t n = 0;
    for (const LogLine& line : lines()) {
        if (line.priority == priority && line.tag == tag && line.text == text) ++n;
    }
    return n;
}

size_t LogCapture::countContaining(const std::string& fragment) const {
    size_t n = 0;
    for (const LogLine& line : lines()) {
        if (line.text.find(fragment) != std::string::npos) ++n;
    }
    return n;
}

::testing::AssertionResult LogCapture::has(int priority, const std::string& tag,
                                           const std::string& text) const {
    if (count(priority, tag, text) > 0) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure()
           << "no line " << letter(priority) << "/" << tag << ": \"" << text << "\"; captured:\n"
           << dump();
}

::testing::AssertionResult LogCapture::hasOnce(int priority, const std::string& tag,
                                               const std::string& text) const {
    size_t n = count(priority, tag, text);
    if (n == 1) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << n << " lines " << letter(priority) << "/" << tag
                                         << ": \"" << text << "\" (want 1); captured:\n"
                                         << dump();
}

::testing::AssertionResult LogCapture::hasNoneContaining(const std::string& fragment) const {
    if (countContaining(fragment) == 0) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure()
           << "unexpected line containing \"" << fragment << "\"; captured:\n"
           << dump();
}

std::string LogCapture::dump() const {
    std::ostringstream out;
    for (const LogLine& line : lines()) {
        out << "  " << letter(line.priority) << "/" << line.tag << ": " << line.text << "\n";
    }
    return out.str();
}

ScopedPropertyDir::ScopedPropertyDir() {
    const char* previous = getenv("TPS_PROPERTY_DIR");
    if (previous != nullptr) {
        mHadPrevious = true;
        mPrevious = previous;
    }
    std::string pattern = (std::filesystem::temp_directory_path() / "tps-props-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) {
        ADD_FAILURE() << "cannot create a temporary property directory";
        return;
    }
    mPath = pattern;
    setenv("TPS_PROPERTY_DIR", mPath.c_str(), 1);
}

ScopedPropertyDir::~ScopedPropertyDir() {
    if (mHadPrevious) {
        setenv("TPS_PROPERTY_DIR", mPrevious.c_str(), 1);
    } else {
        unsetenv("TPS_PROPERTY_DIR");
    }
    if (!mPath.empty()) {
        std::error_code ignored;
        std::filesystem::remove_all(mPath, ignored);
    }
}

void ScopedPropertyDir::set(const std::string& name, const std::string& value) {
    EXPECT_EQ(0, property_set(name.c_str(), value.c_str())) << name << "=" << value;
}

std::string ScopedPropertyDir::get(const std::string& name) const {
    char value[PROPERTY_VALUE_MAX];
    property_get(name.c_str(), value, "");
    return value;
}

void ScopedPropertyDir::setLogLevel(int level) {
    set("persist.vendor.tavix.loglevel", std::to_string(level));
}

}  // namespace tps::test
