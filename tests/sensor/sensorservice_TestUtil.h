#pragma once

#include <android/binder_auto_utils.h>
#include <android/binder_ibinder.h>
#include <android/binder_parcel.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace sensortest {

// Expected parcel bytes written down by hand from the wire layout, independent of AParcel.
class Bytes {
public:
    Bytes& i32(int32_t value);
    Bytes& i64(int64_t value);
    Bytes& f32(float value);
    // UTF-16 string of ASCII text: unit count, units, NUL unit, zero padding to 4 bytes.
    Bytes& str(std::string_view ascii);
    // Interface token: strict-mode word, work source, 'SYST', descriptor.
    Bytes& token(std::string_view descriptor);
    Bytes& append(const Bytes& other);

    const std::vector<uint8_t>& bytes() const { return mBytes; }

private:
    std::vector<uint8_t> mBytes;
};

// Every byte of a parcel without binder objects; empty if it cannot be copied.
std::vector<uint8_t> parcelBytes(const AParcel* parcel);
// 32-bit words in hex, for readable failure messages.
std::string hex(const std::vector<uint8_t>& bytes);

// A local binder of a class defined here with a given descriptor: fromBinder() wraps it in a
// proxy, whose requests then land in the handler.
class RecordingBinder {
public:
    using Handler = std::function<binder_status_t(transaction_code_t code, const AParcel* request,
                                                  AParcel* reply)>;
    struct Request {
        transaction_code_t code;
        std::vector<uint8_t> bytes;  // the whole request, interface token included
    };

    RecordingBinder(const char* descriptor, Handler handler);
    RecordingBinder(const RecordingBinder&) = delete;
    RecordingBinder& operator=(const RecordingBinder&) = delete;

    const ::ndk::SpAIBinder& binder() const { return mBinder; }
    std::vector<Request> requests() const;

private:
    static binder_status_t onTransact(AIBinder* binder, transaction_code_t code,
                                      const AParcel* request, AParcel* reply);

    const Handler mHandler;
    mutable std::mutex mLock;
    std::vector<Request> mRequests;  // guarded by mLock
    ::ndk::SpAIBinder mBinder;       // user data points at this object: no proxy may outlive it
};

// Polls until done() holds. The limit only keeps a broken build from hanging; tests never
// depend on how long anything takes.
bool eventually(const std::function<bool()>& done,
                std::chrono::milliseconds limit = std::chrono::seconds(20));

}  // namespace sensortest
