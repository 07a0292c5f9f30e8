#include "WireBytes.h"

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

AIBinder_Class* plainClass(const char* descriptor) {
    return AIBinder_Class_define(
            descriptor, [](void* args) { return args; }, [](void*) {},
            [](AIBinder*, transaction_code_t, const AParcel*, AParcel*) -> binder_status_t {
                return STATUS_OK;
            });
}

}  // namespace wire
