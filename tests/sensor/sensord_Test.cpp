#include "Sensord.h"

#include <aidl/android/frameworks/sensorservice/BnEventQueueCallback.h>
#include <aidl/android/frameworks/sensorservice/ISensorManager.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <sstream>
#include <string>
#include <vector>

#include "LineLuxSource.h"
#include "LuxTrace.h"
#include "SensorCatalog.h"
#include "SensordOptions.h"
#include "sensorservice_TestUtil.h"

namespace {

using ::aidl::android::frameworks::sensorservice::BnEventQueueCallback;
using ::aidl::android::frameworks::sensorservice::IEventQueue;
using ::aidl::android::frameworks::sensorservice::ISensorManager;
using ::aidl::android::hardware::common::Ashmem;
using ::aidl::android::hardware::sensors::AdditionalInfo;
using ::aidl::android::hardware::sensors::Event;
using ::aidl::android::hardware::sensors::SensorInfo;
using ::aidl::android::hardware::sensors::SensorType;
using namespace std::chrono_literals;
using sensord::LuxTrace;
using sensord::SensorCatalog;
using sensord::SensordOptions;

SensordOptions parse(const std::vector<std::string>& args) {
    const sensord::ParsedOptions parsed = sensord::parseSensordOptions(args);
    EXPECT_TRUE(parsed.ok) << parsed.error;
    return parsed.options;
}

std::string parseError(const std::vector<std::string>& args) {
    const sensord::ParsedOptions parsed = sensord::parseSensordOptions(args);
    EXPECT_FALSE(parsed.ok);
    return parsed.error;
}

std::unique_ptr<LuxTrace> trace(const std::string& text, bool loop, std::string* error) {
    std::istringstream in(text);
    return LuxTrace::parse(in, "t.csv", loop, error);
}

std::string traceError(const std::string& text) {
    std::string error;
    EXPECT_EQ(nullptr, trace(text, false, &error));
    return error;
}

// A temporary file removed with the object.
class TempFile {
public:
    explicit TempFile(const std::string& content) {
        char name[] = "/tmp/sensord_test_XXXXXX";
        const int fd = mkstemp(name);
        EXPECT_GE(fd, 0);
        close(fd);
        mPath = name;
        std::ofstream(mPath) << content;
    }
    ~TempFile() { unlink(mPath.c_str()); }
    const std::string& path() const { return mPath; }

private:
    std::string mPath;
};

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
    size_t lightEvents() const {
        std::lock_guard<std::mutex> lock(mLock);
        size_t count = 0;
        for (const Event& e : mEvents) count += e.sensorType == SensorType::LIGHT ? 1 : 0;
        return count;
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

// ---- command line ---------------------------------------------------------------------------

TEST(SensordOptions, DefaultsAndEveryOption) {
    const SensordOptions defaults = parse({});
    EXPECT_EQ(SensordOptions::Source::kConstant, defaults.source);
    EXPECT_EQ(100.0f, defaults.constantLux);
    EXPECT_TRUE(defaults.lightSensor);
    EXPECT_FALSE(defaults.additionalInfo || defaults.emptyList || defaults.failList ||
                 defaults.help || defaults.loop);

    const SensordOptions all =
            parse({"--trace", "a.csv", "--loop", "--additional-info", "--no-light-sensor",
                   "--sensor=proximity,Prox", "--sensor", "5,Second light", "--sensor-list",
                   "list.txt", "--empty-list"});
    EXPECT_EQ(SensordOptions::Source::kTrace, all.source);
    EXPECT_EQ("a.csv", all.traceFile);
    EXPECT_TRUE(all.loop && all.additionalInfo && all.emptyList);
    EXPECT_FALSE(all.lightSensor);
    EXPECT_EQ((std::vector<std::string>{"proximity,Prox", "5,Second light"}), all.sensorSpecs);
    EXPECT_EQ("list.txt", all.sensorListFile);

    EXPECT_EQ(2.5f, parse({"--constant=2.5"}).constantLux);
    EXPECT_EQ(SensordOptions::Source::kStdin, parse({"--stdin", "--fail-list"}).source);
    EXPECT_TRUE(parse({"--help"}).help);
}

TEST(SensordOptions, ErrorsNameTheProblem) {
    EXPECT_EQ("unknown argument '--frobnicate'", parseError({"--frobnicate"}));
    EXPECT_EQ("unknown argument 'extra'", parseError({"extra"}));
    EXPECT_EQ("option --trace needs a value", parseError({"--trace"}));
    EXPECT_EQ("option --loop takes no value", parseError({"--trace", "a", "--loop=yes"}));
    EXPECT_EQ("--constant: not a number: '12lux'", parseError({"--constant", "12lux"}));
    EXPECT_EQ("--constant: not a number: 'nan'", parseError({"--constant", "nan"}));
    EXPECT_EQ("choose one of --constant, --trace and --stdin",
              parseError({"--constant", "1", "--stdin"}));
    EXPECT_EQ("--loop needs --trace", parseError({"--loop"}));
    EXPECT_EQ("--empty-list and --fail-list exclude each other",
              parseError({"--empty-list", "--fail-list"}));
    EXPECT_EQ("--sensor-list given twice", parseError({"--sensor-list", "a", "--sensor-list=b"}));
}

TEST(SensordOptions, ProgramExitsWithTwoOnBadInputAndZeroForHelp) {
    EXPECT_EQ(2, sensord::runSensord({"--bogus"}));
    EXPECT_EQ(2, sensord::runSensord({"--trace", "/nonexistent/trace.csv"}));
    EXPECT_EQ(2, sensord::runSensord({"--sensor", "light"}));
    EXPECT_EQ(0, sensord::runSensord({"--help"}));
    EXPECT_NE(std::string::npos, sensord::sensordUsage().find("--additional-info"));
}

// ---- trace files ----------------------------------------------------------------------------

TEST(LuxTrace, HeaderCommentsAndBlankLinesAreSkipped) {
    std::string error;
    auto parsed = trace("# recorded in the lab\nmilliseconds,lux\n\n0,10\n  500 , 20.5 \n# end\n",
                        false, &error);
    ASSERT_NE(nullptr, parsed) << error;
    ASSERT_EQ(2u, parsed->samples().size());
    EXPECT_EQ(500, parsed->samples()[1].ms);
    EXPECT_EQ(20.5f, parsed->samples()[1].lux);
}

TEST(LuxTrace, ErrorsGiveFileAndLine) {
    EXPECT_EQ("t.csv:2: expected \"milliseconds,lux\", got '100'", traceError("0,1\n100\n"));
    EXPECT_EQ("t.csv:3: time is not a number: 'x'", traceError("ms,lux\n0,1\nx,2\n"));
    EXPECT_EQ("t.csv:1: time is negative: -5", traceError("-5,1\n"));
    EXPECT_EQ("t.csv:1: lux is not a number: 'bright'", traceError("0,bright\n"));
    EXPECT_EQ("t.csv:3: time goes backwards: 100 ms after 200 ms",
              traceError("0,1\n200,2\n100,3\n"));
    // Only the first data line may be a header.
    EXPECT_EQ("t.csv:2: time is not a number: 'time'", traceError("0,1\ntime,lux\n"));
    EXPECT_EQ("t.csv: no samples", traceError("# nothing\nms,lux\n"));

    std::string error;
    EXPECT_EQ(nullptr, LuxTrace::load("/nonexistent/x.csv", false, &error));
    EXPECT_EQ("/nonexistent/x.csv: cannot open", error);
}

TEST(LuxTrace, PlaybackHoldsEachSampleAndLoopsOnRequest) {
    const std::string text = "100,1\n200,2\n400,4\n";
    std::string error;
    auto once = trace(text, false, &error);
    auto looped = trace(text, true, &error);
    ASSERT_TRUE(once && looped);

    EXPECT_EQ(1.0f, once->luxAt(0ms));  // before the first sample: the first value
    EXPECT_EQ(1.0f, once->luxAt(199ms));
    EXPECT_EQ(2.0f, once->luxAt(200ms));
    EXPECT_EQ(2.0f, once->luxAt(399ms));
    EXPECT_EQ(4.0f, once->luxAt(400ms));
    EXPECT_EQ(4.0f, once->luxAt(10s));  // the last value stays

    EXPECT_EQ(2.0f, looped->luxAt(250ms));
    EXPECT_EQ(1.0f, looped->luxAt(400ms));  // a lap is 400 ms long
    EXPECT_EQ(2.0f, looped->luxAt(650ms));
    EXPECT_EQ(2.0f, looped->luxAt(400ms * 1000 + 250ms));
}

TEST(LuxTrace, PlaysTheFilterLabsRecordedTraces) {
    const std::filesystem::path folder(FILTERLAB_TRACES_DIR);
    if (!std::filesystem::is_directory(folder)) GTEST_SKIP() << "no traces in " << folder;
    int played = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.path().extension() != ".csv") continue;
        std::string error;
        auto parsed = LuxTrace::load(entry.path().string(), true, &error);
        ASSERT_NE(nullptr, parsed) << error;
        EXPECT_EQ(parsed->samples().front().lux, parsed->luxAt(0ms));
        ++played;
    }
    EXPECT_GT(played, 0);
}

