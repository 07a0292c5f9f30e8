#pragma once

// Strict number parsing for command-line values and input files: the whole text (after trimming
// blanks) must be one finite number.

#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <string>
#include <string_view>

namespace sensord {

inline std::string_view trim(std::string_view text) {
    const size_t first = text.find_first_not_of(" \t\r\n");
    if (first == std::string_view::npos) return {};
    const size_t last = text.find_last_not_of(" \t\r\n");
    return text.substr(first, last - first + 1);
}

inline bool parseDouble(std::string_view text, double* value) {
    const std::string copy(trim(text));
    if (copy.empty()) return false;
    char* end = nullptr;
    errno = 0;
    const double parsed = strtod(copy.c_str(), &end);
    if (end != copy.c_str() + copy.size() || errno == ERANGE || !std::isfinite(parsed)) {
        return false;
    }
    *value = parsed;
    return true;
}

inline bool parseFloat(std::string_view text, float* value) {
    double parsed = 0;
    if (!parseDouble(text, &parsed)) return false;
    if (std::fabs(parsed) > std::numeric_limits<float>::max()) return false;
    *value = static_cast<float>(parsed);
    return true;
}

inline bool parseInt64(std::string_view text, int64_t* value) {
    const std::string copy(trim(text));
    if (copy.empty()) return false;
    char* end = nullptr;
    errno = 0;
    const long long parsed = strtoll(copy.c_str(), &end, 0);
    if (end != copy.c_str() + copy.size() || errno == ERANGE) return false;
    *value = parsed;
    return true;
}

inline bool parseInt32(std::string_view text, int32_t* value) {
    int64_t parsed = 0;
    if (!parseInt64(text, &parsed)) return false;
    if (parsed < std::numeric_limits<int32_t>::min() ||
        parsed > std::numeric_limits<int32_t>::max()) {
        return false;
    }
    *value = static_cast<int32_t>(parsed);
    return true;
}

}  // namespace sensord
