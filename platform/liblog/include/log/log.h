#pragma once

// Host stand-in for the platform's <log/log.h> convenience macros.

#include <android/log.h>

#ifndef LOG_NDEBUG
#ifdef NDEBUG
#define LOG_NDEBUG 1
#else
#define LOG_NDEBUG 0
#endif
#endif

#ifndef LOG_TAG
#define LOG_TAG NULL
#endif

#define ALOG(priority, tag, ...) __android_log_print(ANDROID_##priority, tag, __VA_ARGS__)
#define LOG_PRI(priority, tag, ...) __android_log_print(priority, tag, __VA_ARGS__)

#define ALOGE(...) ((void)ALOG(LOG_ERROR, LOG_TAG, __VA_ARGS__))
#define ALOGW(...) ((void)ALOG(LOG_WARN, LOG_TAG, __VA_ARGS__))
#define ALOGI(...) ((void)ALOG(LOG_INFO, LOG_TAG, __VA_ARGS__))
#define ALOGD(...) ((void)ALOG(LOG_DEBUG, LOG_TAG, __VA_ARGS__))

// Kept type-checked but never evaluated when compiled out.
#if LOG_NDEBUG
#define ALOGV(...)                                           \
    do {                                                     \
        if (0) {                                             \
            ((void)ALOG(LOG_VERBOSE, LOG_TAG, __VA_ARGS__)); \
        }                                                    \
    } while (0)
#else
#define ALOGV(...) ((void)ALOG(LOG_VERBOSE, LOG_TAG, __VA_ARGS__))
#endif

#define ALOGE_IF(cond, ...) ((cond) ? ALOGE(__VA_ARGS__) : (void)0)
#define ALOGW_IF(cond, ...) ((cond) ? ALOGW(__VA_ARGS__) : (void)0)
#define ALOGI_IF(cond, ...) ((cond) ? ALOGI(__VA_ARGS__) : (void)0)
#define ALOGD_IF(cond, ...) ((cond) ? ALOGD(__VA_ARGS__) : (void)0)

#define LOG_ALWAYS_FATAL(...) __android_log_assert(NULL, LOG_TAG, __VA_ARGS__)
#define LOG_ALWAYS_FATAL_IF(cond, ...) \
    ((cond) ? __android_log_assert(#cond, LOG_TAG, __VA_ARGS__) : (void)0)
#if LOG_NDEBUG
#define LOG_FATAL_IF(cond, ...) ((void)0)
#else
#define LOG_FATAL_IF(cond, ...) LOG_ALWAYS_FATAL_IF(cond, __VA_ARGS__)
#endif
#define ALOG_ASSERT(cond, ...) LOG_FATAL_IF(!(cond), __VA_ARGS__)