// ---- sensor lists ---------------------------------------------------------------------------

TEST(SensorCatalog, SpecsFillDefaultsFromTheType) {
    SensorInfo sensor;
    std::string error;
    ASSERT_TRUE(SensorCatalog::parseSpec("proximity,Prox", 4, &sensor, &error)) << error;
    EXPECT_EQ(4, sensor.sensorHandle);
    EXPECT_EQ(SensorType::PROXIMITY, sensor.type);
    EXPECT_EQ("android.sensor.proximity", sensor.typeAsString);
    EXPECT_EQ(SensorInfo::SENSOR_FLAG_BITS_ON_CHANGE_MODE, sensor.flags);

    ASSERT_TRUE(SensorCatalog::parseSpec("1, Accel , Acme,19.6,0.01,0.5,5000,200000,0x1", 5,
                                         &sensor, &error))
            << error;
    EXPECT_EQ(SensorType::ACCELEROMETER, sensor.type);
    EXPECT_EQ("Accel", sensor.name);
    EXPECT_EQ("Acme", sensor.vendor);
    EXPECT_EQ(19.6f, sensor.maxRange);
    EXPECT_EQ(5000, sensor.minDelayUs);
    EXPECT_EQ(200000, sensor.maxDelayUs);
    EXPECT_EQ(1, sensor.flags);

    ASSERT_TRUE(SensorCatalog::parseSpec("65537,Private", 6, &sensor, &error));
    EXPECT_EQ("vendor.sensor.65537", sensor.typeAsString);
    EXPECT_EQ(SensorInfo::SENSOR_FLAG_BITS_CONTINUOUS_MODE, sensor.flags);

    EXPECT_EQ(SensorCatalog::defaultLightSensor(1).typeAsString, "android.sensor.light");
}

