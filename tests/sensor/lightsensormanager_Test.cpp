#include <android/binder_ibinder.h>
#include <android/log.h>
#include <gtest/gtest.h>
#include <sched.h>

#include <atomic>
#include <memory>
#include <optional>
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
constexpr char kNoImpl[] = "SensorManagerImpl is null";
constexpr int32_t kLightHandle = 21;

SensorInfo proximitySensor() {
    SensorInfo sensor = lightSensor(20);
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

TEST_F(LightSensorManagerTest, SessionFollowsTheLightSensorUntilItsQueueIsDestroyed) {
    mProperties.setLogLevel(3);
    TPLightSensorManager manager;
    start(manager);
    EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_INFO, kTag, "Name :Light A"));
    // A sensor service in this process cannot report its death.
    EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_WARN, kTag,
                             "Unable to link to sensor service death notifications"));

    const auto enables = mService->record().enables;
    ASSERT_EQ(1u, enables.size());
    EXPECT_EQ(kLightHandle, enables[0].handle);
    EXPECT_EQ(50000, enables[0].samplingPeriodUs);
    EXPECT_EQ(0, enables[0].maxBatchReportLatencyUs);
    // Its callback binder is served at real-time priority.
    const auto policies = sensortest::schedulerPolicyCalls();
    ASSERT_FALSE(policies.empty());
    EXPECT_EQ(mService->record().callbackBinder, policies.back().binder);
    EXPECT_EQ(SCHED_FIFO, policies.back().policy);
    EXPECT_EQ(98, policies.back().priority);

    EXPECT_TRUE(deliver(lightEvent(812.5f, kLightHandle)).isOk());
    EXPECT_EQ(812.5f, manager.getCurAmbinetLux());
    EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_VERBOSE, kTag, "Sensor LUX =812.500000"));

    // Additional info is dropped silently; any other event's first value is taken as lux.
    mLog.clear();
    Event event;
    event.sensorType = SensorType::ADDITIONAL_INFO;
    event.payload.set<Event::EventPayload::additional>(
            ::aidl::android::hardware::sensors::AdditionalInfo());
    EXPECT_TRUE(deliver(event).isOk());
    EXPECT_EQ(812.5f, manager.getCurAmbinetLux());
    EXPECT_TRUE(mLog.linesWithTag(kTag).empty()) << mLog.dump();
    event.sensorType = SensorType::ACCELEROMETER;
    event.payload.set<Event::EventPayload::vec3>(Event::EventPayload::Vec3{.x = 0.25f, .y = 8.0f});
    EXPECT_TRUE(deliver(event).isOk());
    EXPECT_EQ(0.25f, manager.getCurAmbinetLux());

    EXPECT_EQ(0, manager.disableSensor());
    EXPECT_EQ(std::vector<int32_t>{kLightHandle}, mService->record().disables);
    manager.destroyEventQueue();
    EXPECT_TRUE(mService->record().queue.expired());
    EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_DEBUG, kTag, "TPSensorEventQueueCallback invalidate"));

    // Late events are dropped and the last reading stays; nothing is left to enable or disable.
    EXPECT_TRUE(deliver(lightEvent(6.0f)).isOk());
    EXPECT_EQ(0.25f, manager.getCurAmbinetLux());
    EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_WARN, kTag, kNoImpl));
    EXPECT_EQ(-22, manager.enableSensor());
    EXPECT_EQ(-22, manager.disableSensor());

    // Nor does a manager destroyed without destroyEventQueue() receive any.
    auto gone = std::make_unique<TPLightSensorManager>();
    start(*gone);
    gone.reset();
    EXPECT_TRUE(deliver(lightEvent(7.0f)).isOk());
    EXPECT_EQ(2u, mLog.count(ANDROID_LOG_WARN, kTag, kNoImpl));
}

