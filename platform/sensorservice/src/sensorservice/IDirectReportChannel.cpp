#include <aidl/android/frameworks/sensorservice/BnDirectReportChannel.h>
#include <aidl/android/frameworks/sensorservice/BpDirectReportChannel.h>
#include <aidl/android/frameworks/sensorservice/IDirectReportChannel.h>

#include "AidlCall.h"

namespace aidl::android::frameworks::sensorservice {

using ::aidl::android::hardware::sensors::ISensors;

namespace {

binder_status_t onTransact(AIBinder* binder, transaction_code_t code, const AParcel* in,
                           AParcel* out) {
    std::shared_ptr<BnDirectReportChannel> impl = std::static_pointer_cast<BnDirectReportChannel>(
            ::ndk::ICInterface::asInterface(binder));
    binder_status_t result = STATUS_UNKNOWN_TRANSACTION;
    if (host::stubMetaTransaction(impl.get(), code, out, &result)) return result;

    if (code == IDirectReportChannel::TRANSACTION_configure) {
        int32_t handle = 0;
        ISensors::RateLevel rate = ISensors::RateLevel(0);
        binder_status_t error = AParcel_readInt32(in, &handle);
        if (error == STATUS_OK) error = ::ndk::AParcel_readData(in, &rate);
        if (error != STATUS_OK) return error;
        int32_t token = 0;
        ::ndk::ScopedAStatus status = impl->configure(handle, rate, &token);
        return host::writeReply(out, status, [&] { return AParcel_writeInt32(out, token); });
    }
    return STATUS_UNKNOWN_TRANSACTION;
}

}  // namespace

const char* IDirectReportChannel::descriptor =
        "android.frameworks.sensorservice.IDirectReportChannel";

static AIBinder_Class* const gDirectReportChannelClass =
        ::ndk::ICInterface::defineClass(IDirectReportChannel::descriptor, onTransact);

std::shared_ptr<IDirectReportChannel> IDirectReportChannel::default_impl = nullptr;

IDirectReportChannel::IDirectReportChannel() = default;
IDirectReportChannel::~IDirectReportChannel() = default;

std::shared_ptr<IDirectReportChannel> IDirectReportChannel::fromBinder(
        const ::ndk::SpAIBinder& binder) {
    return host::interfaceFromBinder<IDirectReportChannel, BpDirectReportChannel>(
            binder, gDirectReportChannelClass);
}

binder_status_t IDirectReportChannel::writeToParcel(
        AParcel* parcel, const std::shared_ptr<IDirectReportChannel>& instance) {
    return host::writeInterface(parcel, instance);
}

binder_status_t IDirectReportChannel::readFromParcel(
        const AParcel* parcel, std::shared_ptr<IDirectReportChannel>* instance) {
    return host::readInterface(parcel, instance);
}

bool IDirectReportChannel::setDefaultImpl(const std::shared_ptr<IDirectReportChannel>& impl) {
    default_impl = impl;
    return default_impl != nullptr;
}

const std::shared_ptr<IDirectReportChannel>& IDirectReportChannel::getDefaultImpl() {
    return default_impl;
}

::ndk::ScopedAStatus IDirectReportChannelDefault::configure(int32_t, ISensors::RateLevel,
                                                            int32_t*) {
    return ::ndk::ScopedAStatus::fromStatus(STATUS_UNKNOWN_TRANSACTION);
}

::ndk::ScopedAStatus IDirectReportChannelDefault::getInterfaceVersion(int32_t* _aidl_return) {
    *_aidl_return = 0;
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus IDirectReportChannelDefault::getInterfaceHash(std::string* _aidl_return) {
    *_aidl_return = "";
    return ::ndk::ScopedAStatus::ok();
}

::ndk::SpAIBinder IDirectReportChannelDefault::asBinder() {
    return ::ndk::SpAIBinder();
}

bool IDirectReportChannelDefault::isRemote() {
    return false;
}

BnDirectReportChannel::BnDirectReportChannel() = default;
BnDirectReportChannel::~BnDirectReportChannel() = default;

::ndk::SpAIBinder BnDirectReportChannel::createBinder() {
    return host::newStableBinder(gDirectReportChannelClass, static_cast<void*>(this));
}

::ndk::ScopedAStatus BnDirectReportChannel::getInterfaceVersion(int32_t* _aidl_return) {
    *_aidl_return = IDirectReportChannel::version;
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus BnDirectReportChannel::getInterfaceHash(std::string* _aidl_return) {
    *_aidl_return = IDirectReportChannel::hash;
    return ::ndk::ScopedAStatus::ok();
}

BpDirectReportChannel::BpDirectReportChannel(const ::ndk::SpAIBinder& binder)
    : BpCInterface(binder) {}
BpDirectReportChannel::~BpDirectReportChannel() = default;

::ndk::ScopedAStatus BpDirectReportChannel::configure(int32_t in_sensorHandle,
                                                      ISensors::RateLevel in_rate,
                                                      int32_t* _aidl_return) {
    ::ndk::ScopedAParcel reply;
    bool unknownCode = false;
    ::ndk::ScopedAStatus status = host::callRemote(
            asBinder(), TRANSACTION_configure,
            [&](AParcel* in) {
                binder_status_t error = AParcel_writeInt32(in, in_sensorHandle);
                if (error == STATUS_OK) error = ::ndk::AParcel_writeData(in, in_rate);
                return error;
            },
            &reply, &unknownCode);
    if (unknownCode && getDefaultImpl()) {
        return getDefaultImpl()->configure(in_sensorHandle, in_rate, _aidl_return);
    }
    if (!status.isOk()) return status;
    return host::statusFrom(AParcel_readInt32(reply.get(), _aidl_return));
}

::ndk::ScopedAStatus BpDirectReportChannel::getInterfaceVersion(int32_t* _aidl_return) {
    return host::proxyInterfaceVersion<IDirectReportChannel>(this, _aidl_return);
}

::ndk::ScopedAStatus BpDirectReportChannel::getInterfaceHash(std::string* _aidl_return) {
    return host::proxyInterfaceHash<IDirectReportChannel>(this, _aidl_return);
}

}  // namespace aidl::android::frameworks::sensorservice