TEST(SensorCatalog, BadSpecsAndListsAreReported) {
    SensorInfo sensor;
    std::string error;
    EXPECT_FALSE(SensorCatalog::parseSpec("light", 1, &sensor, &error));
    EXPECT_NE(std::string::npos, error.find("expected TYPE,NAME"));
    EXPECT_FALSE(SensorCatalog::parseSpec("lamp,L", 1, &sensor, &error));
    EXPECT_EQ("unknown sensor type 'lamp'", error);
    EXPECT_FALSE(SensorCatalog::parseSpec("light,", 1, &sensor, &error));
    EXPECT_EQ("sensor name is empty", error);
    EXPECT_FALSE(SensorCatalog::parseSpec("light,L,V,big", 1, &sensor, &error));
    EXPECT_EQ("maximum range is not a number: 'big'", error);
    EXPECT_FALSE(SensorCatalog::parseSpec("light,L,V,1,1,1,10,5", 1, &sensor, &error));
    EXPECT_EQ("maximum delay is below the minimum delay", error);
    EXPECT_FALSE(SensorCatalog::parseSpec("light,L,V,1,1,1,-1", 1, &sensor, &error));
    EXPECT_EQ("delays must not be negative", error);

    std::vector<SensorInfo> sensors;
    std::istringstream good("# list\nlight,A\n\nproximity,B\n");
    ASSERT_TRUE(SensorCatalog::parseList(good, "l.txt", 3, &sensors, &error)) << error;
    ASSERT_EQ(2u, sensors.size());
    EXPECT_EQ(3, sensors[0].sensorHandle);
    EXPECT_EQ(4, sensors[1].sensorHandle);

    std::istringstream bad("light,A\n# two\nlight,B,V,x\n");
    EXPECT_FALSE(SensorCatalog::parseList(bad, "l.txt", 1, &sensors, &error));
    EXPECT_EQ("l.txt:3: maximum range is not a number: 'x'", error);
    EXPECT_EQ(2u, sensors.size());  // untouched on failure
}

