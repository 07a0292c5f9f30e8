#pragma once

#include <android/binder_auto_utils.h>
#include <android/binder_ibinder.h>

#include <functional>
#include <mutex>
#include <vector>

namespace tps::test {

// Stands in for the other side of a proxy: a local binder of a class defined here with a given
// descriptor, so fromBinder() wraps it in a proxy whose requests land in the handler, which
// scripts the reply or the transport result. Every request is recorded.
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
    size_t countOf(transaction_code_t code) const;

private:
    static binder_status_t onTransact(AIBinder* binder, transaction_code_t code,
                                      const AParcel* request, AParcel* reply);

    const Handler mHandler;
    mutable std::mutex mLock;
    std::vector<Request> mRequests;  // guarded by mLock
    ::ndk::SpAIBinder mBinder;       // user data points at this object: no proxy may outlive it
};

}  // namespace tps::test
