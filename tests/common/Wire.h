#pragma once

#include <android/binder_parcel.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tps::test {

// Expected parcel bytes written down by hand from the wire layout rather than through AParcel, so
// that a test compares against an independent description of the bytes. Little-endian.
class Wire {
public:
    Wire& i32(int32_t value);
    Wire& i64(int64_t value);
    Wire& f32(float value);
    // A UTF-16 string of ASCII text: unit count, the units, a NUL unit, zero padding to 4 bytes.
    Wire& str(std::string_view ascii);
    // Interface token of a kernel-mode parcel: strict-mode word, work source, 'SYST', descriptor.
    Wire& token(std::string_view descriptor);
    // Status header without an exception.
    Wire& ok() { return i32(0); }
    // Status header with an exception: code, message, empty stack-trace header.
    Wire& exception(int32_t code, std::string_view message = "");
    Wire& append(const Wire& other);

    const std::vector<uint8_t>& bytes() const { return mBytes; }

private:
    std::vector<uint8_t> mBytes;
};

// Bytes of a parcel without binder objects, from offset 0; empty if the parcel cannot be copied.
std::vector<uint8_t> parcelBytes(const AParcel* parcel);

// 32-bit words in hex separated by spaces, for readable failure messages.
std::string hex(const std::vector<uint8_t>& bytes);

}  // namespace tps::test
