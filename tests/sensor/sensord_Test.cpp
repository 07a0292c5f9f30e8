#include "Sensord.h"

#include <aidl/android/frameworks/sensorservice/BnEventQueueCallback.h>
#include <aidl/android/frameworks/sensorservice/ISensorManager.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <mutex>
#include <sstream>
#include <string>
#include <vector>

#include "LineLuxSource.h"
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
using sensord::SensordOptions;

SensordOptions parse(const std::vector<std::string>& args) {
    const sensord::ParsedOptions parsed = sensord::parseSensordOptions(args);
    EXPECT_TRUE(parsed.ok) << parsed.error;
    return parsed.options;
}

std::unique_ptr<LuxTrace> trace(const std::string& text, bool loop, std::string* error) {
    std::istringstream in(text);
    return LuxTrace::parse(in, "t.csv", loop, error);
}

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
    std::string error;
    auto built = sensord::Sensord::create(parse(args), -1, &error);
    EXPECT_NE(nullptr, built) << error;
    return built;
}

// ---- traces ---------------------------------------------------------------------------------

TEST(LuxTrace, PlaybackHoldsEachSampleAndLoopsOnRequest) {
    const std::string text = "100,1\n200,2\n400,4\n";
    std::string error;
    auto once = trace(text, false, &error);
    auto looped = trace(text, true, &error);
    ASSERT_TRUE(once && looped);
    EXPECT_EQ(1.0f, once->luxAt(0ms));  // before the first sample: the first value
    EXPECT_EQ(1.0f, once->luxAt(199ms));
    EXPECT_EQ(2.0f, once->luxAt(200ms));
    EXPECT_EQ(4.0f, once->luxAt(10s));      // the last value stays
    EXPECT_EQ(1.0f, looped->luxAt(400ms));  // a lap is 400 ms long
    EXPECT_EQ(2.0f, looped->luxAt(400ms * 1000 + 250ms));
}

// The filter lab records traces in the format sensord plays.
TEST(LuxTrace, PlaysTheFilterLabsRecordedTraces) {
    const std::filesystem::path folder(FILTERLAB_TRACES_DIR);
    if (!std::filesystem::is_directory(folder)) GTEST_SKIP() << "no traces in " << folder;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        std::string error;
        if (entry.path().extension() == ".csv") {
            EXPECT_NE(nullptr, LuxTrace::load(entry.path().string(), true, &error)) << error;
        }
    }
}

// ---- the service ----------------------------------------------------------------------------

TEST(SimSensorManager, AnswersLikeThePlatformService) {
    auto built = assemble({"--sensor", "proximity,Near"});
    auto service = built->service();
    std::shared_ptr<IEventQueue> queue;
    EXPECT_EQ(ISensorManager::RESULT_BAD_VALUE,
              service->createEventQueue(nullptr, &queue).getServiceSpecificError());

    SensorInfo sensor;
    ASSERT_TRUE(service->getDefaultSensor(SensorType::PROXIMITY, &sensor).isOk());
    EXPECT_EQ(2, sensor.sensorHandle);
    EXPECT_EQ(ISensorManager::RESULT_NOT_EXIST,
              service->getDefaultSensor(SensorType::ACCELEROMETER, &sensor)
                      .getServiceSpecificError());
    EXPECT_EQ(2, sensor.sensorHandle);  // untouched on failure
    std::vector<SensorInfo> list = {SensorInfo()};
    EXPECT_EQ(ISensorManager::RESULT_UNKNOWN_ERROR,
              assemble({"--fail-list"})->service()->getSensorList(&list).getServiceSpecificError());
    EXPECT_TRUE(list.empty());
}

