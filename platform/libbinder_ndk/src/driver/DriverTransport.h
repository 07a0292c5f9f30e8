#pragma once

#include <android/binder_ibinder.h>

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "../Transport.h"
#include "DriverHandler.h"
#include "DriverProcess.h"

namespace abinder::driver {

class DriverServiceManager;

// The object model's transport over the kernel driver: proxies reach other processes through it,
// and it delivers incoming calls, reference changes and deaths to this process's objects.
//
// Local objects travel as (ptr = their RefCounts block, cookie = the AIBinder); the kernel's
// interest in one is held as ordinary weak and strong references on that block. A death
// notification's cookie is the proxy's RefCounts block, on which the transport holds one weak
// reference until the kernel confirms the notification is gone.
class DriverTransport final : public Transport, public DriverHandler {
public:
    // Null when the device is missing or unusable.
    static std::shared_ptr<DriverTransport> open(
            const std::string& path = DriverProcess::defaultDevicePath());
    // The process transport if it is a driver transport, else null.
    static std::shared_ptr<DriverTransport> current();
    ~DriverTransport() override;

    DriverProcess& process() { return *mProcess; }

    // Makes this process the context manager; calls to handle 0 then reach object, on which it
    // keeps a strong reference. 0 or -errno.
    int becomeContextManager(AIBinder* object);
    bool isContextManager() const { return mContextObject.load() != nullptr; }

    // Transport
    binder_status_t transact(uint32_t handle, transaction_code_t code, const AParcel& data,
                             AParcel* reply, binder_flags_t flags) override;
    void acquireHandle(uint32_t handle) override;
    void releaseHandle(uint32_t handle) override;
    binder_status_t requestDeathNotification(uint32_t handle, RefCounts* proxyRefs) override;
    binder_status_t clearDeathNotification(uint32_t handle, RefCounts* proxyRefs) override;
    bool setThreadPoolMaxThreadCount(uint32_t count) override;
    void startThreadPool() override;
    bool isThreadPoolStarted() override;
    void joinThreadPool() override;
    ServiceRegistry* serviceRegistry() override;

    // DriverHandler
    void onTransaction(DriverThread& thread, IncomingTransaction& txn) override;
    void onIncRefs(binder_uintptr_t ptr, binder_uintptr_t cookie) override;
    void onAcquire(binder_uintptr_t ptr, binder_uintptr_t cookie) override;
    void onRelease(binder_uintptr_t ptr, binder_uintptr_t cookie) override;
    void onDecRefs(binder_uintptr_t ptr, binder_uintptr_t cookie) override;
    void onDeadBinder(DriverThread& thread, binder_uintptr_t cookie) override;
    void onDeathNotificationCleared(binder_uintptr_t cookie) override;

private:
    DriverTransport() = default;
    // Makes parcel the owner of a received buffer: it goes back when the parcel lets go of it.
    void adoptReceived(AParcel& parcel, ReceivedBuffer&& received);
    static void releaseReceived(Transport& transport, const uint8_t* data, size_t size,
                                const binder_size_t* objects, size_t objectCount);
    // A new strong reference to the object a call is for, or null.
    AIBinder* callTarget(const IncomingTransaction& txn);

    std::shared_ptr<DriverProcess> mProcess;
    std::atomic<AIBinder*> mContextObject{nullptr};  // set once; a strong reference

    std::mutex mLock;
    std::map<binder_uintptr_t, uint32_t> mDeathHandles;     // guarded by mLock; cookie -> handle
    std::unique_ptr<DriverServiceManager> mServiceManager;  // guarded by mLock; created on demand
};

}  // namespace abinder::driver
