#include "aidl/vendor/tavix/tps/ITps.h"

#include <android/binder_parcel_utils.h>

#include <cstring>

#include "aidl/vendor/tavix/tps/BnTps.h"
#include "aidl/vendor/tavix/tps/BpTps.h"

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

// Every argument is read before the method runs; a failed read ends the transaction with nothing
// written and the method not called.
binder_status_t onTransact(AIBinder* binder, transaction_code_t code, const AParcel* in,
                           AParcel* out) {
    // Keeps the implementation alive until the call returns, even if the binder goes away.
    std::shared_ptr<BnTps> impl =
            std::static_pointer_cast<BnTps>(::ndk::ICInterface::asInterface(binder));
    switch (code) {
        case ITps::TRANSACTION_getTavixPrismStatus: {
            std::vector<float> result;
            ::ndk::ScopedAStatus status = impl->getTavixPrismStatus(&result);
            return writeReply(out, status, [&] { return ::ndk::AParcel_writeVector(out, result); });
        }
        case ITps::TRANSACTION_registerCallback: {
            std::shared_ptr<ITpsCallback> callback;
            binder_status_t error = ITpsCallback::readFromParcel(in, &callback);
            if (error != STATUS_OK) return error;
            return writeReply(out, impl->registerCallback(callback), noResult);
        }
        case ITps::TRANSACTION_registerProcessor: {
            bool filtered = false;
            binder_status_t error = AParcel_readBool(in, &filtered);
            if (error != STATUS_OK) return error;
            return writeReply(out, impl->registerProcessor(filtered), noResult);
        }
        case ITps::TRANSACTION_unregisterProcessor:
            return writeReply(out, impl->unregisterProcessor(), noResult);
        case ITps::TRANSACTION_updateParams: {
            int64_t id = 0;
            int64_t value = 0;
            binder_status_t error = AParcel_readInt64(in, &id);
            if (error != STATUS_OK) return error;
            error = AParcel_readInt64(in, &value);
            if (error != STATUS_OK) return error;
            return writeReply(out, impl->updateParams(id, value), noResult);
        }
        case ITps::TRANSACTION_updateDisplayIDs: {
            std::vector<int32_t> displayIds;
            binder_status_t error = ::ndk::AParcel_readVector(in, &displayIds);
            if (error != STATUS_OK) return error;
            return writeReply(out, impl->updateDisplayIDs(displayIds), noResult);
        }
        case ITps::TRANSACTION_getDisplayIDs: {
            std::vector<int32_t> result;
            ::ndk::ScopedAStatus status = impl->getDisplayIDs(&result);
            return writeReply(out, status, [&] { return ::ndk::AParcel_writeVector(out, result); });
        }
        case ITps::TRANSACTION_setParameters: {
            std::string params;
            binder_status_t error = ::ndk::AParcel_readString(in, &params);
            if (error != STATUS_OK) return error;
            return writeReply(out, impl->setParameters(params), noResult);
        }
        case ITps::TRANSACTION_getParameters: {
            std::string keys;
            binder_status_t error = ::ndk::AParcel_readString(in, &keys);
            if (error != STATUS_OK) return error;
            std::string result;
            ::ndk::ScopedAStatus status = impl->getParameters(keys, &result);
            return writeReply(out, status, [&] { return ::ndk::AParcel_writeString(out, result); });
        }
        case ITps::TRANSACTION_getInterfaceVersion: {
            int32_t result = 0;
            ::ndk::ScopedAStatus status = impl->getInterfaceVersion(&result);
            return writeReply(out, status, [&] { return AParcel_writeInt32(out, result); });
        }
        case ITps::TRANSACTION_getInterfaceHash: {
            std::string result;
            ::ndk::ScopedAStatus status = impl->getInterfaceHash(&result);
            return writeReply(out, status, [&] { return ::ndk::AParcel_writeString(out, result); });
        }
    }
    return STATUS_UNKNOWN_TRANSACTION;
}

}  // namespace

const char* ITps::descriptor = "vendor.tavix.tps.ITps";

static AIBinder_Class* const gITpsClass =
        ::ndk::ICInterface::defineClass(ITps::descriptor, onTransact);

std::shared_ptr<ITps> ITps::default_impl = nullptr;

ITps::ITps() = default;
ITps::~ITps() = default;

std::shared_ptr<ITps> ITps::fromBinder(const ::ndk::SpAIBinder& binder) {
    if (!AIBinder_associateClass(binder.get(), gITpsClass)) {
        // A class object from another copy of this definition (another library in the process)
        // still speaks the same protocol, so it is used through a proxy.
        const AIBinder_Class* originalClass = AIBinder_getClass(binder.get());
        if (originalClass == nullptr) return nullptr;
        if (strcmp(AIBinder_Class_getDescriptor(originalClass), descriptor) != 0) return nullptr;
        return ::ndk::SharedRefBase::make<BpTps>(binder);
    }
    std::shared_ptr<::ndk::ICInterface> local = ::ndk::ICInterface::asInterface(binder.get());
    if (local) return std::static_pointer_cast<ITps>(local);
    return ::ndk::SharedRefBase::make<BpTps>(binder);
}

