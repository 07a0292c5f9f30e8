#include "aidl/vendor/tavix/tps/ITpsCallback.h"

#include <android/binder_parcel_utils.h>

#include <cstring>

#include "aidl/vendor/tavix/tps/BnTpsCallback.h"
#include "aidl/vendor/tavix/tps/BpTpsCallback.h"

namespace aidl::vendor::tavix::tps {

namespace {

constexpr binder_flags_t kProxyFlags = 0
#ifdef BINDER_STABILITY_SUPPORT
                                       | FLAG_PRIVATE_LOCAL
#endif  // BINDER_STABILITY_SUPPORT
        ;

::ndk::ScopedAStatus statusFrom(binder_status_t error) {
    return error == STATUS_OK ? ::ndk::ScopedAStatus::ok()
                              : ::ndk::ScopedAStatus::fromStatus(error);
}

// One synchronous call through the proxy: prepare the request (interface token), let writeArgs add
// the arguments, transact and read the reply's status header. *unknownCode tells the caller that
// the other side lacks the method, so it may fall back to the default implementation. When the
// returned status is OK, *reply is positioned at the result.
template <typename WriteArgs>
::ndk::ScopedAStatus callRemote(const ::ndk::SpAIBinder& binder, transaction_code_t code,
                                WriteArgs writeArgs, ::ndk::ScopedAParcel* reply,
                                bool* unknownCode) {
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

binder_status_t noArgs(AParcel*) {
    return STATUS_OK;
}

binder_status_t noResult() {
    return STATUS_OK;
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

binder_status_t onTransact(AIBinder* binder, transaction_code_t code, const AParcel* in,
                           AParcel* out) {
    // Keeps the implementation alive until the call returns, even if the binder goes away.
    std::shared_ptr<BnTpsCallback> impl =
            std::static_pointer_cast<BnTpsCallback>(::ndk::ICInterface::asInterface(binder));
    switch (code) {
        case ITpsCallback::TRANSACTION_onTavixPrismPlaybackStart:
        case ITpsCallback::TRANSACTION_onTavixPrismPlaybackStop: {
            bool result = false;
            ::ndk::ScopedAStatus status =
                    code == ITpsCallback::TRANSACTION_onTavixPrismPlaybackStart
                            ? impl->onTavixPrismPlaybackStart(&result)
                            : impl->onTavixPrismPlaybackStop(&result);
            return writeReply(out, status, [&] { return AParcel_writeBool(out, result); });
        }
        case ITpsCallback::TRANSACTION_onTavixNotification: {
            std::string event;
            binder_status_t error = ::ndk::AParcel_readString(in, &event);
            if (error != STATUS_OK) return error;
            return writeReply(out, impl->onTavixNotification(event), noResult);
        }
        case ITpsCallback::TRANSACTION_getInterfaceVersion: {
            int32_t result = 0;
            ::ndk::ScopedAStatus status = impl->getInterfaceVersion(&result);
            return writeReply(out, status, [&] { return AParcel_writeInt32(out, result); });
        }
        case ITpsCallback::TRANSACTION_getInterfaceHash: {
            std::string result;
            ::ndk::ScopedAStatus status = impl->getInterfaceHash(&result);
            return writeReply(out, status, [&] { return ::ndk::AParcel_writeString(out, result); });
        }
    }
    return STATUS_UNKNOWN_TRANSACTION;
}

}  // namespace

const char* ITpsCallback::descriptor = "vendor.tavix.tps.ITpsCallback";

static AIBinder_Class* const gITpsCallbackClass =
        ::ndk::ICInterface::defineClass(ITpsCallback::descriptor, onTransact);

std::shared_ptr<ITpsCallback> ITpsCallback::default_impl = nullptr;

ITpsCallback::ITpsCallback() = default;
ITpsCallback::~ITpsCallback() = default;

std::shared_ptr<ITpsCallback> ITpsCallback::fromBinder(const ::ndk::SpAIBinder& binder) {
    if (!AIBinder_associateClass(binder.get(), gITpsCallbackClass)) {
        // A class object from another copy of this definition (another library in the process)
        // still speaks the same protocol, so it is used through a proxy.
        const AIBinder_Class* originalClass = AIBinder_getClass(binder.get());
        if (originalClass == nullptr) return nullptr;
        if (strcmp(AIBinder_Class_getDescriptor(originalClass), descriptor) != 0) return nullptr;
        return ::ndk::SharedRefBase::make<BpTpsCallback>(binder);
    }
    std::shared_ptr<::ndk::ICInterface> local = ::ndk::ICInterface::asInterface(binder.get());
    if (local) return std::static_pointer_cast<ITpsCallback>(local);
    return ::ndk::SharedRefBase::make<BpTpsCallback>(binder);
}

binder_status_t ITpsCallback::writeToParcel(AParcel* parcel,
                                            const std::shared_ptr<ITpsCallback>& instance) {
    return AParcel_writeStrongBinder(parcel, instance ? instance->asBinder().get() : nullptr);
}

binder_status_t ITpsCallback::readFromParcel(const AParcel* parcel,
                                             std::shared_ptr<ITpsCallback>* instance) {
    ::ndk::SpAIBinder binder;
    binder_status_t error = AParcel_readStrongBinder(parcel, binder.getR());
    if (error != STATUS_OK) return error;
    *instance = fromBinder(binder);
    return STATUS_OK;
}

bool ITpsCallback::setDefaultImpl(const std::shared_ptr<ITpsCallback>& impl) {
    default_impl = impl;
    return default_impl != nullptr;
}

const std::shared_ptr<ITpsCallback>& ITpsCallback::getDefaultImpl() {
    return default_impl;
}

::ndk::ScopedAStatus ITpsCallbackDefault::onTavixPrismPlaybackStart(bool*) {
    return ::ndk::ScopedAStatus::fromStatus(STATUS_UNKNOWN_TRANSACTION);
}

::ndk::ScopedAStatus ITpsCallbackDefault::onTavixPrismPlaybackStop(bool*) {
    return ::ndk::ScopedAStatus::fromStatus(STATUS_UNKNOWN_TRANSACTION);
}

::ndk::ScopedAStatus ITpsCallbackDefault::onTavixNotification(const std::string&) {
    return ::ndk::ScopedAStatus::fromStatus(STATUS_UNKNOWN_TRANSACTION);
}

::ndk::ScopedAStatus ITpsCallbackDefault::getInterfaceVersion(int32_t* _aidl_return) {
    *_aidl_return = 0;
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus ITpsCallbackDefault::getInterfaceHash(std::string* _aidl_return) {
    *_aidl_return = "";
    return ::ndk::ScopedAStatus::ok();
}

::ndk::SpAIBinder ITpsCallbackDefault::asBinder() {
    return ::ndk::SpAIBinder();
}

bool ITpsCallbackDefault::isRemote() {
    return false;
}

BnTpsCallback::BnTpsCallback() = default;
BnTpsCallback::~BnTpsCallback() = default;

::ndk::SpAIBinder BnTpsCallback::createBinder() {
    AIBinder* binder = AIBinder_new(gITpsCallbackClass, static_cast<void*>(this));
#ifdef BINDER_STABILITY_SUPPORT
    AIBinder_markVintfStability(binder);
#endif  // BINDER_STABILITY_SUPPORT
    return ::ndk::SpAIBinder(binder);
}

::ndk::ScopedAStatus BnTpsCallback::getInterfaceVersion(int32_t* _aidl_return) {
    *_aidl_return = ITpsCallback::version;
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus BnTpsCallback::getInterfaceHash(std::string* _aidl_return) {
    *_aidl_return = ITpsCallback::hash;
    return ::ndk::ScopedAStatus::ok();
}

BpTpsCallback::BpTpsCallback(const ::ndk::SpAIBinder& binder) : BpCInterface(binder) {}
BpTpsCallback::~BpTpsCallback() = default;

::ndk::ScopedAStatus BpTpsCallback::onTavixPrismPlaybackStart(bool* _aidl_return) {
    ::ndk::ScopedAParcel reply;
    bool unknownCode = false;
    ::ndk::ScopedAStatus status = callRemote(asBinder(), TRANSACTION_onTavixPrismPlaybackStart,
                                             noArgs, &reply, &unknownCode);
    if (unknownCode && getDefaultImpl()) {
        return getDefaultImpl()->onTavixPrismPlaybackStart(_aidl_return);
    }
    if (!status.isOk()) return status;
    return statusFrom(AParcel_readBool(reply.get(), _aidl_return));
}

::ndk::ScopedAStatus BpTpsCallback::onTavixPrismPlaybackStop(bool* _aidl_return) {
    ::ndk::ScopedAParcel reply;
    bool unknownCode = false;
    ::ndk::ScopedAStatus status = callRemote(asBinder(), TRANSACTION_onTavixPrismPlaybackStop,
                                             noArgs, &reply, &unknownCode);
    if (unknownCode && getDefaultImpl()) {
        return getDefaultImpl()->onTavixPrismPlaybackStop(_aidl_return);
    }
    if (!status.isOk()) return status;
    return statusFrom(AParcel_readBool(reply.get(), _aidl_return));
}

::ndk::ScopedAStatus BpTpsCallback::onTavixNotification(const std::string& in_event) {
    ::ndk::ScopedAParcel reply;
    bool unknownCode = false;
    ::ndk::ScopedAStatus status = callRemote(
            asBinder(), TRANSACTION_onTavixNotification,
            [&](AParcel* in) { return ::ndk::AParcel_writeString(in, in_event); }, &reply,
            &unknownCode);
    if (unknownCode && getDefaultImpl()) return getDefaultImpl()->onTavixNotification(in_event);
    return status;
}

::ndk::ScopedAStatus BpTpsCallback::getInterfaceVersion(int32_t* _aidl_return) {
    const int32_t cached = _aidl_cached_version.load(std::memory_order_relaxed);
    if (cached != -1) {
        *_aidl_return = cached;
        return ::ndk::ScopedAStatus::ok();
    }
    ::ndk::ScopedAParcel reply;
    bool unknownCode = false;
    ::ndk::ScopedAStatus status =
            callRemote(asBinder(), TRANSACTION_getInterfaceVersion, noArgs, &reply, &unknownCode);
    if (unknownCode && getDefaultImpl()) return getDefaultImpl()->getInterfaceVersion(_aidl_return);
    if (!status.isOk()) return status;
    binder_status_t error = AParcel_readInt32(reply.get(), _aidl_return);
    if (error != STATUS_OK) return statusFrom(error);
    _aidl_cached_version.store(*_aidl_return, std::memory_order_relaxed);
    return status;
}

::ndk::ScopedAStatus BpTpsCallback::getInterfaceHash(std::string* _aidl_return) {
    std::lock_guard<std::mutex> lock(_aidl_cached_hash_mutex);
    if (_aidl_cached_hash != "-1") {
        *_aidl_return = _aidl_cached_hash;
        return ::ndk::ScopedAStatus::ok();
    }
    ::ndk::ScopedAParcel reply;
    bool unknownCode = false;
    ::ndk::ScopedAStatus status =
            callRemote(asBinder(), TRANSACTION_getInterfaceHash, noArgs, &reply, &unknownCode);
    if (unknownCode && getDefaultImpl()) return getDefaultImpl()->getInterfaceHash(_aidl_return);
    if (!status.isOk()) return status;
    binder_status_t error = ::ndk::AParcel_readString(reply.get(), _aidl_return);
    if (error != STATUS_OK) return statusFrom(error);
    _aidl_cached_hash = *_aidl_return;
    return status;
}

}  // namespace aidl::vendor::tavix::tps
