#include "TpsctlFormat.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>

namespace tpsctl {

namespace {

constexpr const char* kStatusLabels[] = {
        "brightness", "reserved",     "pqMode",        "displayID",
        "ambientLux", "displayWidth", "displayHeight",
};
constexpr size_t kStatusSize = sizeof(kStatusLabels) / sizeof(kStatusLabels[0]);

// Integral values print without decimals; lux keeps two.
std::string formatValue(float value, bool fractional) {
    char text[64];
    snprintf(text, sizeof(text), fractional ? "%.2f" : "%.0f", static_cast<double>(value));
    return text;
}

const char* statusName(int32_t status) {
    switch (status) {
        case -12:
            return "STATUS_NO_MEMORY";
        case -38:
            return "STATUS_INVALID_OPERATION";
        case -22:
            return "STATUS_BAD_VALUE";
        case INT32_MIN + 1:
            return "STATUS_BAD_TYPE";
        case -2:
            return "STATUS_NAME_NOT_FOUND";
        case -1:
            return "STATUS_PERMISSION_DENIED";
        case -19:
            return "STATUS_NO_INIT";
        case -32:
            return "STATUS_DEAD_OBJECT";
        case INT32_MIN + 2:
            return "STATUS_FAILED_TRANSACTION";
        case -61:
            return "STATUS_NOT_ENOUGH_DATA";
        case -110:
            return "STATUS_TIMED_OUT";
        case -74:
            return "STATUS_UNKNOWN_TRANSACTION";
        case INT32_MIN + 8:
            return "STATUS_UNEXPECTED_NULL";
        default:
            return "STATUS_UNKNOWN_ERROR";
    }
}

const char* exceptionName(int32_t exception) {
    switch (exception) {
        case -1:
            return "EX_SECURITY";
        case -2:
            return "EX_BAD_PARCELABLE";
        case -3:
            return "EX_ILLEGAL_ARGUMENT";
        case -4:
            return "EX_NULL_POINTER";
        case -5:
            return "EX_ILLEGAL_STATE";
        case -6:
            return "EX_NETWORK_MAIN_THREAD";
        case -7:
            return "EX_UNSUPPORTED_OPERATION";
        case -9:
            return "EX_PARCELABLE";
        default:
            return "EX_UNKNOWN";
    }
}

}  // namespace

std::string formatStatus(const std::vector<float>& status) {
    std::string text;
    for (size_t i = 0; i < status.size(); ++i) {
        std::string label = i < kStatusSize ? kStatusLabels[i] : "value" + std::to_string(i);
        label.resize(std::max<size_t>(label.size(), 15), ' ');
        text += label + formatValue(status[i], i == 4) + "\n";
    }
    if (status.size() != kStatusSize) {
        text += "(the service sent " + std::to_string(status.size()) + " values, expected " +
                std::to_string(kStatusSize) + ")\n";
    }
    return text;
}

std::string formatStatusLine(const std::vector<float>& status) {
    if (status.size() < kStatusSize)
        return "status with " + std::to_string(status.size()) + " values";
    return "lux " + formatValue(status[4], true) + "  brightness " + formatValue(status[0], false) +
           "  pqMode " + formatValue(status[2], false) + "  display " +
           formatValue(status[3], false);
}

std::string formatReply(const std::string& reply) {
    std::vector<std::string> pairs;
    size_t start = 0;
    while (start <= reply.size()) {
        size_t end = reply.find(';', start);
        if (end == std::string::npos) end = reply.size();
        if (end > start) pairs.push_back(reply.substr(start, end - start));
        start = end + 1;
    }
    std::sort(pairs.begin(), pairs.end());
    std::string text;
    for (const auto& pair : pairs) text += pair + "\n";
    return text;
}

std::string formatCallFailure(const std::string& method, int32_t exceptionCode, int32_t statusCode,
                              int32_t serviceSpecificError, const std::string& message) {
    constexpr int32_t kServiceSpecific = -8;
    constexpr int32_t kTransactionFailed = -129;
    std::string text = method + " failed: ";
    if (exceptionCode == kTransactionFailed) {
        text += "binder status " + std::to_string(statusCode) + " (" + statusName(statusCode) + ")";
    } else if (exceptionCode == kServiceSpecific) {
        text += "service-specific error " + std::to_string(serviceSpecificError);
    } else {
        text += "exception " + std::to_string(exceptionCode) + " (" + exceptionName(exceptionCode) +
                ")";
    }
    if (!message.empty()) text += ": " + message;
    return text;
}

std::string formatTimeOfDay(const timespec& realtime) {
    tm local{};
    localtime_r(&realtime.tv_sec, &local);
    char text[32];
    snprintf(text, sizeof(text), "%02d:%02d:%02d.%03ld", local.tm_hour, local.tm_min, local.tm_sec,
             static_cast<long>(realtime.tv_nsec / 1000000));
    return text;
}

}  // namespace tpsctl