binder_status_t ITps::writeToParcel(AParcel* parcel, const std::shared_ptr<ITps>& instance) {
    return AParcel_writeStrongBinder(parcel, instance ? instance->asBinder().get() : nullptr);
}

binder_status_t ITps::readFromParcel(const AParcel* parcel, std::shared_ptr<ITps>* instance) {
    ::ndk::SpAIBinder binder;
    binder_status_t error = AParcel_readStrongBinder(parcel, binder.getR());
    if (error != STATUS_OK) return error;
    *instance = fromBinder(binder);
    return STATUS_OK;
}

bool ITps::setDefaultImpl(const std::shared_ptr<ITps>& impl) {
    default_impl = impl;
    return default_impl != nullptr;
}

const std::shared_ptr<ITps>& ITps::getDefaultImpl() {
    return default_impl;
}

::ndk::ScopedAStatus ITpsDefault::getTavixPrismStatus(std::vector<float>*) {
    return ::ndk::ScopedAStatus::fromStatus(STATUS_UNKNOWN_TRANSACTION);
}

::ndk::ScopedAStatus ITpsDefault::registerCallback(const std::shared_ptr<ITpsCallback>&) {
    return ::ndk::ScopedAStatus::fromStatus(STATUS_UNKNOWN_TRANSACTION);
}

::ndk::ScopedAStatus ITpsDefault::registerProcessor(bool) {
    return ::ndk::ScopedAStatus::fromStatus(STATUS_UNKNOWN_TRANSACTION);
}

::ndk::ScopedAStatus ITpsDefault::unregisterProcessor() {
    return ::ndk::ScopedAStatus::fromStatus(STATUS_UNKNOWN_TRANSACTION);
}

::ndk::ScopedAStatus ITpsDefault::updateParams(int64_t, int64_t) {
    return ::ndk::ScopedAStatus::fromStatus(STATUS_UNKNOWN_TRANSACTION);
}

::ndk::ScopedAStatus ITpsDefault::updateDisplayIDs(const std::vector<int32_t>&) {
    return ::ndk::ScopedAStatus::fromStatus(STATUS_UNKNOWN_TRANSACTION);
}

::ndk::ScopedAStatus ITpsDefault::getDisplayIDs(std::vector<int32_t>*) {
    return ::ndk::ScopedAStatus::fromStatus(STATUS_UNKNOWN_TRANSACTION);
}

::ndk::ScopedAStatus ITpsDefault::setParameters(const std::string&) {
    return ::ndk::ScopedAStatus::fromStatus(STATUS_UNKNOWN_TRANSACTION);
}

::ndk::ScopedAStatus ITpsDefault::getParameters(const std::string&, std::string*) {
    return ::ndk::ScopedAStatus::fromStatus(STATUS_UNKNOWN_TRANSACTION);
}

