#include "Sensord.h"

#include <aidl/android/frameworks/sensorservice/BnEventQueueCallback.h>
#include <aidl/android/frameworks/sensorservice/ISensorManager.h>
#include <gtest/gtest.h>

#include <chrono>
#include <mutex>
#include <sstream>
#include <string>
#include <vector>

#include "LuxTrace.h"
#include "SensordOptions.h"
#include "sensorservice_TestUtil.h"

namespace {

using ::aidl::android::frameworks::sensorservice::BnEventQueueCallback;
using ::aidl::android::frameworks::sensorservice::IEventQueue;
using ::aidl::android::frameworks::sensorservice::ISensorManager;
using ::aidl::android::hardware::sensors::AdditionalInfo;
using ::aidl::android::hardware::sensors::Event;
using ::aidl::android::hardware::sensors::SensorInfo;
using ::aidl::android::hardware::sensors::SensorType;
using namespace std::chrono_literals;
using sensord::LuxTrace;

// Records the events a queue delivers.
class RecordingCallback : public BnEventQueueCallback {
public:
    ::ndk::ScopedAStatus onEvent(const Event& event) override {
        std::lock_guard<std::mutex> lock(mLock);
        mEvents.push_back(event);
        return ::ndk::ScopedAStatus::ok();
    }
    std::vector<Event> events() const {
        std::lock_guard<std::mutex> lock(mLock);
        return mEvents;
    }

private:
    mutable std::mutex mLock;
    std::vector<Event> mEvents;  // guarded by mLock
};

std::unique_ptr<sensord::Sensord> assemble(const std::vector<std::string>& args) {
    const sensord::ParsedOptions parsed = sensord::parseSensordOptions(args);
    EXPECT_TRUE(parsed.ok) << parsed.error;
    std::string error;
    auto built = sensord::Sensord::create(parsed.options, -1, &error);
    EXPECT_NE(nullptr, built) << error;
    return built;
}

// A sensord built from args with one event queue open on it.
struct Session {
    explicit Session(const std::vector<std::string>& args) : built(assemble(args)) {
        EXPECT_TRUE(built->service()->createEventQueue(callback, &queue).isOk());
    }
    std::unique_ptr<sensord::Sensord> built;
    std::shared_ptr<RecordingCallback> callback = ::ndk::SharedRefBase::make<RecordingCallback>();
    std::shared_ptr<IEventQueue> queue;
};

// ---- traces ---------------------------------------------------------------------------------

TEST(LuxTrace, PlaybackHoldsEachSampleAndLoopsOnRequest) {
    std::string error;
    std::istringstream in1("100,1\n200,2\n400,4\n"), in2(in1.str());
    auto once = LuxTrace::parse(in1, "t.csv", false, &error);
    auto looped = LuxTrace::parse(in2, "t.csv", true, &error);
    ASSERT_TRUE(once && looped);
    EXPECT_EQ(1.0f, once->luxAt(0ms));  // before the first sample: the first value
    EXPECT_EQ(1.0f, once->luxAt(199ms));
    EXPECT_EQ(2.0f, once->luxAt(200ms));
    EXPECT_EQ(4.0f, once->luxAt(10s));      // the last value stays
    EXPECT_EQ(1.0f, looped->luxAt(400ms));  // a lap is 400 ms long
    EXPECT_EQ(2.0f, looped->luxAt(400ms * 1000 + 250ms));
}

// ---- the service ----------------------------------------------------------------------------

TEST(SimSensorManager, AnswersLikeThePlatformServiceAndItsQueueClampsAndChecks) {
    Session session({"--sensor", "light,Slow,V,1,1,1,20000,100000"});
    auto service = session.built->service();
    std::shared_ptr<IEventQueue> none;
    EXPECT_EQ(ISensorManager::RESULT_BAD_VALUE,
              service->createEventQueue(nullptr, &none).getServiceSpecificError());
    SensorInfo sensor;
    ASSERT_TRUE(service->getDefaultSensor(SensorType::LIGHT, &sensor).isOk());
    EXPECT_EQ(1, sensor.sensorHandle);
    EXPECT_EQ(ISensorManager::RESULT_NOT_EXIST,
              service->getDefaultSensor(SensorType::ACCELEROMETER, &sensor)
                      .getServiceSpecificError());
    EXPECT_EQ(1, sensor.sensorHandle);  // untouched on failure
    std::vector<SensorInfo> list = {SensorInfo()};
    EXPECT_EQ(ISensorManager::RESULT_UNKNOWN_ERROR,
              assemble({"--fail-list"})->service()->getSensorList(&list).getServiceSpecificError());
    EXPECT_TRUE(list.empty());

    auto& queue = session.queue;
    const auto& dispatcher = service->dispatcher();
    EXPECT_EQ(ISensorManager::RESULT_BAD_VALUE,
              queue->enableSensor(99, 50000, 0).getServiceSpecificError());
    EXPECT_EQ(ISensorManager::RESULT_BAD_VALUE, queue->disableSensor(2).getServiceSpecificError());
    ASSERT_TRUE(queue->enableSensor(2, 5000, 0).isOk());
    ASSERT_EQ(1u, dispatcher->activeSensors().size());
    EXPECT_EQ(20000us, dispatcher->activeSensors()[0].period);  // raised to the minimum delay
    ASSERT_TRUE(queue->enableSensor(2, 500000, 0).isOk());      // re-enabling changes the rate only
    EXPECT_EQ(100000us, dispatcher->activeSensors().at(0).period);
    ASSERT_TRUE(queue->enableSensor(1, 0, 0).isOk());

    ASSERT_TRUE(queue->disableSensor(2).isOk());
    EXPECT_EQ(ISensorManager::RESULT_BAD_VALUE, queue->disableSensor(2).getServiceSpecificError());
    EXPECT_EQ(1u, dispatcher->activeSensors().size());
    queue.reset();
    EXPECT_TRUE(dispatcher->activeSensors().empty());
}

TEST(EventDispatcher, DeliversLightEventsWithAdditionalInfoFirst) {
    Session session({"--constant", "7.5", "--additional-info"});
    ASSERT_TRUE(session.queue->enableSensor(1, 1000, 0).isOk());
    ASSERT_TRUE(sensortest::eventually([&] { return session.callback->events().size() >= 6; }));
    ASSERT_TRUE(session.queue->disableSensor(1).isOk());

    const std::vector<Event> events = session.callback->events();
    using Type = AdditionalInfo::AdditionalInfoType;
    const Type frame[] = {Type::AINFO_BEGIN, Type::AINFO_INTERNAL_TEMPERATURE, Type::AINFO_END};
    for (size_t i = 0; i < 3; ++i) {
        ASSERT_EQ(SensorType::ADDITIONAL_INFO, events[i].sensorType);
        const AdditionalInfo& info = events[i].payload.get<Event::EventPayload::additional>();
        EXPECT_EQ(frame[i], info.type);
        EXPECT_EQ(events[0].payload.get<Event::EventPayload::additional>().serial, info.serial);
    }
    for (size_t i = 3; i < events.size(); ++i) {
        EXPECT_EQ(1, events[i].sensorHandle);
        EXPECT_EQ(7.5f, events[i].payload.get<Event::EventPayload::scalar>());
        EXPECT_GE(events[i].timestamp, events[i - 1].timestamp);
    }
}

}  // namespace
