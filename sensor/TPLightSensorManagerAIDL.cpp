#define LOG_TAG "TavixLightSensorManager"

#include "TPLightSensorManagerAIDL.h"

#include <aidl/android/frameworks/sensorservice/BnEventQueueCallback.h>
#include <aidl/android/frameworks/sensorservice/IEventQueue.h>
#include <aidl/android/frameworks/sensorservice/ISensorManager.h>
#include <aidl/android/hardware/sensors/Event.h>
#include <aidl/android/hardware/sensors/SensorInfo.h>
#include <aidl/android/hardware/sensors/SensorType.h>
#include <aidl/sensors/convert.h>
#include <android/binder_auto_utils.h>
#include <android/binder_ibinder.h>
#include <android/binder_ibinder_platform.h>
#include <android/binder_manager.h>
#include <android/sensor.h>
#include <hardware/sensors.h>
#include <sched.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "TpsLog.h"

namespace tavixPrism {

using ::aidl::android::frameworks::sensorservice::BnEventQueueCallback;
using ::aidl::android::frameworks::sensorservice::IEventQueue;
using ::aidl::android::frameworks::sensorservice::ISensorManager;
using ::aidl::android::hardware::sensors::Event;
using ::aidl::android::hardware::sensors::SensorInfo;
using ::aidl::android::hardware::sensors::SensorType;

namespace {

constexpr int32_t kOk = 0;
constexpr int32_t kError = -22;
constexpr int32_t kSamplingPeriodUs = 50000;
constexpr int64_t kMaxReportLatencyUs = 0;
constexpr int kCallbackSchedulerPriority = 98;

}  // namespace

// Guards every TPSensorEventQueueCallback::mImpl. onEvent holds it for the whole event, so once
// destroyEventQueue() has cleared the pointer no handler can still be inside the Impl.
static std::mutex gCallbackLock;

class TPLightSensorManager::Impl {
public:
    Impl();
    ~Impl();
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;

    int32_t createLightSensor();
    int32_t createEventQueue();
    int32_t enableSensor();
    int32_t disableSensor();
    void destroyEventQueue();
    float getCurAmbinetLux() const { return mCurLux.load(); }

private:
    class TPSensorEventQueue;

    ASensor const* getDefaultSensor(int type);
    size_t getSensorList(ASensorList* out);
    int32_t lightSensorHandle() const;
    // Reports only; later calls on the dead service simply fail.
    static void serviceDied(void* cookie);

    ::ndk::ScopedAIBinder_DeathRecipient mDeathRecipient;
    std::shared_ptr<ISensorManager> mSensorManager;
    // Points into mSensorList, which never changes after the one fetch.
    ASensor const* mLightSensor = nullptr;
    // Written by the event callback on a binder thread, read by getCurAmbinetLux().
    std::atomic<float> mCurLux{0.0f};
    std::shared_ptr<TPSensorEventQueue> mEventQueue;
    std::vector<SensorInfo> mSensorList;
    // Exists once the list has been fetched, successfully or not.
    std::unique_ptr<ASensorRef[]> mSensorPtrs;
};

// The platform event queue together with the callback that receives its events.
class TPLightSensorManager::Impl::TPSensorEventQueue {
public:
    class TPSensorEventQueueCallback : public BnEventQueueCallback {
    public:
        explicit TPSensorEventQueueCallback(Impl* impl) : mImpl(impl) {}

        ::ndk::ScopedAStatus onEvent(const Event& event) override;

        // Null once the queue has been destroyed; late events are then dropped.
        Impl* mImpl;  // guarded by gCallbackLock
    };

    explicit TPSensorEventQueue(Impl* impl)
        : mCallback(::ndk::SharedRefBase::make<TPSensorEventQueueCallback>(impl)) {}

