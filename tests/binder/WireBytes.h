#pragma once

#include <android/binder_ibinder.h>
#include <android/binder_parcel.h>
#include <stdint.h>

#include <initializer_list>
#include <vector>

#include "Wire.h"

// Expected parcel contents stated as little-endian 32-bit words.
namespace wire {

using Bytes = std::vector<uint8_t>;
using ::tps::test::hex;

Bytes words(std::initializer_list<uint32_t> values);
Bytes operator+(Bytes a, const Bytes& b);

// Everything written to the parcel so far, binder objects included.
Bytes bytesOf(const AParcel* parcel);

// A parcel holding exactly these bytes, positioned at 0.
AParcel* parcelOf(const Bytes& bytes);

// A new class whose binders answer every transaction with STATUS_OK and keep no user data.
AIBinder_Class* plainClass(const char* descriptor);

}  // namespace wire
