#pragma once

#include <android/binder_ibinder.h>

#include <atomic>
#include <mutex>
#include <string>

#include "RefCounts.h"

namespace abinder {
class ABBinder;
class ABpBinder;
}  // namespace abinder

// Common part of local binders (ABBinder) and proxies (ABpBinder). Lifetime is managed through
// refs(): never delete an AIBinder directly.
struct AIBinder {
    explicit AIBinder(const AIBinder_Class* clazz);
    virtual ~AIBinder();

    AIBinder(const AIBinder&) = delete;
    AIBinder& operator=(const AIBinder&) = delete;

    abinder::RefCounts* refs() const { return mRefs; }

    virtual abinder::ABBinder* asABBinder() { return nullptr; }
    virtual abinder::ABpBinder* asABpBinder() { return nullptr; }
    virtual bool isRemote() const = 0;
    virtual bool isAlive() const = 0;

    // Runs one transaction of any code (user or special); reply may be null for oneway calls.
    virtual binder_status_t transact(transaction_code_t code, const AParcel& data, AParcel* reply,
                                     binder_flags_t flags) = 0;
    // The interface descriptor the object reports: its class's for a local binder, the remote
    // object's answer for a proxy (empty if it cannot be obtained).
    virtual std::u16string interfaceDescriptor() = 0;

    const AIBinder_Class* getClass() const { return mClazz.load(std::memory_order_acquire); }
    bool associateClass(const AIBinder_Class* clazz);

    // Stability level as sent on the wire (0 = undeclared).
    int32_t stability() const { return mStability.load(std::memory_order_acquire); }
    void setStability(int32_t level) { mStability.store(level, std::memory_order_release); }

protected:
    std::atomic<const AIBinder_Class*> mClazz;

private:
    abinder::RefCounts* const mRefs;
    std::mutex mClazzLock;  // serialises the check-then-set in associateClass
    std::atomic<int32_t> mStability{0};
};
