#pragma once

// Log-level gate shared by every service source. Each file defines LOG_TAG before including this.
// The level is read for every message, so changing the property takes effect without a restart.

#include <android/log.h>
#include <cutils/properties.h>

#include <cstdint>

namespace tps {

inline constexpr char kLogLevelProperty[] = "persist.vendor.tavix.loglevel";
inline constexpr int32_t kDefaultLogLevel = 2;

inline int32_t logLevel() {
    return property_get_int32(kLogLevelProperty, kDefaultLogLevel);
}

}  // namespace tps

#define TPS_LOG_AT_LEVEL(minLevel, priority, ...)                        \
    do {                                                                 \
        if (::tps::logLevel() >= (minLevel)) {                           \
            (void)__android_log_print((priority), LOG_TAG, __VA_ARGS__); \
        }                                                                \
    } while (0)

#define TPS_LOGV(...) TPS_LOG_AT_LEVEL(3, ANDROID_LOG_VERBOSE, __VA_ARGS__)
#define TPS_LOGD(...) TPS_LOG_AT_LEVEL(2, ANDROID_LOG_DEBUG, __VA_ARGS__)
#define TPS_LOGI(...) TPS_LOG_AT_LEVEL(1, ANDROID_LOG_INFO, __VA_ARGS__)
#define TPS_LOG_DUMP(...) TPS_LOG_AT_LEVEL(4, ANDROID_LOG_VERBOSE, __VA_ARGS__)
#define TPS_LOGW(...) ((void)__android_log_print(ANDROID_LOG_WARN, LOG_TAG, __VA_ARGS__))
#define TPS_LOGE(...) ((void)__android_log_print(ANDROID_LOG_ERROR, LOG_TAG, __VA_ARGS__))