TEST(SimEventQueue, EnableClampsDisableChecksAndDroppingTheQueueStopsAll) {
    auto built = assemble({"--sensor", "light,Slow,V,1,1,1,20000,100000"});
    auto callback = ::ndk::SharedRefBase::make<RecordingCallback>();
    std::shared_ptr<IEventQueue> queue;
    ASSERT_TRUE(built->service()->createEventQueue(callback, &queue).isOk());
    const auto& dispatcher = built->service()->dispatcher();

    EXPECT_EQ(ISensorManager::RESULT_BAD_VALUE,
              queue->enableSensor(99, 50000, 0).getServiceSpecificError());
    EXPECT_EQ(ISensorManager::RESULT_BAD_VALUE, queue->disableSensor(2).getServiceSpecificError());

    ASSERT_TRUE(queue->enableSensor(2, 5000, 0).isOk());
    ASSERT_EQ(1u, dispatcher->activeSensors().size());
    EXPECT_EQ(20000us, dispatcher->activeSensors()[0].period);  // raised to the minimum delay

    ASSERT_TRUE(queue->enableSensor(2, 500000, 0).isOk());  // re-enabling changes the rate only
    EXPECT_EQ(100000us, dispatcher->activeSensors().at(0).period);
    ASSERT_TRUE(queue->enableSensor(1, 0, 0).isOk());

    ASSERT_TRUE(queue->disableSensor(2).isOk());
    EXPECT_EQ(ISensorManager::RESULT_BAD_VALUE, queue->disableSensor(2).getServiceSpecificError());
    EXPECT_EQ(1u, dispatcher->activeSensors().size());

    queue.reset();
    EXPECT_TRUE(dispatcher->activeSensors().empty());
}

TEST(EventDispatcher, DeliversLightEventsWithAdditionalInfoFirst) {
    auto built = assemble({"--constant", "7.5", "--additional-info"});
    auto callback = ::ndk::SharedRefBase::make<RecordingCallback>();
    std::shared_ptr<IEventQueue> queue;
    ASSERT_TRUE(built->service()->createEventQueue(callback, &queue).isOk());
    ASSERT_TRUE(queue->enableSensor(1, 1000, 0).isOk());
    ASSERT_TRUE(sensortest::eventually([&] { return callback->events().size() >= 6; }));
    ASSERT_TRUE(queue->disableSensor(1).isOk());

    const std::vector<Event> events = callback->events();
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

TEST(EventDispatcher, EnableAndDisableRaceWithDelivery) {
    auto built = assemble({"--constant", "1"});
    auto callback = ::ndk::SharedRefBase::make<RecordingCallback>();
    std::shared_ptr<IEventQueue> queue;
    ASSERT_TRUE(built->service()->createEventQueue(callback, &queue).isOk());
    std::vector<std::thread> togglers;
    for (int t = 0; t < 2; ++t) {
        togglers.emplace_back([&] {
            for (int i = 0; i < 200; ++i) {
                (void)queue->enableSensor(1, 1000, 0);
                (void)queue->disableSensor(1);
            }
        });
    }
    for (std::thread& toggler : togglers) toggler.join();
    EXPECT_TRUE(built->service()->dispatcher()->activeSensors().empty());
    // Whatever got through is well formed.
    for (const Event& event : callback->events()) {
        EXPECT_EQ(1.0f, event.payload.get<Event::EventPayload::scalar>());
    }
}

// ---- standard input -------------------------------------------------------------------------

TEST(LineLuxSource, TakesTheLatestGoodLineAndReportsBadOnes) {
    int fds[2];
    ASSERT_EQ(0, pipe(fds));
    std::mutex lock;
    std::vector<std::string> errors;  // guarded by lock
    sensord::LineLuxSource source(fds[0], "stdin", [&](const std::string& message) {
        std::lock_guard<std::mutex> guard(lock);
        errors.push_back(message);
    });
    EXPECT_FALSE(source.luxAt(0ns).has_value());

    const auto send = [&](const std::string& text) {
        ASSERT_EQ(static_cast<ssize_t>(text.size()), write(fds[1], text.data(), text.size()));
    };
    send("12.5\n");
    ASSERT_TRUE(sensortest::eventually([&] { return source.linesRead() == 1; }));
    EXPECT_EQ(12.5f, source.luxAt(0ns));

    send("abc\n");
    ASSERT_TRUE(sensortest::eventually([&] { return source.linesRead() == 2; }));
    EXPECT_EQ(12.5f, source.luxAt(5s));
    {
        std::lock_guard<std::mutex> guard(lock);
        EXPECT_EQ(std::vector<std::string>{"stdin:2: lux is not a number: 'abc'"}, errors);
    }

    send("7");  // no newline: taken at end of input
    close(fds[1]);
    ASSERT_TRUE(sensortest::eventually([&] { return source.linesRead() == 3; }));
    EXPECT_EQ(7.0f, source.luxAt(0ns));
}

TEST(LineLuxSource, StopsWhileWaitingForInput) {
    int fds[2];
    ASSERT_EQ(0, pipe(fds));
    {
        sensord::LineLuxSource source(fds[0], "stdin", [](const std::string&) {});
        // Destroyed with the write end still open: the reader is blocked in poll().
    }
    close(fds[1]);
}

}  // namespace
