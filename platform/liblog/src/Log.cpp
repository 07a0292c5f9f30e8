// Host implementation of the platform log. Lines go to stderr in logcat's "threadtime" layout so
// that host runs read like a device's logcat; tests swap the logger to capture messages instead.

#include <android/log.h>
#include <errno.h>
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <mutex>
#include <string>

namespace {

// Same formatting buffer size as the device's printf-style entry points: longer text is cut.
constexpr size_t kFormatBufferSize = 1024;

std::atomic<__android_logger_function> gLogger{__android_log_logd_logger};
std::atomic<__android_aborter_function> gAborter{__android_log_default_aborter};
std::atomic<int32_t> gMinimumPriority{ANDROID_LOG_DEFAULT};

std::mutex gDefaultTagLock;
std::string gDefaultTag;  // GUARDED_BY(gDefaultTagLock); empty means the program name

// Serialises writers inside this process; each message also leaves in one write() so lines from
// different processes sharing the stream are not interleaved mid-line for ordinary lengths.
std::mutex gStderrLock;

std::string defaultTag() {
    std::lock_guard<std::mutex> lock(gDefaultTagLock);
    if (!gDefaultTag.empty()) return gDefaultTag;
    return program_invocation_short_name;
}

char priorityLetter(int32_t priority) {
    switch (priority) {
        case ANDROID_LOG_VERBOSE:
            return 'V';
        case ANDROID_LOG_DEBUG:
            return 'D';
        case ANDROID_LOG_INFO:
            return 'I';
        case ANDROID_LOG_WARN:
            return 'W';
        case ANDROID_LOG_ERROR:
            return 'E';
        case ANDROID_LOG_FATAL:
            return 'F';
        case ANDROID_LOG_SILENT:
            return 'S';
        default:
            return '?';
    }
}

void writeAll(int fd, const std::string& data) {
    size_t done = 0;
    while (done < data.size()) {
        ssize_t n = write(fd, data.data() + done, data.size() - done);
        if (n < 0) {
            if (errno == EINTR) continue;
            return;
        }
        done += static_cast<size_t>(n);
    }
}

// What every line's prefix repeats, kept per thread: two system calls and a local-time
// conversion per message cost more than the rest of a log line on a host (about 1 us a syscall).
struct ThreadIds {
    int pid = 0;
    int tid = 0;
    time_t second = -1;
    char stamp[32] = "";
};
thread_local ThreadIds tIds;

// A forked child is one thread whose ids differ from the parent's; drop what that thread cached.
void forgetIdsInChild() {
    tIds = ThreadIds{};
}

ThreadIds& threadIds() {
    static const bool registered = pthread_atfork(nullptr, nullptr, forgetIdsInChild) == 0;
    (void)registered;
    if (tIds.tid == 0) {
        tIds.pid = static_cast<int>(getpid());
        tIds.tid = static_cast<int>(syscall(SYS_gettid));
    }
    return tIds;
}

// "MM-DD HH:MM:SS.mmm  PID  TID P TAG     : " once per line of the message, as logcat prints.
void writeThreadtime(const __android_log_message* m) {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    ThreadIds& ids = threadIds();
    if (ids.second != now.tv_sec) {
        tm local{};
        localtime_r(&now.tv_sec, &local);
        strftime(ids.stamp, sizeof(ids.stamp), "%m-%d %H:%M:%S", &local);
        ids.second = now.tv_sec;
    }

    char prefix[128];
    snprintf(prefix, sizeof(prefix), "%s.%03ld %5d %5d %c %-8s: ", ids.stamp, now.tv_nsec / 1000000,
             ids.pid, ids.tid, priorityLetter(m->priority), m->tag != nullptr ? m->tag : "");

    std::string out;
    const char* text = m->message != nullptr ? m->message : "";
    const char* lineStart = text;
    while (true) {
        const char* nl = strchr(lineStart, '\n');
        size_t len = nl != nullptr ? static_cast<size_t>(nl - lineStart) : strlen(lineStart);
        out += prefix;
        out.append(lineStart, len);
        out += '\n';
        if (nl == nullptr || nl[1] == '\0') break;
        lineStart = nl + 1;
    }

    int savedErrno = errno;
    {
        std::lock_guard<std::mutex> lock(gStderrLock);
        writeAll(STDERR_FILENO, out);
    }
    errno = savedErrno;
}

}  // namespace

