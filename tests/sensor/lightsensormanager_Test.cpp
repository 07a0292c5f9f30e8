#include <android/binder_ibinder.h>
#include <android/log.h>
#include <gtest/gtest.h>
#include <sched.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "LogCapture.h"
#include "TPLightSensorManagerAIDL.h"
#include "lightsensormanager_FakeService.h"
#include "sensorservice_LinkSeams.h"
#include "sensorservice_TestUtil.h"

namespace {

using lsmtest::Event;
using lsmtest::FakeSensorService;
using lsmtest::lightEvent;
using lsmtest::lightSensor;
using lsmtest::SensorInfo;
using lsmtest::SensorType;
using tavixPrism::TPLightSensorManager;

constexpr char kTag[] = "TavixLightSensorManager";
constexpr int32_t kLightHandle = 21;

SensorInfo proximitySensor() {
    SensorInfo sensor = lightSensor(20);
    sensor.name = "Proximity";
    sensor.type = SensorType::PROXIMITY;
    sensor.typeAsString = "android.sensor.proximity";
    return sensor;
}

class LightSensorManagerTest : public tps::test::LoggingTest {
protected:
    void SetUp() override {
        mService = ::ndk::SharedRefBase::make<FakeSensorService>();
        mService->sensors = {proximitySensor(), lightSensor(kLightHandle)};
        mService->defaultSensor = lightSensor(kLightHandle);
        lsmtest::useSensorService(mService);
    }

    // Drops the test's service and, with it, any callback it still holds.
    void TearDown() override {
        lsmtest::useSensorService(::ndk::SharedRefBase::make<FakeSensorService>());
    }

    // Runs the start-up the sensor reader does, expecting each step to succeed.
    void start(TPLightSensorManager& manager) {
        ASSERT_EQ(0, manager.createLightSensor());
        ASSERT_EQ(0, manager.createEventQueue());
        ASSERT_EQ(0, manager.enableSensor());
    }

    ::ndk::ScopedAStatus deliver(const Event& event) {
        auto callback = mService->record().callback;
        EXPECT_NE(nullptr, callback);
        return callback ? callback->onEvent(event) : ::ndk::ScopedAStatus::ok();
    }

    std::shared_ptr<FakeSensorService> mService;
};

// ---- the normal session ---------------------------------------------------------------------

TEST_F(LightSensorManagerTest, FullSessionFollowsTheLightSensor) {
    TPLightSensorManager manager;
    EXPECT_EQ(0.0f, manager.getCurAmbinetLux());
    start(manager);

    const auto enables = mService->record().enables;
    ASSERT_EQ(1u, enables.size());
    EXPECT_EQ(kLightHandle, enables[0].handle);
    EXPECT_EQ(50000, enables[0].samplingPeriodUs);
    EXPECT_EQ(0, enables[0].maxBatchReportLatencyUs);

    EXPECT_TRUE(deliver(lightEvent(42.5f, kLightHandle)).isOk());
    EXPECT_EQ(42.5f, manager.getCurAmbinetLux());
    EXPECT_TRUE(deliver(lightEvent(0.25f, kLightHandle)).isOk());
    EXPECT_EQ(0.25f, manager.getCurAmbinetLux());

    EXPECT_EQ(0, manager.disableSensor());
    EXPECT_EQ(std::vector<int32_t>{kLightHandle}, mService->record().disables);
    manager.destroyEventQueue();
    EXPECT_TRUE(mService->record().queue.expired());
    // The last reading stays.
    EXPECT_EQ(0.25f, manager.getCurAmbinetLux());
}

TEST_F(LightSensorManagerTest, StartupLogLinesFollowTheLogLevel) {
    {
        TPLightSensorManager manager;
        start(manager);
        EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_INFO, kTag, "Name :Light A"));
        EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_INFO, kTag, "Type :android.sensor.light"));
        // A sensor service in this process cannot report its death.
        EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_WARN, kTag,
                                 "Unable to link to sensor service death notifications"));
        manager.destroyEventQueue();
        EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_DEBUG, kTag, "TPSensorEventQueueCallback invalidate"));
    }
    mLog.clear();
    mProperties.setLogLevel(3);  // verbose lines need level 3
    {
        TPLightSensorManager manager;
        start(manager);
        EXPECT_TRUE(deliver(lightEvent(812.5f)).isOk());
        EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_VERBOSE, kTag, "Sensor LUX =812.500000"));
        manager.destroyEventQueue();
    }
    EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_VERBOSE, kTag, "Impl Destructor"));
}

