#pragma once

#include <android/binder_ibinder.h>
#include <stdint.h>

#include <memory>

#include "ProxyTable.h"

namespace abinder {

class RefCounts;
class ServiceRegistry;

// A connection to binder objects of other processes, addressed by handle. Proxies (ABpBinder)
// call it; it is never used for objects of this process. Implementations must be thread-safe.
class Transport : public std::enable_shared_from_this<Transport> {
public:
    virtual ~Transport() = default;

    // Sends one transaction and, unless FLAG_ONEWAY, fills reply (usually with
    // AParcel::adopt). flags never contains FLAG_PRIVATE_VENDOR. Returns the remote status,
    // STATUS_DEAD_OBJECT once the remote process is gone, or another transport error.
    virtual binder_status_t transact(uint32_t handle, transaction_code_t code, const AParcel& data,
                                     AParcel* reply, binder_flags_t flags) = 0;

    // One strong and one weak remote reference, taken when a proxy is created and dropped
    // when it is destroyed.
    virtual void acquireHandle(uint32_t handle) = 0;
    virtual void releaseHandle(uint32_t handle) = 0;

    // Asks to be told when the object behind handle dies. The transport owns one weak
    // reference on proxyRefs from this call (release it with proxyRefs->decWeak() once the
    // notification is cleared or delivered) and reports the death with
    // ABpBinder::sendObituary(proxyRefs).
    virtual binder_status_t requestDeathNotification(uint32_t handle, RefCounts* proxyRefs) = 0;
    virtual binder_status_t clearDeathNotification(uint32_t handle, RefCounts* proxyRefs) = 0;

    // Thread pool of this process; the defaults suit a transport without incoming calls.
    virtual bool setThreadPoolMaxThreadCount(uint32_t /*count*/) { return true; }
    virtual void startThreadPool() {}
    virtual bool isThreadPoolStarted() { return false; }
    virtual void joinThreadPool() {}

    // The service manager reached through this transport, or null to keep the in-process one.
    virtual ServiceRegistry* serviceRegistry() { return nullptr; }

    // The proxy for handle, created on first use: a new strong reference.
    AIBinder* proxyForHandle(uint32_t handle) {
        return mProxies.getOrCreate(shared_from_this(), handle);
    }
    ProxyTable& proxies() { return mProxies; }

private:
    ProxyTable mProxies;
};

// The process's transport, opened on first use; null when there is none (in-process only).
std::shared_ptr<Transport> processTransport();

// Opens the transport for this process. This library's definition is weak and returns null; the
// driver layer links in a strong one that opens the binder device when it exists.
std::shared_ptr<Transport> openProcessTransport();

}  // namespace abinder
