#pragma once

#include <android/binder_auto_utils.h>

#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

namespace android {
namespace internal {

template <typename T>
concept HasToStringMember = requires(const T& t) {
    { t.toString() } -> std::convertible_to<std::string>;
};

template <typename T>
concept HasToStringFree = requires(const T& t) {
    { toString(t) } -> std::convertible_to<std::string>;
};

// Readable text for the field types generated parcelables hold.
template <typename T>
std::string ToString(const T& t) {
    if constexpr (std::is_same_v<T, bool>) {
        return t ? "true" : "false";
    } else if constexpr (std::is_same_v<T, char16_t>) {
        return std::to_string(static_cast<uint32_t>(t));
    } else if constexpr (std::is_arithmetic_v<T>) {
        std::ostringstream out;
        out << +t;
        return out.str();
    } else if constexpr (std::is_same_v<T, std::string>) {
        return t;
    } else if constexpr (std::is_same_v<T, ::ndk::SpAIBinder>) {
        std::ostringstream out;
        out << "binder:" << static_cast<const void*>(t.get());
        return out.str();
    } else if constexpr (std::is_same_v<T, ::ndk::ScopedFileDescriptor>) {
        return "fd:" + std::to_string(t.get());
    } else if constexpr (HasToStringMember<T>) {
        return t.toString();
    } else if constexpr (HasToStringFree<T>) {
        return toString(t);
    } else if constexpr (requires {
                             t.has_value();
                             *t;
                         }) {
        return t ? ToString(*t) : "(null)";
    } else if constexpr (requires {
                             t.get();
                             *t;
                         }) {
        return t ? ToString(*t) : "(null)";
    } else if constexpr (requires {
                             t.begin();
                             t.end();
                         }) {
        std::string out = "[";
        bool first = true;
        for (const auto& e : t) {
            if (!first) out += ", ";
            first = false;
            out += ToString(e);
        }
        return out + "]";
    } else {
        return "{no toString() implemented}";
    }
}

}  // namespace internal
}  // namespace android
