#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

#include "AIBinderImpl.h"

namespace abinder {

class DeathLink;
class Transport;

// A binder object of another process, reached through a transport by handle.
class ABpBinder : public AIBinder {
public:
    // Takes the handle's remote references; create through ProxyTable only.
    ABpBinder(std::shared_ptr<Transport> transport, uint32_t handle);
    ~ABpBinder() override;

    ABpBinder* asABpBinder() override { return this; }
    bool isRemote() const override { return true; }
    bool isAlive() const override { return mAlive.load(std::memory_order_acquire); }

    // Checks stability for user codes, strips FLAG_PRIVATE_VENDOR and forwards to the transport.
    binder_status_t transact(transaction_code_t code, const AParcel& data, AParcel* reply,
                             binder_flags_t flags) override;
    // Asked once from the remote object and then cached.
    std::u16string interfaceDescriptor() override;

    uint32_t handle() const { return mHandle; }
    const std::shared_ptr<Transport>& transport() const { return mTransport; }

    binder_status_t linkToDeath(const std::shared_ptr<DeathLink>& link);
    // Removes link from this proxy; false if it was not linked here.
    bool unlinkToDeath(const std::shared_ptr<DeathLink>& link);

    // Called by the transport when the remote object died: marks the proxy dead and notifies
    // every linked recipient once. Safe to call for a proxy that is already gone.
    static void sendObituary(RefCounts* proxyRefs);

private:
    void sendObituary();

    const std::shared_ptr<Transport> mTransport;
    const uint32_t mHandle;
    std::atomic<bool> mAlive{true};

    std::mutex mLock;
    bool mObitsSent = false;                         // guarded by mLock
    bool mDeathRequested = false;                    // guarded by mLock
    std::vector<std::shared_ptr<DeathLink>> mLinks;  // guarded by mLock
    bool mDescriptorCached = false;                  // guarded by mLock
    std::u16string mDescriptor;                      // guarded by mLock
};

}  // namespace abinder
