#pragma once

// Proxy and stub plumbing shared by the sensor service interfaces of this library.

#include <android/binder_auto_utils.h>
#include <android/binder_ibinder.h>
#include <android/binder_parcel.h>
#include <android/binder_parcel_utils.h>

#ifdef BINDER_STABILITY_SUPPORT
#include <android/binder_stability.h>
#endif  // BINDER_STABILITY_SUPPORT

#include <cstring>
#include <memory>
#include <mutex>
#include <string>

namespace aidl::host {

inline constexpr binder_flags_t kProxyFlags = 0
#ifdef BINDER_STABILITY_SUPPORT
                                              | FLAG_PRIVATE_LOCAL
#endif  // BINDER_STABILITY_SUPPORT
        ;

inline ::ndk::ScopedAStatus statusFrom(binder_status_t error) {
    return error == STATUS_OK ? ::ndk::ScopedAStatus::ok()
                              : ::ndk::ScopedAStatus::fromStatus(error);
}

inline binder_status_t noArgs(AParcel*) {
    return STATUS_OK;
}

// One synchronous call: prepare the request (interface token), let writeArgs add the arguments,
// transact and read the reply's status header. *unknownCode tells the caller that the other side
// lacks the method. When the returned status is OK, *reply is positioned at the result.
template <typename WriteArgs>
::ndk::ScopedAStatus callRemote(const ::ndk::SpAIBinder& binder, transaction_code_t code,
                                WriteArgs writeArgs, ::ndk::ScopedAParcel* reply,
                                bool* unknownCode) {
    *unknownCode = false;
    ::ndk::ScopedAParcel request;
    binder_status_t error = AIBinder_prepareTransaction(binder.get(), request.getR());
    if (error != STATUS_OK) return statusFrom(error);
    error = writeArgs(request.get());
    if (error != STATUS_OK) return statusFrom(error);
    error = AIBinder_transact(binder.get(), code, request.getR(), reply->getR(), kProxyFlags);
    *unknownCode = error == STATUS_UNKNOWN_TRANSACTION;
    if (error != STATUS_OK) return statusFrom(error);
    ::ndk::ScopedAStatus status;
    error = AParcel_readStatusHeader(reply->get(), status.getR());
    if (error != STATUS_OK) return statusFrom(error);
    return status;
}

// A oneway call: no reply and no status header; only the transport result comes back.
template <typename WriteArgs>
::ndk::ScopedAStatus callRemoteOneway(const ::ndk::SpAIBinder& binder, transaction_code_t code,
                                      WriteArgs writeArgs, bool* unknownCode) {
    *unknownCode = false;
    ::ndk::ScopedAParcel request;
    binder_status_t error = AIBinder_prepareTransaction(binder.get(), request.getR());
    if (error != STATUS_OK) return statusFrom(error);
    error = writeArgs(request.get());
    if (error != STATUS_OK) return statusFrom(error);
    ::ndk::ScopedAParcel reply;
    error = AIBinder_transact(binder.get(), code, request.getR(), reply.getR(),
                              FLAG_ONEWAY | kProxyFlags);
    *unknownCode = error == STATUS_UNKNOWN_TRANSACTION;
    return statusFrom(error);
}

// Writes the method's status and, only when it is OK, its result.
template <typename WriteResult>
binder_status_t writeReply(AParcel* out, const ::ndk::ScopedAStatus& status,
                           WriteResult writeResult) {
    binder_status_t error = AParcel_writeStatusHeader(out, status.get());
    if (error != STATUS_OK) return error;
    if (!status.isOk()) return STATUS_OK;
    return writeResult();
}

inline binder_status_t noResult() {
    return STATUS_OK;
}

// fromBinder for interface I with proxy class BP: a local object is returned as itself; a class
// object of another copy of the same definition still speaks the protocol, so it gets a proxy.
template <typename I, typename BP>
std::shared_ptr<I> interfaceFromBinder(const ::ndk::SpAIBinder& binder,
                                       const AIBinder_Class* clazz) {
    if (binder.get() == nullptr) return nullptr;
    if (!AIBinder_associateClass(binder.get(), clazz)) {
        const AIBinder_Class* originalClass = AIBinder_getClass(binder.get());
        if (originalClass == nullptr) return nullptr;
        if (strcmp(AIBinder_Class_getDescriptor(originalClass), I::descriptor) != 0) {
            return nullptr;
        }
        return ::ndk::SharedRefBase::make<BP>(binder);
    }
    std::shared_ptr<::ndk::ICInterface> local = ::ndk::ICInterface::asInterface(binder.get());
    if (local) return std::static_pointer_cast<I>(local);
    return ::ndk::SharedRefBase::make<BP>(binder);
}

template <typename I>
binder_status_t writeInterface(AParcel* parcel, const std::shared_ptr<I>& instance) {
    return AParcel_writeStrongBinder(parcel, instance ? instance->asBinder().get() : nullptr);
}

template <typename I>
binder_status_t readInterface(const AParcel* parcel, std::shared_ptr<I>* instance) {
    ::ndk::SpAIBinder binder;
    binder_status_t error = AParcel_readStrongBinder(parcel, binder.getR());
    if (error != STATUS_OK) return error;
    *instance = I::fromBinder(binder);
    return STATUS_OK;
}

// The binder of a new local object of a versioned stable interface.
inline ::ndk::SpAIBinder newStableBinder(const AIBinder_Class* clazz, void* object) {
    AIBinder* binder = AIBinder_new(clazz, object);
#ifdef BINDER_STABILITY_SUPPORT
    AIBinder_markVintfStability(binder);
#endif  // BINDER_STABILITY_SUPPORT
    return ::ndk::SpAIBinder(binder);
}

// The version and hash queries of proxy class BP for interface I; both answers are cached.
template <typename I, typename BP>
::ndk::ScopedAStatus proxyInterfaceVersion(BP* proxy, int32_t* _aidl_return) {
    const int32_t cached = proxy->_aidl_cached_version.load(std::memory_order_relaxed);
    if (cached != -1) {
        *_aidl_return = cached;
        return ::ndk::ScopedAStatus::ok();
    }
    ::ndk::ScopedAParcel reply;
    bool unknownCode = false;
    ::ndk::ScopedAStatus status = callRemote(proxy->asBinder(), I::TRANSACTION_getInterfaceVersion,
                                             noArgs, &reply, &unknownCode);
    if (unknownCode && I::getDefaultImpl()) {
        return I::getDefaultImpl()->getInterfaceVersion(_aidl_return);
    }
    if (!status.isOk()) return status;
    binder_status_t error = AParcel_readInt32(reply.get(), _aidl_return);
    if (error != STATUS_OK) return statusFrom(error);
    proxy->_aidl_cached_version.store(*_aidl_return, std::memory_order_relaxed);
    return status;
}

template <typename I, typename BP>
::ndk::ScopedAStatus proxyInterfaceHash(BP* proxy, std::string* _aidl_return) {
    std::lock_guard<std::mutex> lock(proxy->_aidl_cached_hash_mutex);
    if (proxy->_aidl_cached_hash != "-1") {
        *_aidl_return = proxy->_aidl_cached_hash;
        return ::ndk::ScopedAStatus::ok();
    }
    ::ndk::ScopedAParcel reply;
    bool unknownCode = false;
    ::ndk::ScopedAStatus status = callRemote(proxy->asBinder(), I::TRANSACTION_getInterfaceHash,
                                             noArgs, &reply, &unknownCode);
    if (unknownCode && I::getDefaultImpl())
        return I::getDefaultImpl()->getInterfaceHash(_aidl_return);
    if (!status.isOk()) return status;
    binder_status_t error = ::ndk::AParcel_readString(reply.get(), _aidl_return);
    if (error != STATUS_OK) return statusFrom(error);
    proxy->_aidl_cached_hash = *_aidl_return;
    return status;
}

// The stub side of the version and hash queries; false if code is neither.
template <typename BN>
bool stubMetaTransaction(BN* impl, transaction_code_t code, AParcel* out, binder_status_t* result) {
    if (code == BN::TRANSACTION_getInterfaceVersion) {
        int32_t version = 0;
        ::ndk::ScopedAStatus status = impl->getInterfaceVersion(&version);
        *result = writeReply(out, status, [&] { return AParcel_writeInt32(out, version); });
        return true;
    }
    if (code == BN::TRANSACTION_getInterfaceHash) {
        std::string hash;
        ::ndk::ScopedAStatus status = impl->getInterfaceHash(&hash);
        *result = writeReply(out, status, [&] { return ::ndk::AParcel_writeString(out, hash); });
        return true;
    }
    return false;
}

}  // namespace aidl::host
