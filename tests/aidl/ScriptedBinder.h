#pragma once

#include <android/binder_auto_utils.h>
#include <android/binder_ibinder.h>

#include <functional>
#include <mutex>
#include <vector>

namespace aidl::vendor::tavix::tps::test {

// Stands in for the other side of a proxy. It is a local binder of a class defined here rather
// than by tps_aidl, carrying the interface's descriptor, so fromBinder wraps it in a proxy and
// the proxy's requests land in the handler, which scripts the reply or the transport result.
class ScriptedBinder {
public:
    using Handler = std::function<binder_status_t(transaction_code_t code, const AParcel* request,
                                                  AParcel* reply)>;
    struct Request {
        transaction_code_t code;
        std::vector<uint8_t> bytes;  // the whole request, interface token included
    };

    ScriptedBinder(const char* descriptor, Handler handler);
    ~ScriptedBinder();
    ScriptedBinder(const ScriptedBinder&) = delete;
    ScriptedBinder& operator=(const ScriptedBinder&) = delete;

    const ::ndk::SpAIBinder& binder() const { return mBinder; }
    std::vector<Request> requests() const;
    size_t countOf(transaction_code_t code) const;

private:
    static binder_status_t onTransact(AIBinder* binder, transaction_code_t code,
                                      const AParcel* request, AParcel* reply);

    const Handler mHandler;
    mutable std::mutex mLock;
    std::vector<Request> mRequests;  // guarded by mLock
    ::ndk::SpAIBinder mBinder;
};

}  // namespace aidl::vendor::tavix::tps::test
