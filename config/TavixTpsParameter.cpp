#define LOG_TAG "TavixTpsParameter"

#include "TavixTpsParameter.h"

#include <android/log.h>
#include <string.h>

#include <cerrno>
#include <cfloat>
#include <cstdint>
#include <cstdlib>

namespace {

// The getters report under the service's tag, not this file's.
constexpr char kGetterTag[] = "TavixPrismAIDLService";

bool isBlank(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

void warnIfTrailingText(const char* end, const char* message, const char* item) {
    for (const char* p = end; *p != '\0'; ++p) {
        if (!isBlank(*p)) {
            __android_log_print(ANDROID_LOG_WARN, kGetterTag, message, item);
            return;
        }
    }
}

// `whole` is what the failure message quotes: the full value, also when `item` is one list item.
bool parseIntegral(const char* item, const char* whole, int& out) {
    errno = 0;
    char* end = nullptr;
    long long value = strtoll(item, &end, 10);
    if (end == item || errno == ERANGE) {
        __android_log_print(ANDROID_LOG_ERROR, kGetterTag,
                            "try to get Integral value failed from: %s", whole);
        return false;
    }
    if (value < INT32_MIN || value > INT32_MAX) {
        __android_log_print(ANDROID_LOG_WARN, kGetterTag,
                            "tryParseIntegralString: out of range: %s", item);
    }
    warnIfTrailingText(end, "tryParseIntegralString: extra characters: %s", item);
    // Out-of-range values keep their low 32 bits on purpose.
    out = static_cast<int32_t>(static_cast<uint32_t>(value));
    return true;
}

bool parseFloating(const char* text, float& out) {
    errno = 0;
    char* end = nullptr;
    double value = strtod(text, &end);
    if (end == text || errno == ERANGE) {
        __android_log_print(ANDROID_LOG_ERROR, kGetterTag,
                            "try to get Floating value failed from: %s", text);
        return false;
    }
    if (value < -FLT_MAX || value > FLT_MAX) {
        __android_log_print(ANDROID_LOG_WARN, kGetterTag,
                            "tryParseFloatingString: out of range: %s", text);
    }
    warnIfTrailingText(end, "tryParseFloatingString: extra characters: %s", text);
    out = static_cast<float>(value);
    return true;
}

}  // namespace

TavixTpsParameter::TavixTpsParameter(const std::string& keyValuePairs) {
    std::vector<char> buffer(keyValuePairs.begin(), keyValuePairs.end());
    buffer.push_back('\0');
    char* state = nullptr;
    for (char* token = strtok_r(buffer.data(), ";", &state); token != nullptr;
         token = strtok_r(nullptr, ";", &state)) {
        char* equals = strchr(token, '=');
        if (equals == nullptr) {
            mKeyValuePairs[token] = "";
        } else {
            mKeyValuePairs[std::string(token, equals)] = equals + 1;
        }
    }
    if (mKeyValuePairs.empty()) {
        __android_log_print(ANDROID_LOG_ERROR, LOG_TAG, "error in parsing keyValuePairs");
    }
}

TavixTpsParameter::~TavixTpsParameter() = default;

std::string TavixTpsParameter::toString() const {
    std::string out;
    bool first = true;
    for (const auto& [key, value] : mKeyValuePairs) {
        if (!first) out += ';';
        first = false;
        out += key;
        out += '=';
        out += value;
    }
    return out;
}

bool TavixTpsParameter::containsKey(const std::string& key) const {
    return mKeyValuePairs.find(key) != mKeyValuePairs.end();
}

template <>
bool TavixTpsParameter::get<int>(const std::string& key, int& out) const {
    auto it = mKeyValuePairs.find(key);
    if (it == mKeyValuePairs.end() || it->second.empty()) return false;
    const char* text = it->second.c_str();
    return parseIntegral(text, text, out);
}

template <>
bool TavixTpsParameter::get<int>(const std::string& key, std::vector<int>& out) const {
    auto it = mKeyValuePairs.find(key);
    if (it == mKeyValuePairs.end() || it->second.empty()) return false;
    const std::string& value = it->second;
    size_t pos = 0;
    while (pos < value.size()) {
        size_t comma = value.find(',', pos);
        std::string item = value.substr(pos, comma == std::string::npos ? comma : comma - pos);
        int converted = 0;
        if (!parseIntegral(item.c_str(), value.c_str(), converted)) return false;
        out.push_back(converted);
        if (comma == std::string::npos) break;
        pos = comma + 1;
    }
    return true;
}

template <>
bool TavixTpsParameter::get<float>(const std::string& key, float& out) const {
    auto it = mKeyValuePairs.find(key);
    if (it == mKeyValuePairs.end() || it->second.empty()) return false;
    return parseFloating(it->second.c_str(), out);
}

template <>
void TavixTpsParameter::add<int>(const std::string& key, const std::vector<int>& values) {
    std::string joined;
    for (size_t i = 0; i < values.size(); ++i) {
        if (i > 0) joined += ',';
        joined += std::to_string(values[i]);
    }
    mKeyValuePairs[key] = joined;
}

void TavixTpsParameter::add(const std::string& key, const std::string& value) {
    mKeyValuePairs[key] = value;
}