TEST_F(LightSensorManagerTest, LightSensorMustBeTheDefaultAndAnExactListEntry) {
    SensorInfo differing = lightSensor(kLightHandle);
    differing.power = 0.3f;
    const std::vector<SensorInfo> listed = {proximitySensor(), lightSensor(kLightHandle)};
    const struct {
        const char* what;
        std::vector<SensorInfo> list;
        std::optional<SensorInfo> defaultSensor;
        int32_t result;
    } cases[] = {
            {"missing from the list", {proximitySensor()}, lightSensor(kLightHandle), -22},
            {"one field differs", {differing}, lightSensor(kLightHandle), -22},
            {"no default light sensor", listed, std::nullopt, -22},
            // After a failed lookup the default-constructed description is still compared.
            {"no default, all-default entry", {SensorInfo()}, std::nullopt, 0},
    };
    for (const auto& c : cases) {
        mService->sensors = c.list;
        mService->defaultSensor = c.defaultSensor;
        TPLightSensorManager manager;
        EXPECT_EQ(c.result, manager.createLightSensor()) << c.what;
    }
    EXPECT_EQ(2u, mLog.count(ANDROID_LOG_ERROR, kTag, "Failed to get default sensor"));

    // The list is fetched once per manager: a failed fetch is not retried.
    mService->sensors = listed;
    mService->defaultSensor = lightSensor(kLightHandle);
    mService->failList = true;
    TPLightSensorManager failing;
    EXPECT_EQ(-22, failing.createLightSensor());
    mService->failList = false;
    EXPECT_EQ(-22, failing.createLightSensor());
    EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_ERROR, kTag, "Failed to get sensor list: "));
}

TEST_F(LightSensorManagerTest, StepsOutOfOrderAndRefusedStepsFail) {
    TPLightSensorManager manager;
    EXPECT_EQ(-22, manager.enableSensor());  // nothing yet
    EXPECT_EQ(-22, manager.disableSensor());
    ASSERT_EQ(0, manager.createEventQueue());
    EXPECT_EQ(-22, manager.enableSensor());  // no light sensor chosen
    manager.destroyEventQueue();
    manager.destroyEventQueue();  // twice is harmless

    mService->failCreateQueue = true;
    TPLightSensorManager refused;
    ASSERT_EQ(0, refused.createLightSensor());
    EXPECT_EQ(-22, refused.createEventQueue());
    EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_ERROR, kTag, "FAILED to create event queue: "));
    EXPECT_EQ(-22, refused.enableSensor());
    EXPECT_TRUE(mService->record().enables.empty());
    EXPECT_TRUE(mService->record().disables.empty());

    // Refusals by the service's queue become -22 too.
    mService->failCreateQueue = false;
    mService->failEnable = mService->failDisable = true;
    ASSERT_EQ(0, refused.createEventQueue());
    EXPECT_EQ(-22, refused.enableSensor());
    EXPECT_EQ(-22, refused.disableSensor());
    EXPECT_EQ(1u, mService->record().enables.size());
    EXPECT_EQ(1u, mService->record().disables.size());

    // An object that is not a sensor service under its name fails every step.
    sensortest::RecordingBinder stranger("some.other.IThing",
                                         [](transaction_code_t, const AParcel*, AParcel*) {
                                             return STATUS_UNKNOWN_TRANSACTION;
                                         });
    lsmtest::useSensorService(stranger.binder().get());
    {
        TPLightSensorManager lost;
        EXPECT_EQ(-22, lost.createLightSensor());
        EXPECT_EQ(-22, lost.createEventQueue());
        EXPECT_EQ(-22, lost.enableSensor());
        EXPECT_EQ(-22, lost.disableSensor());
        lost.destroyEventQueue();
    }
    lsmtest::useSensorService(mService);
    EXPECT_TRUE(stranger.requests().empty());
}

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
    manager->disableSensor();
    manager->destroyEventQueue();
    manager.reset();
    const int afterTeardown = delivered.load();
    ASSERT_TRUE(sensortest::eventually([&] { return delivered.load() > afterTeardown + 100; }));
    stop = true;
    for (std::thread& sender : senders) sender.join();
    EXPECT_GE(mLog.count(ANDROID_LOG_WARN, kTag, kNoImpl), 100u);
}

}  // namespace
