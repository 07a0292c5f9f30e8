#include <aidl/android/frameworks/sensorservice/BnEventQueueCallback.h>
#include <aidl/android/frameworks/sensorservice/BpEventQueueCallback.h>
#include <aidl/android/frameworks/sensorservice/IEventQueueCallback.h>

#include "AidlCall.h"

namespace aidl::android::frameworks::sensorservice {

using ::aidl::android::hardware::sensors::Event;

namespace {

binder_status_t onTransact(AIBinder* binder, transaction_code_t code, const AParcel* in,
                           AParcel* out) {
    std::shared_ptr<BnEventQueueCallback> impl =
            std::static_pointer_cast<BnEventQueueCallback>(::ndk::ICInterface::asInterface(binder));
    binder_status_t result = STATUS_UNKNOWN_TRANSACTION;
    if (host::stubMetaTransaction(impl.get(), code, out, &result)) return result;

    if (code == IEventQueueCallback::TRANSACTION_onEvent) {
        Event event;
        binder_status_t error = ::ndk::AParcel_readData(in, &event);
        if (error != STATUS_OK) return error;
        // Oneway: the status has nowhere to go.
        (void)impl->onEvent(event);
        return STATUS_OK;
    }
    return STATUS_UNKNOWN_TRANSACTION;
}

}  // namespace

const char* IEventQueueCallback::descriptor =
        "android.frameworks.sensorservice.IEventQueueCallback";

static AIBinder_Class* const gEventQueueCallbackClass =
        ::ndk::ICInterface::defineClass(IEventQueueCallback::descriptor, onTransact);

std::shared_ptr<IEventQueueCallback> IEventQueueCallback::default_impl = nullptr;

IEventQueueCallback::IEventQueueCallback() = default;
IEventQueueCallback::~IEventQueueCallback() = default;

std::shared_ptr<IEventQueueCallback> IEventQueueCallback::fromBinder(
        const ::ndk::SpAIBinder& binder) {
    return host::interfaceFromBinder<IEventQueueCallback, BpEventQueueCallback>(
            binder, gEventQueueCallbackClass);
}

binder_status_t IEventQueueCallback::writeToParcel(
        AParcel* parcel, const std::shared_ptr<IEventQueueCallback>& instance) {
    return host::writeInterface(parcel, instance);
}

binder_status_t IEventQueueCallback::readFromParcel(
        const AParcel* parcel, std::shared_ptr<IEventQueueCallback>* instance) {
    return host::readInterface(parcel, instance);
}

bool IEventQueueCallback::setDefaultImpl(const std::shared_ptr<IEventQueueCallback>& impl) {
    default_impl = impl;
    return default_impl != nullptr;
}

const std::shared_ptr<IEventQueueCallback>& IEventQueueCallback::getDefaultImpl() {
    return default_impl;
}

::ndk::ScopedAStatus IEventQueueCallbackDefault::onEvent(const Event&) {
    return ::ndk::ScopedAStatus::fromStatus(STATUS_UNKNOWN_TRANSACTION);
}

::ndk::ScopedAStatus IEventQueueCallbackDefault::getInterfaceVersion(int32_t* _aidl_return) {
    *_aidl_return = 0;
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus IEventQueueCallbackDefault::getInterfaceHash(std::string* _aidl_return) {
    *_aidl_return = "";
    return ::ndk::ScopedAStatus::ok();
}

::ndk::SpAIBinder IEventQueueCallbackDefault::asBinder() {
    return ::ndk::SpAIBinder();
}

bool IEventQueueCallbackDefault::isRemote() {
    return false;
}

BnEventQueueCallback::BnEventQueueCallback() = default;
BnEventQueueCallback::~BnEventQueueCallback() = default;

::ndk::SpAIBinder BnEventQueueCallback::createBinder() {
    return host::newStableBinder(gEventQueueCallbackClass, static_cast<void*>(this));
}

::ndk::ScopedAStatus BnEventQueueCallback::getInterfaceVersion(int32_t* _aidl_return) {
    *_aidl_return = IEventQueueCallback::version;
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus BnEventQueueCallback::getInterfaceHash(std::string* _aidl_return) {
    *_aidl_return = IEventQueueCallback::hash;
    return ::ndk::ScopedAStatus::ok();
}

BpEventQueueCallback::BpEventQueueCallback(const ::ndk::SpAIBinder& binder)
    : BpCInterface(binder) {}
BpEventQueueCallback::~BpEventQueueCallback() = default;

::ndk::ScopedAStatus BpEventQueueCallback::onEvent(const Event& in_event) {
    bool unknownCode = false;
    ::ndk::ScopedAStatus status = host::callRemoteOneway(
            asBinder(), TRANSACTION_onEvent,
            [&](AParcel* in) { return ::ndk::AParcel_writeData(in, in_event); }, &unknownCode);
    if (unknownCode && getDefaultImpl()) return getDefaultImpl()->onEvent(in_event);
    return status;
}

::ndk::ScopedAStatus BpEventQueueCallback::getInterfaceVersion(int32_t* _aidl_return) {
    return host::proxyInterfaceVersion<IEventQueueCallback>(this, _aidl_return);
}

::ndk::ScopedAStatus BpEventQueueCallback::getInterfaceHash(std::string* _aidl_return) {
    return host::proxyInterfaceHash<IEventQueueCallback>(this, _aidl_return);
}

}  // namespace aidl::android::frameworks::sensorservice
