#pragma once

#include <android/binder_parcel.h>
#include <stdint.h>

#include <initializer_list>
#include <string>
#include <vector>

// Helpers to state expected parcel contents as little-endian words.
namespace wire {

using Bytes = std::vector<uint8_t>;

// Concatenates 32-bit words, each written little-endian.
Bytes words(std::initializer_list<uint32_t> values);
Bytes operator+(Bytes a, const Bytes& b);

// Everything written to the parcel so far.
Bytes bytesOf(const AParcel* parcel);

// A parcel holding exactly these bytes, positioned at 0.
AParcel* parcelOf(const Bytes& bytes);

std::string hex(const Bytes& bytes);

}  // namespace wire
