#pragma once

#include <android/log.h>

namespace abinder {

inline constexpr const char* kLogTag = "libbinder_ndk";

// Logs at fatal priority and aborts: for API misuse that Android treats as a programming error.
[[noreturn]] void fatal(const char* fmt, ...) __attribute__((__format__(printf, 1, 2)));

}  // namespace abinder

#define BINDER_LOGE(...) __android_log_print(ANDROID_LOG_ERROR, ::abinder::kLogTag, __VA_ARGS__)
#define BINDER_LOGW(...) __android_log_print(ANDROID_LOG_WARN, ::abinder::kLogTag, __VA_ARGS__)
#define BINDER_LOGI(...) __android_log_print(ANDROID_LOG_INFO, ::abinder::kLogTag, __VA_ARGS__)
