#include <aidl/android/frameworks/sensorservice/BnSensorManager.h>
#include <aidl/android/frameworks/sensorservice/BpSensorManager.h>
#include <aidl/android/frameworks/sensorservice/ISensorManager.h>

#include "AidlCall.h"

namespace aidl::android::frameworks::sensorservice {

using ::aidl::android::hardware::common::Ashmem;
using ::aidl::android::hardware::sensors::SensorInfo;
using ::aidl::android::hardware::sensors::SensorType;

namespace {

binder_status_t onTransact(AIBinder* binder, transaction_code_t code, const AParcel* in,
                           AParcel* out) {
    // Keeps the implementation alive until the call returns, even if the binder goes away.
    std::shared_ptr<BnSensorManager> impl =
            std::static_pointer_cast<BnSensorManager>(::ndk::ICInterface::asInterface(binder));
    binder_status_t result = STATUS_UNKNOWN_TRANSACTION;
    if (host::stubMetaTransaction(impl.get(), code, out, &result)) return result;

    switch (code) {
        case ISensorManager::TRANSACTION_createAshmemDirectChannel: {
            Ashmem mem;
            int64_t size = 0;
            binder_status_t error = ::ndk::AParcel_readData(in, &mem);
            if (error == STATUS_OK) error = AParcel_readInt64(in, &size);
            if (error != STATUS_OK) return error;
            std::shared_ptr<IDirectReportChannel> channel;
            ::ndk::ScopedAStatus status = impl->createAshmemDirectChannel(mem, size, &channel);
            return host::writeReply(out, status,
                                    [&] { return host::writeInterface(out, channel); });
        }
        case ISensorManager::TRANSACTION_createEventQueue: {
            std::shared_ptr<IEventQueueCallback> callback;
            binder_status_t error = host::readInterface(in, &callback);
            if (error != STATUS_OK) return error;
            std::shared_ptr<IEventQueue> queue;
            ::ndk::ScopedAStatus status = impl->createEventQueue(callback, &queue);
            return host::writeReply(out, status, [&] { return host::writeInterface(out, queue); });
        }
        case ISensorManager::TRANSACTION_createGrallocDirectChannel: {
            ::ndk::ScopedFileDescriptor buffer;
            int64_t size = 0;
            binder_status_t error = ::ndk::AParcel_readData(in, &buffer);
            if (error == STATUS_OK) error = AParcel_readInt64(in, &size);
            if (error != STATUS_OK) return error;
            std::shared_ptr<IDirectReportChannel> channel;
            ::ndk::ScopedAStatus status = impl->createGrallocDirectChannel(buffer, size, &channel);
            return host::writeReply(out, status,
                                    [&] { return host::writeInterface(out, channel); });
        }
        case ISensorManager::TRANSACTION_getDefaultSensor: {
            SensorType type = SensorType(0);
            binder_status_t error = ::ndk::AParcel_readData(in, &type);
            if (error != STATUS_OK) return error;
            SensorInfo sensor;
            ::ndk::ScopedAStatus status = impl->getDefaultSensor(type, &sensor);
            return host::writeReply(out, status,
                                    [&] { return ::ndk::AParcel_writeData(out, sensor); });
        }
        case ISensorManager::TRANSACTION_getSensorList: {
            std::vector<SensorInfo> sensors;
            ::ndk::ScopedAStatus status = impl->getSensorList(&sensors);
            return host::writeReply(out, status,
                                    [&] { return ::ndk::AParcel_writeData(out, sensors); });
        }
    }
    return STATUS_UNKNOWN_TRANSACTION;
}

}  // namespace

const char* ISensorManager::descriptor = "android.frameworks.sensorservice.ISensorManager";

static AIBinder_Class* const gSensorManagerClass =
        ::ndk::ICInterface::defineClass(ISensorManager::descriptor, onTransact);

std::shared_ptr<ISensorManager> ISensorManager::default_impl = nullptr;

ISensorManager::ISensorManager() = default;
ISensorManager::~ISensorManager() = default;

std::shared_ptr<ISensorManager> ISensorManager::fromBinder(const ::ndk::SpAIBinder& binder) {
    return host::interfaceFromBinder<ISensorManager, BpSensorManager>(binder, gSensorManagerClass);
}

binder_status_t ISensorManager::writeToParcel(AParcel* parcel,
                                              const std::shared_ptr<ISensorManager>& instance) {
    return host::writeInterface(parcel, instance);
}

binder_status_t ISensorManager::readFromParcel(const AParcel* parcel,
                                               std::shared_ptr<ISensorManager>* instance) {
    return host::readInterface(parcel, instance);
}

bool ISensorManager::setDefaultImpl(const std::shared_ptr<ISensorManager>& impl) {
    default_impl = impl;
    return default_impl != nullptr;
}

const std::shared_ptr<ISensorManager>& ISensorManager::getDefaultImpl() {
    return default_impl;
}

// ---- default implementation -----------------------------------------------------------------

::ndk::ScopedAStatus ISensorManagerDefault::createAshmemDirectChannel(
        const Ashmem&, int64_t, std::shared_ptr<IDirectReportChannel>*) {
    return ::ndk::ScopedAStatus::fromStatus(STATUS_UNKNOWN_TRANSACTION);
}

::ndk::ScopedAStatus ISensorManagerDefault::createEventQueue(
        const std::shared_ptr<IEventQueueCallback>&, std::shared_ptr<IEventQueue>*) {
    return ::ndk::ScopedAStatus::fromStatus(STATUS_UNKNOWN_TRANSACTION);
}

::ndk::ScopedAStatus ISensorManagerDefault::createGrallocDirectChannel(
        const ::ndk::ScopedFileDescriptor&, int64_t, std::shared_ptr<IDirectReportChannel>*) {
    return ::ndk::ScopedAStatus::fromStatus(STATUS_UNKNOWN_TRANSACTION);
}

::ndk::ScopedAStatus ISensorManagerDefault::getDefaultSensor(SensorType, SensorInfo*) {
    return ::ndk::ScopedAStatus::fromStatus(STATUS_UNKNOWN_TRANSACTION);
}

::ndk::ScopedAStatus ISensorManagerDefault::getSensorList(std::vector<SensorInfo>*) {
    return ::ndk::ScopedAStatus::fromStatus(STATUS_UNKNOWN_TRANSACTION);
}

::ndk::ScopedAStatus ISensorManagerDefault::getInterfaceVersion(int32_t* _aidl_return) {
    *_aidl_return = 0;
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus ISensorManagerDefault::getInterfaceHash(std::string* _aidl_return) {
    *_aidl_return = "";
    return ::ndk::ScopedAStatus::ok();
}

::ndk::SpAIBinder ISensorManagerDefault::asBinder() {
    return ::ndk::SpAIBinder();
}

bool ISensorManagerDefault::isRemote() {
    return false;
}

// ---- stub -----------------------------------------------------------------------------------

BnSensorManager::BnSensorManager() = default;
BnSensorManager::~BnSensorManager() = default;

::ndk::SpAIBinder BnSensorManager::createBinder() {
    return host::newStableBinder(gSensorManagerClass, static_cast<void*>(this));
}

::ndk::ScopedAStatus BnSensorManager::getInterfaceVersion(int32_t* _aidl_return) {
    *_aidl_return = ISensorManager::version;
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus BnSensorManager::getInterfaceHash(std::string* _aidl_return) {
    *_aidl_return = ISensorManager::hash;
    return ::ndk::ScopedAStatus::ok();
}

// ---- proxy ----------------------------------------------------------------------------------

BpSensorManager::BpSensorManager(const ::ndk::SpAIBinder& binder) : BpCInterface(binder) {}
BpSensorManager::~BpSensorManager() = default;

::ndk::ScopedAStatus BpSensorManager::createAshmemDirectChannel(
        const Ashmem& in_mem, int64_t in_size,
        std::shared_ptr<IDirectReportChannel>* _aidl_return) {
    ::ndk::ScopedAParcel reply;
    bool unknownCode = false;
    ::ndk::ScopedAStatus status = host::callRemote(
            asBinder(), TRANSACTION_createAshmemDirectChannel,
            [&](AParcel* in) {
                binder_status_t error = ::ndk::AParcel_writeData(in, in_mem);
                if (error != STATUS_OK) return error;
                return AParcel_writeInt64(in, in_size);
            },
            &reply, &unknownCode);
    if (unknownCode && getDefaultImpl()) {
        return getDefaultImpl()->createAshmemDirectChannel(in_mem, in_size, _aidl_return);
    }
    if (!status.isOk()) return status;
    return host::statusFrom(host::readInterface(reply.get(), _aidl_return));
}

::ndk::ScopedAStatus BpSensorManager::createEventQueue(
        const std::shared_ptr<IEventQueueCallback>& in_callback,
        std::shared_ptr<IEventQueue>* _aidl_return) {
    ::ndk::ScopedAParcel reply;
    bool unknownCode = false;
    ::ndk::ScopedAStatus status = host::callRemote(
            asBinder(), TRANSACTION_createEventQueue,
            [&](AParcel* in) { return host::writeInterface(in, in_callback); }, &reply,
            &unknownCode);
    if (unknownCode && getDefaultImpl()) {
        return getDefaultImpl()->createEventQueue(in_callback, _aidl_return);
    }
    if (!status.isOk()) return status;
    return host::statusFrom(host::readInterface(reply.get(), _aidl_return));
}

::ndk::ScopedAStatus BpSensorManager::createGrallocDirectChannel(
        const ::ndk::ScopedFileDescriptor& in_buffer, int64_t in_size,
        std::shared_ptr<IDirectReportChannel>* _aidl_return) {
    ::ndk::ScopedAParcel reply;
    bool unknownCode = false;
    ::ndk::ScopedAStatus status = host::callRemote(
            asBinder(), TRANSACTION_createGrallocDirectChannel,
            [&](AParcel* in) {
                binder_status_t error = ::ndk::AParcel_writeData(in, in_buffer);
                if (error != STATUS_OK) return error;
                return AParcel_writeInt64(in, in_size);
            },
            &reply, &unknownCode);
    if (unknownCode && getDefaultImpl()) {
        return getDefaultImpl()->createGrallocDirectChannel(in_buffer, in_size, _aidl_return);
    }
    if (!status.isOk()) return status;
    return host::statusFrom(host::readInterface(reply.get(), _aidl_return));
}

::ndk::ScopedAStatus BpSensorManager::getDefaultSensor(SensorType in_type,
                                                       SensorInfo* _aidl_return) {
    ::ndk::ScopedAParcel reply;
    bool unknownCode = false;
    ::ndk::ScopedAStatus status = host::callRemote(
            asBinder(), TRANSACTION_getDefaultSensor,
            [&](AParcel* in) { return ::ndk::AParcel_writeData(in, in_type); }, &reply,
            &unknownCode);
    if (unknownCode && getDefaultImpl()) {
        return getDefaultImpl()->getDefaultSensor(in_type, _aidl_return);
    }
    if (!status.isOk()) return status;
    return host::statusFrom(::ndk::AParcel_readData(reply.get(), _aidl_return));
}

::ndk::ScopedAStatus BpSensorManager::getSensorList(std::vector<SensorInfo>* _aidl_return) {
    ::ndk::ScopedAParcel reply;
    bool unknownCode = false;
    ::ndk::ScopedAStatus status = host::callRemote(asBinder(), TRANSACTION_getSensorList,
                                                   host::noArgs, &reply, &unknownCode);
    if (unknownCode && getDefaultImpl()) return getDefaultImpl()->getSensorList(_aidl_return);
    if (!status.isOk()) return status;
    return host::statusFrom(::ndk::AParcel_readData(reply.get(), _aidl_return));
}

::ndk::ScopedAStatus BpSensorManager::getInterfaceVersion(int32_t* _aidl_return) {
    return host::proxyInterfaceVersion<ISensorManager>(this, _aidl_return);
}

::ndk::ScopedAStatus BpSensorManager::getInterfaceHash(std::string* _aidl_return) {
    return host::proxyInterfaceHash<ISensorManager>(this, _aidl_return);
}

}  // namespace aidl::android::frameworks::sensorservice