TEST_F(LightSensorManagerTest, CallbackBinderRunsAtRealTimePriority) {
    TPLightSensorManager manager;
    ASSERT_EQ(0, manager.createEventQueue());
    const auto calls = sensortest::schedulerPolicyCalls();
    ASSERT_FALSE(calls.empty());
    EXPECT_EQ(mService->record().callbackBinder, calls.back().binder);
    EXPECT_EQ(SCHED_FIFO, calls.back().policy);
    EXPECT_EQ(98, calls.back().priority);
    manager.destroyEventQueue();
}

// ---- events ---------------------------------------------------------------------------------

TEST_F(LightSensorManagerTest, AdditionalInfoIsIgnoredSilentlyAndAnyOtherEventIsLux) {
    mProperties.setLogLevel(3);
    TPLightSensorManager manager;
    start(manager);
    ASSERT_TRUE(deliver(lightEvent(10.0f)).isOk());
    mLog.clear();

    Event event;
    event.sensorType = SensorType::ADDITIONAL_INFO;
    event.payload.set<Event::EventPayload::additional>(
            ::aidl::android::hardware::sensors::AdditionalInfo());
    EXPECT_TRUE(deliver(event).isOk());
    EXPECT_EQ(10.0f, manager.getCurAmbinetLux());
    EXPECT_TRUE(mLog.linesWithTag(kTag).empty()) << mLog.dump();

    event.sensorType = SensorType::ACCELEROMETER;
    event.payload.set<Event::EventPayload::vec3>(Event::EventPayload::Vec3{.x = 7.0f, .y = 8.0f});
    EXPECT_TRUE(deliver(event).isOk());
    EXPECT_EQ(7.0f, manager.getCurAmbinetLux());
    manager.destroyEventQueue();
}

TEST_F(LightSensorManagerTest, LateEventsAfterTheQueueIsDestroyedAreDropped) {
    TPLightSensorManager manager;
    start(manager);
    ASSERT_TRUE(deliver(lightEvent(5.0f)).isOk());
    manager.destroyEventQueue();
    mLog.clear();

    EXPECT_TRUE(deliver(lightEvent(6.0f)).isOk());
    EXPECT_EQ(5.0f, manager.getCurAmbinetLux());
    EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_WARN, kTag, "SensorManagerImpl is null"));
    // Nothing left to enable or disable.
    EXPECT_EQ(-22, manager.enableSensor());
    EXPECT_EQ(-22, manager.disableSensor());

    // Nor does a manager destroyed without destroyEventQueue() receive any.
    auto gone = std::make_unique<TPLightSensorManager>();
    start(*gone);
    gone.reset();
    EXPECT_TRUE(deliver(lightEvent(7.0f)).isOk());
    EXPECT_EQ(2u, mLog.count(ANDROID_LOG_WARN, kTag, "SensorManagerImpl is null"));
}

// ---- failures -------------------------------------------------------------------------------

TEST_F(LightSensorManagerTest, SensorListIsFetchedOncePerManagerEvenWhenItFails) {
    TPLightSensorManager manager;
    ASSERT_EQ(0, manager.createLightSensor());
    ASSERT_EQ(0, manager.createLightSensor());
    EXPECT_EQ(1, mService->record().sensorListCalls);
    EXPECT_EQ(2, mService->record().defaultSensorCalls);

    mService->failList = true;
    TPLightSensorManager failing;
    EXPECT_EQ(-22, failing.createLightSensor());
    mService->failList = false;
    EXPECT_EQ(-22, failing.createLightSensor());
    EXPECT_EQ(2, mService->record().sensorListCalls);
    EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_ERROR, kTag, "Failed to get sensor list: "));
}

TEST_F(LightSensorManagerTest, DefaultSensorMustBeAnEntryOfTheList) {
    {
        // Missing from the list.
        mService->sensors = {proximitySensor()};
        TPLightSensorManager manager;
        EXPECT_EQ(-22, manager.createLightSensor());
        EXPECT_TRUE(mLog.hasNoneContaining("Failed to get default sensor"));
    }
    {
        // Present, but one field differs.
        SensorInfo listed = lightSensor(kLightHandle);
        listed.power = 0.3f;
        mService->sensors = {listed};
        TPLightSensorManager manager;
        EXPECT_EQ(-22, manager.createLightSensor());
    }
    {
        // No default light sensor at all.
        mService->sensors = {proximitySensor(), lightSensor(kLightHandle)};
        mService->defaultSensor.reset();
        TPLightSensorManager manager;
        EXPECT_EQ(-22, manager.createLightSensor());
        EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_ERROR, kTag, "Failed to get default sensor"));
    }
    {
        // After a failed lookup the default-constructed description is still compared, and an
        // all-default list entry matches it.
        mService->sensors = {SensorInfo()};
        TPLightSensorManager manager;
        EXPECT_EQ(0, manager.createLightSensor());
    }
}