TEST(Sensord, AssemblesTheListInOptionOrderAndReportsFileErrors) {
    TempFile list("proximity,Near\n");
    auto built = assemble({"--sensor-list", list.path(), "--sensor", "accelerometer,Acc"});
    ASSERT_NE(nullptr, built);
    ASSERT_EQ(3u, built->sensors().size());
    EXPECT_EQ(SensorType::LIGHT, built->sensors()[0].type);
    EXPECT_EQ(1, built->sensors()[0].sensorHandle);
    EXPECT_EQ("Near", built->sensors()[1].name);
    EXPECT_EQ(2, built->sensors()[1].sensorHandle);
    EXPECT_EQ(3, built->sensors()[2].sensorHandle);

    TempFile badList("light,A\nlight\n");
    std::string error;
    EXPECT_EQ(nullptr,
              sensord::Sensord::create(parse({"--sensor-list", badList.path()}), -1, &error));
    EXPECT_EQ(0u, error.rfind(badList.path() + ":2: expected TYPE,NAME", 0)) << error;

    TempFile badTrace("0,1\n1,one\n");
    EXPECT_EQ(nullptr, sensord::Sensord::create(parse({"--trace", badTrace.path()}), -1, &error));
    EXPECT_EQ(badTrace.path() + ":2: lux is not a number: 'one'", error);

    EXPECT_EQ(nullptr, sensord::Sensord::create(parse({"--sensor", "light,"}), -1, &error));
    EXPECT_EQ("--sensor: sensor name is empty", error);
}

// ---- the service ----------------------------------------------------------------------------

TEST(SimSensorManager, AnswersLikeThePlatformService) {
    auto built = assemble({"--sensor", "proximity,Near"});
    auto service = built->service();

    std::shared_ptr<IEventQueue> queue;
    ::ndk::ScopedAStatus status = service->createEventQueue(nullptr, &queue);
    EXPECT_EQ(ISensorManager::RESULT_BAD_VALUE, status.getServiceSpecificError());
    EXPECT_EQ(nullptr, queue);

    SensorInfo sensor;
    ASSERT_TRUE(service->getDefaultSensor(SensorType::PROXIMITY, &sensor).isOk());
    EXPECT_EQ("Near", sensor.name);
    sensor.sensorHandle = 77;
    status = service->getDefaultSensor(SensorType::ACCELEROMETER, &sensor);
    EXPECT_EQ(ISensorManager::RESULT_NOT_EXIST, status.getServiceSpecificError());
    EXPECT_EQ(77, sensor.sensorHandle);

    std::vector<SensorInfo> list = {SensorInfo()};
    ASSERT_TRUE(service->getSensorList(&list).isOk());
    EXPECT_EQ(built->sensors(), list);

    Ashmem mem;
    mem.size = 4096;
    std::shared_ptr<::aidl::android::frameworks::sensorservice::IDirectReportChannel> channel;
    EXPECT_EQ(ISensorManager::RESULT_BAD_VALUE,
              service->createAshmemDirectChannel(mem, 8192, &channel).getServiceSpecificError());
    EXPECT_EQ(ISensorManager::RESULT_BAD_VALUE,
              service->createAshmemDirectChannel(mem, 103, &channel).getServiceSpecificError());
    EXPECT_EQ(ISensorManager::RESULT_UNKNOWN_ERROR,
              service->createAshmemDirectChannel(mem, 104, &channel).getServiceSpecificError());
}

