#pragma once

#include <array>
#include <iterator>

namespace ndk {

namespace internal {

// Generated enum code specialises this with the list of the enum's values.
template <typename EnumType>
extern std::array<EnumType, 0> enum_values;

}  // namespace internal

// Iterates over every declared value of a generated enum: for (auto v : enum_range<E>()) ...
template <typename EnumType>
struct enum_range {
    constexpr auto begin() const { return std::begin(internal::enum_values<EnumType>); }
    constexpr auto end() const { return std::end(internal::enum_values<EnumType>); }
};

}  // namespace ndk
