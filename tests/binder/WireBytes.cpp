#include "WireBytes.h"

#include <stdio.h>

#include "Parcel.h"

namespace wire {

Bytes words(std::initializer_list<uint32_t> values) {
    Bytes out;
    for (uint32_t v : values) {
        for (int i = 0; i < 4; i++) out.push_back(static_cast<uint8_t>(v >> (8 * i)));
    }
    return out;
}

Bytes operator+(Bytes a, const Bytes& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

Bytes bytesOf(const AParcel* parcel) {
    return Bytes(parcel->data(), parcel->data() + parcel->dataSize());
}

AParcel* parcelOf(const Bytes& bytes) {
    AParcel* parcel = AParcel_create();
    AParcel_unmarshal(parcel, bytes.data(), bytes.size());
    return parcel;
}

std::string hex(const Bytes& bytes) {
    std::string out;
    char buf[4];
    for (size_t i = 0; i < bytes.size(); i++) {
        if (i > 0 && i % 4 == 0) out += ' ';
        snprintf(buf, sizeof(buf), "%02x", bytes[i]);
        out += buf;
    }
    return out;
}

}  // namespace wire