TEST(SimSensorManager, ListModesDriveClientFailurePaths) {
    std::vector<SensorInfo> list = {SensorInfo()};
    auto empty = assemble({"--empty-list"});
    ASSERT_TRUE(empty->service()->getSensorList(&list).isOk());
    EXPECT_TRUE(list.empty());
    SensorInfo light;
    EXPECT_TRUE(empty->service()->getDefaultSensor(SensorType::LIGHT, &light).isOk());

    list = {SensorInfo()};
    auto failing = assemble({"--fail-list"});
    EXPECT_EQ(ISensorManager::RESULT_UNKNOWN_ERROR,
              failing->service()->getSensorList(&list).getServiceSpecificError());
    EXPECT_TRUE(list.empty());

    auto noLight = assemble({"--no-light-sensor"});
    EXPECT_EQ(ISensorManager::RESULT_NOT_EXIST,
              noLight->service()
                      ->getDefaultSensor(SensorType::LIGHT, &light)
                      .getServiceSpecificError());
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
    auto active = dispatcher->activeSensors();
    ASSERT_EQ(1u, active.size());
    EXPECT_EQ(20000us, active[0].period);  // raised to the minimum delay

    ASSERT_TRUE(queue->enableSensor(2, 500000, 0).isOk());
    active = dispatcher->activeSensors();
    ASSERT_EQ(1u, active.size());  // re-enabling changes the rate only
    EXPECT_EQ(100000us, active[0].period);

    ASSERT_TRUE(queue->enableSensor(1, 0, 0).isOk());
    active = dispatcher->activeSensors();
    ASSERT_EQ(2u, active.size());
    EXPECT_EQ(sensord::EventDispatcher::kMinPeriod, active[1].period);

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
    ASSERT_TRUE(sensortest::eventually([&] { return callback->lightEvents() >= 3; }));
    ASSERT_TRUE(queue->disableSensor(1).isOk());

    const std::vector<Event> events = callback->events();
    ASSERT_GE(events.size(), 6u);
    using Type = AdditionalInfo::AdditionalInfoType;
    const Type frame[] = {Type::AINFO_BEGIN, Type::AINFO_INTERNAL_TEMPERATURE, Type::AINFO_END};
    for (size_t i = 0; i < 3; ++i) {
        ASSERT_EQ(SensorType::ADDITIONAL_INFO, events[i].sensorType);
        const AdditionalInfo& info = events[i].payload.get<Event::EventPayload::additional>();
        EXPECT_EQ(frame[i], info.type);
        EXPECT_EQ(events[0].payload.get<Event::EventPayload::additional>().serial, info.serial);
    }
    int64_t lastTimestamp = 0;
    for (size_t i = 3; i < events.size(); ++i) {
        EXPECT_EQ(SensorType::LIGHT, events[i].sensorType);
        EXPECT_EQ(1, events[i].sensorHandle);
        EXPECT_EQ(7.5f, events[i].payload.get<Event::EventPayload::scalar>());
        EXPECT_GE(events[i].timestamp, lastTimestamp);
        lastTimestamp = events[i].timestamp;
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

    send("abc\n# note\n\n");
    ASSERT_TRUE(sensortest::eventually([&] { return source.linesRead() == 4; }));
    EXPECT_EQ(12.5f, source.luxAt(5s));
    {
        std::lock_guard<std::mutex> guard(lock);
        EXPECT_EQ(std::vector<std::string>{"stdin:2: lux is not a number: 'abc'"}, errors);
    }

    send("7");  // no newline: taken at end of input
    close(fds[1]);
    ASSERT_TRUE(sensortest::eventually([&] { return source.linesRead() == 5; }));
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
