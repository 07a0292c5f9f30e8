#include "ABpBinder.h"

#include <android/binder_stability.h>

#include <algorithm>

#include "ABBinder.h"
#include "AIBinderClass.h"
#include "BinderLog.h"
#include "DeathRecipient.h"
#include "Parcel.h"
#include "Stability.h"
#include "Transport.h"

namespace abinder {

ABpBinder::ABpBinder(std::shared_ptr<Transport> transport, uint32_t handle)
    : AIBinder(nullptr), mTransport(std::move(transport)), mHandle(handle) {
    mTransport->acquireHandle(mHandle);
}

ABpBinder::~ABpBinder() {
    std::vector<std::shared_ptr<DeathLink>> links;
    bool clear = false;
    {
        std::lock_guard<std::mutex> lock(mLock);
        links.swap(mLinks);
        clear = mDeathRequested && !mObitsSent;
        mDeathRequested = false;
    }
    if (clear) (void)mTransport->clearDeathNotification(mHandle, refs());
    mTransport->proxies().remove(mHandle, refs());
    mTransport->releaseHandle(mHandle);
    // Links still held by their recipients outlive this proxy; the rest are released here.
}

binder_status_t ABpBinder::transact(transaction_code_t code, const AParcel& data, AParcel* reply,
                                    binder_flags_t flags) {
    if (isUserCommand(code)) {
        const bool privateVendor = (flags & FLAG_PRIVATE_VENDOR) != 0;
        const int32_t required = privateVendor ? kStabilityVendor : kLocalStability;
        if (!checkStability(stability(), required)) {
            const AIBinder_Class* clazz = getClass();
            BINDER_LOGE("Cannot do a user transaction on a %s binder (%s) in a %s context.",
                        stabilityString(stability()),
                        clazz != nullptr ? clazz->descriptor().c_str() : "(unknown)",
                        stabilityString(required));
            return STATUS_BAD_TYPE;
        }
    }
    flags &= ~static_cast<binder_flags_t>(FLAG_PRIVATE_VENDOR);

    if (!isAlive()) return STATUS_DEAD_OBJECT;
    const binder_status_t status = mTransport->transact(mHandle, code, data, reply, flags);
    if (status == STATUS_DEAD_OBJECT) mAlive.store(false, std::memory_order_release);
    if (reply != nullptr) reply->setDataPosition(0);
    return status;
}

std::u16string ABpBinder::interfaceDescriptor() {
    {
        std::lock_guard<std::mutex> lock(mLock);
        if (mDescriptorCached) return mDescriptor;
    }
    AParcel data(this);
    AParcel reply(this);
    if (transact(kInterfaceTransaction, data, &reply, 0) != STATUS_OK) return {};
    size_t len = 0;
    const char16_t* str = reply.readString16Inplace(&len);
    if (str == nullptr || len == 0) return {};
    std::lock_guard<std::mutex> lock(mLock);
    if (!mDescriptorCached) {
        mDescriptor.assign(str, len);
        mDescriptorCached = true;
    }
    return mDescriptor;
}

binder_status_t ABpBinder::linkToDeath(const std::shared_ptr<DeathLink>& link) {
    std::lock_guard<std::mutex> lock(mLock);
    if (mObitsSent) return STATUS_DEAD_OBJECT;
    if (!mDeathRequested) {
        refs()->incWeak();  // owned by the transport from here on
        const binder_status_t status = mTransport->requestDeathNotification(mHandle, refs());
        if (status != STATUS_OK) {
            refs()->decWeak();
            return status;
        }
        mDeathRequested = true;
    }
    mLinks.push_back(link);
    return STATUS_OK;
}

bool ABpBinder::unlinkToDeath(const std::shared_ptr<DeathLink>& link) {
    bool clear = false;
    {
        std::lock_guard<std::mutex> lock(mLock);
        auto it = std::find(mLinks.begin(), mLinks.end(), link);
        if (it == mLinks.end()) return false;
        mLinks.erase(it);
        if (mLinks.empty() && mDeathRequested && !mObitsSent) {
            mDeathRequested = false;
            clear = true;
        }
    }
    if (clear) (void)mTransport->clearDeathNotification(mHandle, refs());
    return true;
}

void ABpBinder::sendObituary(RefCounts* proxyRefs) {
    if (!proxyRefs->attemptIncStrong()) return;
    AIBinder* binder = proxyRefs->object();
    if (ABpBinder* proxy = binder->asABpBinder(); proxy != nullptr) proxy->sendObituary();
    proxyRefs->decStrong();
}

void ABpBinder::sendObituary() {
    std::vector<std::shared_ptr<DeathLink>> links;
    {
        std::lock_guard<std::mutex> lock(mLock);
        if (mObitsSent) return;
        mObitsSent = true;
        mDeathRequested = false;
        mAlive.store(false, std::memory_order_release);
        links.swap(mLinks);
    }
    for (const std::shared_ptr<DeathLink>& link : links) link->binderDied();
}

}  // namespace abinder