::ndk::ScopedAStatus ITpsDefault::getInterfaceVersion(int32_t* _aidl_return) {
    *_aidl_return = 0;
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus ITpsDefault::getInterfaceHash(std::string* _aidl_return) {
    *_aidl_return = "";
    return ::ndk::ScopedAStatus::ok();
}

::ndk::SpAIBinder ITpsDefault::asBinder() {
    return ::ndk::SpAIBinder();
}

bool ITpsDefault::isRemote() {
    return false;
}

BnTps::BnTps() = default;
BnTps::~BnTps() = default;

::ndk::SpAIBinder BnTps::createBinder() {
    AIBinder* binder = AIBinder_new(gITpsClass, static_cast<void*>(this));
#ifdef BINDER_STABILITY_SUPPORT
    AIBinder_markVintfStability(binder);
#endif  // BINDER_STABILITY_SUPPORT
    return ::ndk::SpAIBinder(binder);
}

::ndk::ScopedAStatus BnTps::getInterfaceVersion(int32_t* _aidl_return) {
    *_aidl_return = ITps::version;
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus BnTps::getInterfaceHash(std::string* _aidl_return) {
    *_aidl_return = ITps::hash;
    return ::ndk::ScopedAStatus::ok();
}

BpTps::BpTps(const ::ndk::SpAIBinder& binder) : BpCInterface(binder) {}
BpTps::~BpTps() = default;

::ndk::ScopedAStatus BpTps::getTavixPrismStatus(std::vector<float>* _aidl_return) {
    ::ndk::ScopedAParcel reply;
    bool unknownCode = false;
    ::ndk::ScopedAStatus status =
            callRemote(asBinder(), TRANSACTION_getTavixPrismStatus, noArgs, &reply, &unknownCode);
    if (unknownCode && getDefaultImpl()) return getDefaultImpl()->getTavixPrismStatus(_aidl_return);
    if (!status.isOk()) return status;
    return statusFrom(::ndk::AParcel_readVector(reply.get(), _aidl_return));
}

::ndk::ScopedAStatus BpTps::registerCallback(const std::shared_ptr<ITpsCallback>& in_callback) {
    ::ndk::ScopedAParcel reply;
    bool unknownCode = false;
    ::ndk::ScopedAStatus status = callRemote(
            asBinder(), TRANSACTION_registerCallback,
            [&](AParcel* in) { return ITpsCallback::writeToParcel(in, in_callback); }, &reply,
            &unknownCode);
    if (unknownCode && getDefaultImpl()) return getDefaultImpl()->registerCallback(in_callback);
    return status;
}

::ndk::ScopedAStatus BpTps::registerProcessor(bool in_filtered) {
    ::ndk::ScopedAParcel reply;
    bool unknownCode = false;
    ::ndk::ScopedAStatus status = callRemote(
            asBinder(), TRANSACTION_registerProcessor,
            [&](AParcel* in) { return AParcel_writeBool(in, in_filtered); }, &reply, &unknownCode);
    if (unknownCode && getDefaultImpl()) return getDefaultImpl()->registerProcessor(in_filtered);
    return status;
}

::ndk::ScopedAStatus BpTps::unregisterProcessor() {
    ::ndk::ScopedAParcel reply;
    bool unknownCode = false;
    ::ndk::ScopedAStatus status =
            callRemote(asBinder(), TRANSACTION_unregisterProcessor, noArgs, &reply, &unknownCode);
    if (unknownCode && getDefaultImpl()) return getDefaultImpl()->unregisterProcessor();
    return status;
}

::ndk::ScopedAStatus BpTps::updateParams(int64_t in_id, int64_t in_value) {
    ::ndk::ScopedAParcel reply;
    bool unknownCode = false;
    ::ndk::ScopedAStatus status = callRemote(
            asBinder(), TRANSACTION_updateParams,
            [&](AParcel* in) {
                binder_status_t error = AParcel_writeInt64(in, in_id);
                return error != STATUS_OK ? error : AParcel_writeInt64(in, in_value);
            },
            &reply, &unknownCode);
    if (unknownCode && getDefaultImpl()) return getDefaultImpl()->updateParams(in_id, in_value);
    return status;
}

::ndk::ScopedAStatus BpTps::updateDisplayIDs(const std::vector<int32_t>& in_displayIds) {
    ::ndk::ScopedAParcel reply;
    bool unknownCode = false;
    ::ndk::ScopedAStatus status = callRemote(
            asBinder(), TRANSACTION_updateDisplayIDs,
            [&](AParcel* in) { return ::ndk::AParcel_writeVector(in, in_displayIds); }, &reply,
            &unknownCode);
    if (unknownCode && getDefaultImpl()) return getDefaultImpl()->updateDisplayIDs(in_displayIds);
    return status;
}

::ndk::ScopedAStatus BpTps::getDisplayIDs(std::vector<int32_t>* _aidl_return) {
    ::ndk::ScopedAParcel reply;
    bool unknownCode = false;
    ::ndk::ScopedAStatus status =
            callRemote(asBinder(), TRANSACTION_getDisplayIDs, noArgs, &reply, &unknownCode);
    if (unknownCode && getDefaultImpl()) return getDefaultImpl()->getDisplayIDs(_aidl_return);
    if (!status.isOk()) return status;
    return statusFrom(::ndk::AParcel_readVector(reply.get(), _aidl_return));
}

::ndk::ScopedAStatus BpTps::setParameters(const std::string& in_params) {
    ::ndk::ScopedAParcel reply;
    bool unknownCode = false;
    ::ndk::ScopedAStatus status = callRemote(
            asBinder(), TRANSACTION_setParameters,
            [&](AParcel* in) { return ::ndk::AParcel_writeString(in, in_params); }, &reply,
            &unknownCode);
    if (unknownCode && getDefaultImpl()) return getDefaultImpl()->setParameters(in_params);
    return status;
}

::ndk::ScopedAStatus BpTps::getParameters(const std::string& in_keys, std::string* _aidl_return) {
    ::ndk::ScopedAParcel reply;
    bool unknownCode = false;
    ::ndk::ScopedAStatus status = callRemote(
            asBinder(), TRANSACTION_getParameters,
            [&](AParcel* in) { return ::ndk::AParcel_writeString(in, in_keys); }, &reply,
            &unknownCode);
    if (unknownCode && getDefaultImpl()) {
        return getDefaultImpl()->getParameters(in_keys, _aidl_return);
    }
    if (!status.isOk()) return status;
    return statusFrom(::ndk::AParcel_readString(reply.get(), _aidl_return));
}

::ndk::ScopedAStatus BpTps::getInterfaceVersion(int32_t* _aidl_return) {
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

::ndk::ScopedAStatus BpTps::getInterfaceHash(std::string* _aidl_return) {
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
