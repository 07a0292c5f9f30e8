#include <aidl/android/frameworks/sensorservice/BnEventQueue.h>
#include <aidl/android/frameworks/sensorservice/BpEventQueue.h>
#include <aidl/android/frameworks/sensorservice/IEventQueue.h>

#include "AidlCall.h"

namespace aidl::android::frameworks::sensorservice {

namespace {

binder_status_t onTransact(AIBinder* binder, transaction_code_t code, const AParcel* in,
                           AParcel* out) {
    std::shared_ptr<BnEventQueue> impl =
            std::static_pointer_cast<BnEventQueue>(::ndk::ICInterface::asInterface(binder));
    binder_status_t result = STATUS_UNKNOWN_TRANSACTION;
    if (host::stubMetaTransaction(impl.get(), code, out, &result)) return result;

    switch (code) {
        case IEventQueue::TRANSACTION_disableSensor: {
            int32_t handle = 0;
            binder_status_t error = AParcel_readInt32(in, &handle);
            if (error != STATUS_OK) return error;
            return host::writeReply(out, impl->disableSensor(handle), host::noResult);
        }
        case IEventQueue::TRANSACTION_enableSensor: {
            int32_t handle = 0;
            int32_t samplingPeriodUs = 0;
            int64_t maxBatchReportLatencyUs = 0;
            binder_status_t error = AParcel_readInt32(in, &handle);
            if (error == STATUS_OK) error = AParcel_readInt32(in, &samplingPeriodUs);
            if (error == STATUS_OK) error = AParcel_readInt64(in, &maxBatchReportLatencyUs);
            if (error != STATUS_OK) return error;
            return host::writeReply(
                    out, impl->enableSensor(handle, samplingPeriodUs, maxBatchReportLatencyUs),
                    host::noResult);
        }
    }
    return STATUS_UNKNOWN_TRANSACTION;
}

}  // namespace

const char* IEventQueue::descriptor = "android.frameworks.sensorservice.IEventQueue";

static AIBinder_Class* const gEventQueueClass =
        ::ndk::ICInterface::defineClass(IEventQueue::descriptor, onTransact);

std::shared_ptr<IEventQueue> IEventQueue::default_impl = nullptr;

IEventQueue::IEventQueue() = default;
IEventQueue::~IEventQueue() = default;

std::shared_ptr<IEventQueue> IEventQueue::fromBinder(const ::ndk::SpAIBinder& binder) {
    return host::interfaceFromBinder<IEventQueue, BpEventQueue>(binder, gEventQueueClass);
}

binder_status_t IEventQueue::writeToParcel(AParcel* parcel,
                                           const std::shared_ptr<IEventQueue>& instance) {
    return host::writeInterface(parcel, instance);
}

binder_status_t IEventQueue::readFromParcel(const AParcel* parcel,
                                            std::shared_ptr<IEventQueue>* instance) {
    return host::readInterface(parcel, instance);
}

bool IEventQueue::setDefaultImpl(const std::shared_ptr<IEventQueue>& impl) {
    default_impl = impl;
    return default_impl != nullptr;
}

const std::shared_ptr<IEventQueue>& IEventQueue::getDefaultImpl() {
    return default_impl;
}

::ndk::ScopedAStatus IEventQueueDefault::disableSensor(int32_t) {
    return ::ndk::ScopedAStatus::fromStatus(STATUS_UNKNOWN_TRANSACTION);
}

::ndk::ScopedAStatus IEventQueueDefault::enableSensor(int32_t, int32_t, int64_t) {
    return ::ndk::ScopedAStatus::fromStatus(STATUS_UNKNOWN_TRANSACTION);
}

::ndk::ScopedAStatus IEventQueueDefault::getInterfaceVersion(int32_t* _aidl_return) {
    *_aidl_return = 0;
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus IEventQueueDefault::getInterfaceHash(std::string* _aidl_return) {
    *_aidl_return = "";
    return ::ndk::ScopedAStatus::ok();
}

::ndk::SpAIBinder IEventQueueDefault::asBinder() {
    return ::ndk::SpAIBinder();
}

bool IEventQueueDefault::isRemote() {
    return false;
}

BnEventQueue::BnEventQueue() = default;
BnEventQueue::~BnEventQueue() = default;

::ndk::SpAIBinder BnEventQueue::createBinder() {
    return host::newStableBinder(gEventQueueClass, static_cast<void*>(this));
}

::ndk::ScopedAStatus BnEventQueue::getInterfaceVersion(int32_t* _aidl_return) {
    *_aidl_return = IEventQueue::version;
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus BnEventQueue::getInterfaceHash(std::string* _aidl_return) {
    *_aidl_return = IEventQueue::hash;
    return ::ndk::ScopedAStatus::ok();
}

BpEventQueue::BpEventQueue(const ::ndk::SpAIBinder& binder) : BpCInterface(binder) {}
BpEventQueue::~BpEventQueue() = default;

::ndk::ScopedAStatus BpEventQueue::disableSensor(int32_t in_sensorHandle) {
    ::ndk::ScopedAParcel reply;
    bool unknownCode = false;
    ::ndk::ScopedAStatus status = host::callRemote(
            asBinder(), TRANSACTION_disableSensor,
            [&](AParcel* in) { return AParcel_writeInt32(in, in_sensorHandle); }, &reply,
            &unknownCode);
    if (unknownCode && getDefaultImpl()) return getDefaultImpl()->disableSensor(in_sensorHandle);
    return status;
}

::ndk::ScopedAStatus BpEventQueue::enableSensor(int32_t in_sensorHandle,
                                                int32_t in_samplingPeriodUs,
                                                int64_t in_maxBatchReportLatencyUs) {
    ::ndk::ScopedAParcel reply;
    bool unknownCode = false;
    ::ndk::ScopedAStatus status = host::callRemote(
            asBinder(), TRANSACTION_enableSensor,
            [&](AParcel* in) {
                binder_status_t error = AParcel_writeInt32(in, in_sensorHandle);
                if (error == STATUS_OK) error = AParcel_writeInt32(in, in_samplingPeriodUs);
                if (error == STATUS_OK) error = AParcel_writeInt64(in, in_maxBatchReportLatencyUs);
                return error;
            },
            &reply, &unknownCode);
    if (unknownCode && getDefaultImpl()) {
        return getDefaultImpl()->enableSensor(in_sensorHandle, in_samplingPeriodUs,
                                              in_maxBatchReportLatencyUs);
    }
    return status;
}

::ndk::ScopedAStatus BpEventQueue::getInterfaceVersion(int32_t* _aidl_return) {
    return host::proxyInterfaceVersion<IEventQueue>(this, _aidl_return);
}

::ndk::ScopedAStatus BpEventQueue::getInterfaceHash(std::string* _aidl_return) {
    return host::proxyInterfaceHash<IEventQueue>(this, _aidl_return);
}

}  // namespace aidl::android::frameworks::sensorservice
