#include "Wire.h"

#include <cstdio>
#include <cstring>

namespace tps::test {

Wire& Wire::i32(int32_t value) {
    const auto bits = static_cast<uint32_t>(value);
    for (int shift = 0; shift < 32; shift += 8) mBytes.push_back(uint8_t(bits >> shift));
    return *this;
}

Wire& Wire::i64(int64_t value) {
    const auto bits = static_cast<uint64_t>(value);
    return i32(int32_t(uint32_t(bits))).i32(int32_t(uint32_t(bits >> 32)));
}

Wire& Wire::f32(float value) {
    uint32_t bits = 0;
    std::memcpy(&bits, &value, sizeof(bits));
    return i32(static_cast<int32_t>(bits));
}

Wire& Wire::str(std::string_view ascii) {
    i32(static_cast<int32_t>(ascii.size()));
    for (char c : ascii) {
        mBytes.push_back(static_cast<uint8_t>(c));
        mBytes.push_back(0);
    }
    mBytes.insert(mBytes.end(), {0, 0});
    while (mBytes.size() % 4 != 0) mBytes.push_back(0);
    return *this;
}

Wire& Wire::token(std::string_view descriptor) {
    return i32(static_cast<int32_t>(0x80000000u)).i32(-1).i32(0x53595354).str(descriptor);
}

Wire& Wire::exception(int32_t code, std::string_view message) {
    return i32(code).str(message).i32(0);
}

Wire& Wire::append(const Wire& other) {
    mBytes.insert(mBytes.end(), other.mBytes.begin(), other.mBytes.end());
    return *this;
}

std::vector<uint8_t> parcelBytes(const AParcel* parcel) {
    std::vector<uint8_t> bytes(static_cast<size_t>(AParcel_getDataSize(parcel)));
    if (AParcel_marshal(parcel, bytes.data(), 0, bytes.size()) != STATUS_OK) return {};
    return bytes;
}

std::string hex(const std::vector<uint8_t>& bytes) {
    std::string text;
    char digits[3];
    for (size_t i = 0; i < bytes.size(); ++i) {
        if (i != 0 && i % 4 == 0) text += ' ';
        std::snprintf(digits, sizeof(digits), "%02x", bytes[i]);
        text += digits;
    }
    return text;
}

}  // namespace tps::test