TEST_F(LightSensorManagerTest, StepsOutOfOrderAndRefusedStepsFail) {
    TPLightSensorManager manager;
    EXPECT_EQ(-22, manager.enableSensor());  // nothing yet
    EXPECT_EQ(-22, manager.disableSensor());
    ASSERT_EQ(0, manager.createEventQueue());
    EXPECT_EQ(-22, manager.enableSensor());  // no light sensor chosen
    EXPECT_TRUE(mService->record().enables.empty());
    EXPECT_TRUE(mService->record().disables.empty());
    manager.destroyEventQueue();
    manager.destroyEventQueue();  // twice is harmless

    mService->failCreateQueue = true;
    TPLightSensorManager refused;
    ASSERT_EQ(0, refused.createLightSensor());
    EXPECT_EQ(-22, refused.createEventQueue());
    EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_ERROR, kTag, "FAILED to create event queue: "));
    EXPECT_EQ(-22, refused.enableSensor());
    EXPECT_TRUE(mService->record().enables.empty());

    // Refusals by the service's queue become -22 too.
    mService->failCreateQueue = false;
    mService->failEnable = mService->failDisable = true;
    ASSERT_EQ(0, refused.createEventQueue());
    EXPECT_EQ(-22, refused.enableSensor());
    EXPECT_EQ(-22, refused.disableSensor());
    EXPECT_EQ(1u, mService->record().enables.size());
    EXPECT_EQ(1u, mService->record().disables.size());
}

TEST_F(LightSensorManagerTest, ObjectThatIsNotASensorServiceFailsEveryStep) {
    sensortest::RecordingBinder stranger("some.other.IThing",
                                         [](transaction_code_t, const AParcel*, AParcel*) {
                                             return STATUS_UNKNOWN_TRANSACTION;
                                         });
    lsmtest::registerUnderSensorServiceName(stranger.binder().get());
    {
        TPLightSensorManager manager;
        EXPECT_EQ(-22, manager.createLightSensor());
        EXPECT_EQ(-22, manager.createEventQueue());
        EXPECT_EQ(-22, manager.enableSensor());
        EXPECT_EQ(-22, manager.disableSensor());
        manager.destroyEventQueue();
        EXPECT_EQ(0.0f, manager.getCurAmbinetLux());
    }
    lsmtest::useSensorService(mService);
    EXPECT_TRUE(stranger.requests().empty());
    EXPECT_TRUE(mLog.hasNoneContaining("death notification"));
}

// ---- threads --------------------------------------------------------------------------------

TEST_F(LightSensorManagerTest, EventsRacingWithTeardownNeverReachAFreedManager) {
    auto manager = std::make_unique<TPLightSensorManager>();
    start(*manager);
    auto callback = mService->record().callback;
    ASSERT_NE(nullptr, callback);

    std::atomic<bool> stop{false};
    std::atomic<int> delivered{0};
    std::vector<std::thread> senders;
    for (int t = 0; t < 2; ++t) {
        senders.emplace_back([&, t] {
            for (int i = 0; !stop.load(); ++i) {
                (void)callback->onEvent(lightEvent(float(t * 1000 + i % 1000)));
                delivered++;
            }
        });
    }
    ASSERT_TRUE(sensortest::eventually([&] { return delivered.load() > 100; }));
    const float seen = manager->getCurAmbinetLux();
    EXPECT_GE(seen, 0.0f);
    EXPECT_LT(seen, 2000.0f);

    manager->disableSensor();
    manager->destroyEventQueue();
    manager.reset();
    const int afterTeardown = delivered.load();
    ASSERT_TRUE(sensortest::eventually([&] { return delivered.load() > afterTeardown + 100; }));
    stop = true;
    for (std::thread& sender : senders) sender.join();
    EXPECT_GE(mLog.count(ANDROID_LOG_WARN, kTag, "SensorManagerImpl is null"), 100u);
}

}  // namespace