extern "C" {

void __android_log_logd_logger(const struct __android_log_message* log_message) {
    writeThreadtime(log_message);
}

void __android_log_stderr_logger(const struct __android_log_message* log_message) {
    writeThreadtime(log_message);
}

// Passing null restores the default logger (the device would crash; the host is kinder to tests).
void __android_log_set_logger(__android_logger_function logger) {
    gLogger.store(logger != nullptr ? logger : __android_log_logd_logger);
}

void __android_log_write_log_message(struct __android_log_message* log_message) {
    if (log_message == nullptr) return;
    std::string tag;
    if (log_message->tag == nullptr) {
        tag = defaultTag();
        log_message->tag = tag.c_str();
    }
    gLogger.load()(log_message);
}

int __android_log_is_loggable_len(int prio, const char* /*tag*/, size_t /*len*/, int default_prio) {
    int32_t minimum = gMinimumPriority.load();
    int threshold = minimum != ANDROID_LOG_DEFAULT ? minimum : default_prio;
    return prio >= threshold ? 1 : 0;
}

int __android_log_is_loggable(int prio, const char* tag, int default_prio) {
    return __android_log_is_loggable_len(prio, tag, tag != nullptr ? strlen(tag) : 0, default_prio);
}

int32_t __android_log_set_minimum_priority(int32_t priority) {
    return gMinimumPriority.exchange(priority);
}

int32_t __android_log_get_minimum_priority(void) {
    return gMinimumPriority.load();
}

void __android_log_set_default_tag(const char* tag) {
    std::lock_guard<std::mutex> lock(gDefaultTagLock);
    gDefaultTag = tag != nullptr ? tag : "";
}

int __android_log_buf_write(int bufID, int prio, const char* tag, const char* text) {
    if (!__android_log_is_loggable(prio, tag, ANDROID_LOG_VERBOSE)) return -EPERM;
    int savedErrno = errno;
    __android_log_message message = {
            sizeof(__android_log_message), bufID, prio, tag, nullptr, 0, text};
    __android_log_write_log_message(&message);
    errno = savedErrno;
    return 1;
}

int __android_log_write(int prio, const char* tag, const char* text) {
    return __android_log_buf_write(LOG_ID_MAIN, prio, tag, text);
}

int __android_log_vprint(int prio, const char* tag, const char* fmt, va_list ap) {
    if (!__android_log_is_loggable(prio, tag, ANDROID_LOG_VERBOSE)) return -EPERM;
    char buffer[kFormatBufferSize];
    vsnprintf(buffer, sizeof(buffer), fmt, ap);
    return __android_log_write(prio, tag, buffer);
}

int __android_log_print(int prio, const char* tag, const char* fmt, ...) {
    va_list ap;
    va_start(ap, fmt);
    int result = __android_log_vprint(prio, tag, fmt, ap);
    va_end(ap);
    return result;
}

int __android_log_buf_print(int bufID, int prio, const char* tag, const char* fmt, ...) {
    if (!__android_log_is_loggable(prio, tag, ANDROID_LOG_VERBOSE)) return -EPERM;
    char buffer[kFormatBufferSize];
    va_list ap;
    va_start(ap, fmt);
    vsnprintf(buffer, sizeof(buffer), fmt, ap);
    va_end(ap);
    return __android_log_buf_write(bufID, prio, tag, buffer);
}

void __android_log_set_aborter(__android_aborter_function aborter) {
    gAborter.store(aborter != nullptr ? aborter : __android_log_default_aborter);
}

void __android_log_default_aborter(const char* abort_message) {
    if (abort_message != nullptr) {
        std::lock_guard<std::mutex> lock(gStderrLock);
        writeAll(STDERR_FILENO, std::string("abort: ") + abort_message + "\n");
    }
    abort();
}

void __android_log_call_aborter(const char* abort_message) {
    gAborter.load()(abort_message);
}

void __android_log_assert(const char* cond, const char* tag, const char* fmt, ...) {
    char buffer[kFormatBufferSize];
    if (fmt != nullptr) {
        va_list ap;
        va_start(ap, fmt);
        vsnprintf(buffer, sizeof(buffer), fmt, ap);
        va_end(ap);
    } else if (cond != nullptr) {
        snprintf(buffer, sizeof(buffer), "Assertion failed: %s", cond);
    } else {
        snprintf(buffer, sizeof(buffer), "Unspecified assertion failed");
    }
    __android_log_write(ANDROID_LOG_FATAL, tag, buffer);
    __android_log_call_aborter(buffer);
    abort();  // a custom aborter that returns must not let the caller continue
}

}  // extern "C"
