#include "sensorservice_TestUtil.h"

#include <cstdio>
#include <cstring>
#include <map>
#include <thread>

namespace sensortest {

Bytes& Bytes::i32(int32_t value) {
    const uint32_t bits = static_cast<uint32_t>(value);
    for (int shift = 0; shift < 32; shift += 8) mBytes.push_back(uint8_t(bits >> shift));
    return *this;
}

Bytes& Bytes::i64(int64_t value) {
    const uint64_t bits = static_cast<uint64_t>(value);
    return i32(int32_t(uint32_t(bits))).i32(int32_t(uint32_t(bits >> 32)));
}

Bytes& Bytes::f32(float value) {
    uint32_t bits = 0;
    memcpy(&bits, &value, sizeof(bits));
    return i32(static_cast<int32_t>(bits));
}

Bytes& Bytes::str(std::string_view ascii) {
    i32(static_cast<int32_t>(ascii.size()));
    for (char c : ascii) {
        mBytes.push_back(static_cast<uint8_t>(c));
        mBytes.push_back(0);
    }
    mBytes.push_back(0);
    mBytes.push_back(0);
    while (mBytes.size() % 4 != 0) mBytes.push_back(0);
    return *this;
}

Bytes& Bytes::token(std::string_view descriptor) {
    return i32(static_cast<int32_t>(0x80000000u)).i32(-1).i32(0x53595354).str(descriptor);
}

Bytes& Bytes::append(const Bytes& other) {
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
        snprintf(digits, sizeof(digits), "%02x", bytes[i]);
        text += digits;
    }
    return text;
}

namespace {

void* passThrough(void* args) {
    return args;
}

void keep(void*) {}

// Class objects live for the process; one per descriptor.
const AIBinder_Class* classFor(const char* descriptor, AIBinder_Class_onTransact onTransact) {
    static std::mutex lock;
    // Never destroyed, like the class objects it points to.
    static auto* const classes = new std::map<std::string, AIBinder_Class*>();  // guarded by lock
    std::lock_guard<std::mutex> guard(lock);
    AIBinder_Class*& clazz = (*classes)[descriptor];
    if (clazz == nullptr) clazz = AIBinder_Class_define(descriptor, passThrough, keep, onTransact);
    return clazz;
}

}  // namespace

RecordingBinder::RecordingBinder(const char* descriptor, Handler handler)
    : mHandler(std::move(handler)), mBinder(AIBinder_new(classFor(descriptor, onTransact), this)) {}

std::vector<RecordingBinder::Request> RecordingBinder::requests() const {
    std::lock_guard<std::mutex> lock(mLock);
    return mRequests;
}

binder_status_t RecordingBinder::onTransact(AIBinder* binder, transaction_code_t code,
                                            const AParcel* request, AParcel* reply) {
    auto* self = static_cast<RecordingBinder*>(AIBinder_getUserData(binder));
    {
        std::lock_guard<std::mutex> lock(self->mLock);
        self->mRequests.push_back({code, parcelBytes(request)});
    }
    return self->mHandler(code, request, reply);
}

bool eventually(const std::function<bool()>& done, std::chrono::milliseconds limit) {
    const auto giveUp = std::chrono::steady_clock::now() + limit;
    while (!done()) {
        if (std::chrono::steady_clock::now() > giveUp) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

}  // namespace sensortest