    std::shared_ptr<IEventQueue> mQueue;
    std::shared_ptr<TPSensorEventQueueCallback> mCallback;
};

::ndk::ScopedAStatus
TPLightSensorManager::Impl::TPSensorEventQueue::TPSensorEventQueueCallback::onEvent(
        const Event& event) {
    std::lock_guard<std::mutex> lock(gCallbackLock);
    if (mImpl == nullptr) {
        TPS_LOGW("SensorManagerImpl is null");
        return ::ndk::ScopedAStatus::ok();
    }
    if (event.sensorType != SensorType::ADDITIONAL_INFO) {
        sensors_event_t sensorEvent = {};
        ::android::hardware::sensors::implementation::convertToSensorEvent(event, &sensorEvent);
        // data[0] is the light level for a light event.
        mImpl->mCurLux.store(sensorEvent.data[0]);
        TPS_LOGV("Sensor LUX =%f", sensorEvent.data[0]);
    }
    return ::ndk::ScopedAStatus::ok();
}

TPLightSensorManager::Impl::Impl() {
    const std::string instance = std::string(ISensorManager::descriptor) + "/default";
    ::ndk::SpAIBinder binder(AServiceManager_waitForService(instance.c_str()));
    mSensorManager = ISensorManager::fromBinder(binder);
    if (!mSensorManager) return;

    mDeathRecipient =
            ::ndk::ScopedAIBinder_DeathRecipient(AIBinder_DeathRecipient_new(serviceDied));
    const binder_status_t linked =
            AIBinder_linkToDeath(mSensorManager->asBinder().get(), mDeathRecipient.get(), nullptr);
    if (linked != STATUS_OK) {
        TPS_LOGW("Unable to link to sensor service death notifications");
    } else {
        TPS_LOGD("Link to sensor service death notification successful");
    }
}

TPLightSensorManager::Impl::~Impl() {
    TPS_LOGV("Impl Destructor");
    // A queue that was never destroyed must not leave its callback pointing at this object.
    if (mEventQueue && mEventQueue->mCallback) {
        std::lock_guard<std::mutex> lock(gCallbackLock);
        mEventQueue->mCallback->mImpl = nullptr;
    }
    // The members then go in reverse order: pointer array, list, queue, service, death
    // recipient (which unlinks).
}

void TPLightSensorManager::Impl::serviceDied(void* /*cookie*/) {
    TPS_LOGE("Ambinet light Sensor service died");
}

size_t TPLightSensorManager::Impl::getSensorList(ASensorList* out) {
    if (!mSensorPtrs) {
        ::ndk::ScopedAStatus status = mSensorManager->getSensorList(&mSensorList);
        if (!status.isOk()) TPS_LOGE("Failed to get sensor list: ");
        // Built even after a failure, so the list is never asked for again.
        mSensorPtrs = std::make_unique<ASensorRef[]>(mSensorList.size());
        for (size_t i = 0; i < mSensorList.size(); ++i) {
            mSensorPtrs[i] = reinterpret_cast<ASensorRef>(&mSensorList[i]);
        }
    }
    if (out != nullptr) *out = mSensorPtrs.get();
    return mSensorList.size();
}

ASensor const* TPLightSensorManager::Impl::getDefaultSensor(int type) {
    getSensorList(nullptr);

    SensorInfo info;
    ::ndk::ScopedAStatus status =
            mSensorManager->getDefaultSensor(static_cast<SensorType>(type), &info);
    if (!status.isOk()) TPS_LOGE("Failed to get default sensor");

    // Hand out the cached element, whose address stays valid for the life of this object.
    for (const SensorInfo& sensor : mSensorList) {
        if (sensor == info) return reinterpret_cast<ASensor const*>(&sensor);
    }
    return nullptr;
}

int32_t TPLightSensorManager::Impl::lightSensorHandle() const {
    return reinterpret_cast<const SensorInfo*>(mLightSensor)->sensorHandle;
}

int32_t TPLightSensorManager::Impl::createLightSensor() {
    if (!mSensorManager) return kError;

    mLightSensor = getDefaultSensor(static_cast<int>(SensorType::LIGHT));
    if (mLightSensor == nullptr) return kError;

    TPS_LOGI("Name :%s", ASensor_getName(mLightSensor));
    TPS_LOGI("Vendor :%s", ASensor_getVendor(mLightSensor));
    TPS_LOGI("Type :%s", ASensor_getStringType(mLightSensor));
    return kOk;
}

int32_t TPLightSensorManager::Impl::createEventQueue() {
    if (!mSensorManager) return kError;

    mEventQueue = std::make_shared<TPSensorEventQueue>(this);
    // Must happen before the binder is first sent anywhere.
    ::ndk::SpAIBinder callbackBinder = mEventQueue->mCallback->asBinder();
    AIBinder_setMinSchedulerPolicy(callbackBinder.get(), SCHED_FIFO, kCallbackSchedulerPriority);

    ::ndk::ScopedAStatus status =
            mSensorManager->createEventQueue(mEventQueue->mCallback, &mEventQueue->mQueue);
    if (!status.isOk()) {
        TPS_LOGE("FAILED to create event queue: ");
        return kError;
    }
    return kOk;
}

int32_t TPLightSensorManager::Impl::enableSensor() {
    if (mLightSensor == nullptr || !mEventQueue || !mEventQueue->mQueue) return kError;

    ::ndk::ScopedAStatus status = mEventQueue->mQueue->enableSensor(
            lightSensorHandle(), kSamplingPeriodUs, kMaxReportLatencyUs);
    return status.isOk() ? kOk : kError;
}

int32_t TPLightSensorManager::Impl::disableSensor() {
    if (mLightSensor == nullptr || !mEventQueue || !mEventQueue->mQueue) return kError;

    ::ndk::ScopedAStatus status = mEventQueue->mQueue->disableSensor(lightSensorHandle());
    return status.isOk() ? kOk : kError;
}

void TPLightSensorManager::Impl::destroyEventQueue() {
    if (mEventQueue && mEventQueue->mCallback) {
        std::lock_guard<std::mutex> lock(gCallbackLock);
        TPS_LOGD("TPSensorEventQueueCallback invalidate");
        mEventQueue->mCallback->mImpl = nullptr;
    }
    // The sensor stays enabled on the platform side unless disableSensor() ran first.
    mEventQueue.reset();
}

TPLightSensorManager::TPLightSensorManager() : mImpl(new Impl()) {}

TPLightSensorManager::~TPLightSensorManager() {
    delete mImpl;
}

int32_t TPLightSensorManager::createLightSensor() {
    return mImpl->createLightSensor();
}

int32_t TPLightSensorManager::createEventQueue() {
    return mImpl->createEventQueue();
}

int32_t TPLightSensorManager::enableSensor() {
    return mImpl->enableSensor();
}

int32_t TPLightSensorManager::disableSensor() {
    return mImpl->disableSensor();
}

void TPLightSensorManager::destroyEventQueue() {
    mImpl->destroyEventQueue();
}

float TPLightSensorManager::getCurAmbinetLux() {
    return mImpl->getCurAmbinetLux();
}

}  // namespace tavixPrism
