#include <aidl/android/frameworks/sensorservice/BnSensorManager.h>
#include <aidl/android/frameworks/sensorservice/BpEventQueue.h>
#include <aidl/android/frameworks/sensorservice/BpEventQueueCallback.h>
#include <aidl/android/frameworks/sensorservice/BpSensorManager.h>
#include <aidl/android/hardware/sensors/Event.h>
#include <aidl/android/hardware/sensors/SensorInfo.h>
#include <android/binder_parcel_utils.h>
#include <android/binder_stability.h>
#include <gtest/gtest.h>

#include <cmath>
#include <functional>

#include "sensorservice_LinkSeams.h"
#include "sensorservice_TestUtil.h"

namespace {

using ::aidl::android::frameworks::sensorservice::BnSensorManager;
using ::aidl::android::frameworks::sensorservice::BpEventQueue;
using ::aidl::android::frameworks::sensorservice::BpEventQueueCallback;
using ::aidl::android::frameworks::sensorservice::BpSensorManager;
using ::aidl::android::frameworks::sensorservice::IDirectReportChannel;
using ::aidl::android::frameworks::sensorservice::IEventQueue;
using ::aidl::android::frameworks::sensorservice::IEventQueueCallback;
using ::aidl::android::frameworks::sensorservice::ISensorManager;
using ::aidl::android::hardware::common::Ashmem;
using ::aidl::android::hardware::sensors::AdditionalInfo;
using ::aidl::android::hardware::sensors::DynamicSensorInfo;
using ::aidl::android::hardware::sensors::Event;
using ::aidl::android::hardware::sensors::SensorInfo;
using ::aidl::android::hardware::sensors::SensorType;
using sensortest::Bytes;
using sensortest::hex;
using sensortest::parcelBytes;
using sensortest::RecordingBinder;
using Payload = Event::EventPayload;

SensorInfo sampleSensor(int32_t handle) {
    SensorInfo sensor;
    sensor.sensorHandle = handle;
    sensor.name = "L";
    sensor.vendor = "V";
    sensor.version = 2;
    sensor.type = SensorType::LIGHT;
    sensor.typeAsString = "android.sensor.light";
    sensor.maxRange = 100.5f;
    sensor.resolution = 0.25f;
    sensor.power = 1.5f;
    sensor.minDelayUs = 1000;
    sensor.fifoReservedEventCount = 3;
    sensor.fifoMaxEventCount = 4;
    sensor.maxDelayUs = 2000;
    sensor.flags = 2;
    return sensor;
}

// A structured parcelable body: size word (counting itself), then the fields.
Bytes body(const Bytes& fields) {
    return Bytes().i32(static_cast<int32_t>(fields.bytes().size()) + 4).append(fields);
}

Bytes sampleSensorBody(int32_t handle) {
    return body(Bytes().i32(handle)
                        .str("L")
                        .str("V")
                        .i32(2)
                        .i32(5)
                        .str("android.sensor.light")
                        .f32(100.5f)
                        .f32(0.25f)
                        .f32(1.5f)
                        .i32(1000)
                        .i32(3)
                        .i32(4)
                        .str("")
                        .i32(2000)
                        .i32(2));
}

Event lightEvent(int64_t timestamp, int32_t handle, float lux) {
    return Event{.timestamp = timestamp,
                 .sensorHandle = handle,
                 .sensorType = SensorType::LIGHT,
                 .payload = Payload::make<Payload::scalar>(lux)};
}

template <typename T>
std::vector<uint8_t> bytesOf(const T& value) {
    ::ndk::ScopedAParcel parcel(AParcel_create());
    EXPECT_EQ(STATUS_OK, ::ndk::AParcel_writeData(parcel.get(), value));
    return parcelBytes(parcel.get());
}

// Reads a T written as raw bytes; returns the status and leaves the position in *endPosition.
template <typename T>
binder_status_t readFrom(const Bytes& bytes, T* value, int32_t* endPosition = nullptr) {
    ::ndk::ScopedAParcel parcel(AParcel_create());
    EXPECT_EQ(STATUS_OK,
              AParcel_unmarshal(parcel.get(), bytes.bytes().data(), bytes.bytes().size()));
    AParcel_setDataPosition(parcel.get(), 0);
    const binder_status_t status = value->readFromParcel(parcel.get());
    if (endPosition != nullptr) *endPosition = AParcel_getDataPosition(parcel.get());
    return status;
}

// A sensor service whose answers the test sets.
class ScriptedSensorManager : public BnSensorManager {
public:
    std::vector<SensorInfo> sensors;
    std::function<::ndk::ScopedAStatus(SensorType, SensorInfo*)> defaultSensor;

    ::ndk::ScopedAStatus createAshmemDirectChannel(
            const Ashmem&, int64_t, std::shared_ptr<IDirectReportChannel>*) override {
        return ::ndk::ScopedAStatus::fromServiceSpecificError(RESULT_BAD_VALUE);
    }
    ::ndk::ScopedAStatus createEventQueue(const std::shared_ptr<IEventQueueCallback>&,
                                          std::shared_ptr<IEventQueue>*) override {
        return ::ndk::ScopedAStatus::fromServiceSpecificError(RESULT_BAD_VALUE);
    }
    ::ndk::ScopedAStatus createGrallocDirectChannel(
            const ::ndk::ScopedFileDescriptor&, int64_t,
            std::shared_ptr<IDirectReportChannel>*) override {
        return ::ndk::ScopedAStatus::fromServiceSpecificError(RESULT_BAD_VALUE);
    }
    ::ndk::ScopedAStatus getDefaultSensor(SensorType type, SensorInfo* out) override {
        return defaultSensor(type, out);
    }
    ::ndk::ScopedAStatus getSensorList(std::vector<SensorInfo>* out) override {
        *out = sensors;
        return ::ndk::ScopedAStatus::ok();
    }
};

// Runs one transaction against a local stub and returns the reply bytes.
std::vector<uint8_t> transactLocal(const ::ndk::SpAIBinder& binder, transaction_code_t code,
                                   const std::function<void(AParcel*)>& writeArgs) {
    ::ndk::ScopedAParcel in;
    ::ndk::ScopedAParcel out;
    EXPECT_EQ(STATUS_OK, AIBinder_prepareTransaction(binder.get(), in.getR()));
    writeArgs(in.get());
    EXPECT_EQ(STATUS_OK, AIBinder_transact(binder.get(), code, in.getR(), out.getR(), 0));
    return out.get() == nullptr ? std::vector<uint8_t>() : parcelBytes(out.get());
}

// ---- requests the proxies send ----------------------------------------------------------------

TEST(SensorServiceWire, LightEventTravelsOnewayInsideOnEvent) {
    RecordingBinder target(IEventQueueCallback::descriptor,
                           [](transaction_code_t, const AParcel*, AParcel*) { return STATUS_OK; });
    std::shared_ptr<IEventQueueCallback> proxy = IEventQueueCallback::fromBinder(target.binder());
    ASSERT_NE(nullptr, dynamic_cast<BpEventQueueCallback*>(proxy.get()));

    // The target writes no reply: a two-way call would fail reading the status header.
    EXPECT_TRUE(proxy->onEvent(lightEvent(0x0102030405060708, 9, 321.5f)).isOk());

    const auto requests = target.requests();
    ASSERT_EQ(1u, requests.size());
    EXPECT_EQ(1u, requests[0].code);
    const auto calls = sensortest::transactCalls();
    ASSERT_FALSE(calls.empty());
    EXPECT_EQ(target.binder().get(), calls.back().binder);
    // Oneway, from vendor code; the event buffer need not be cleared.
    EXPECT_EQ(binder_flags_t{FLAG_ONEWAY | FLAG_PRIVATE_VENDOR}, calls.back().flags);
    const Bytes expected = Bytes().token(IEventQueueCallback::descriptor)
                                   .i32(1)   // present
                                   .i32(32)  // size of the event body
                                   .i64(0x0102030405060708)
                                   .i32(9)
                                   .i32(5)  // LIGHT
                                   .i32(1)  // payload present
                                   .i32(4)  // tag: scalar
                                   .f32(321.5f);
    EXPECT_EQ(hex(expected.bytes()), hex(requests[0].bytes));
}

TEST(SensorServiceWire, ProxiesSendTheirCodesAndArguments) {
    RecordingBinder manager(ISensorManager::descriptor,
                            [](transaction_code_t, const AParcel*, AParcel* reply) {
                                return AParcel_writeInt32(reply, 0);  // OK, no result read
                            });
    const size_t callsBefore = sensortest::transactCalls().size();
    auto managerProxy = ::ndk::SharedRefBase::make<BpSensorManager>(manager.binder());
    SensorInfo ignored;
    (void)managerProxy->getDefaultSensor(SensorType::PROXIMITY, &ignored);

    RecordingBinder queue(IEventQueue::descriptor,
                          [](transaction_code_t, const AParcel*, AParcel* reply) {
                              return AParcel_writeInt32(reply, 0);
                          });
    auto queueProxy = ::ndk::SharedRefBase::make<BpEventQueue>(queue.binder());
    EXPECT_TRUE(queueProxy->enableSensor(7, 50000, 0x100000002).isOk());
    EXPECT_TRUE(queueProxy->disableSensor(7).isOk());

    const auto managerRequests = manager.requests();
    ASSERT_EQ(1u, managerRequests.size());
    EXPECT_EQ(4u, managerRequests[0].code);
    EXPECT_EQ(hex(Bytes().token(ISensorManager::descriptor).i32(8).bytes()),
              hex(managerRequests[0].bytes));

    // Two-way calls, from vendor code.
    const auto calls = sensortest::transactCalls();
    ASSERT_EQ(callsBefore + 3, calls.size());
    for (size_t i = callsBefore; i < calls.size(); ++i) {
        EXPECT_EQ(binder_flags_t{FLAG_PRIVATE_VENDOR}, calls[i].flags) << "code " << calls[i].code;
    }

    const auto queueRequests = queue.requests();
    ASSERT_EQ(2u, queueRequests.size());
    EXPECT_EQ(2u, queueRequests[0].code);
    EXPECT_EQ(
            hex(Bytes().token(IEventQueue::descriptor).i32(7).i32(50000).i64(0x100000002).bytes()),
            hex(queueRequests[0].bytes));
    EXPECT_EQ(1u, queueRequests[1].code);
    EXPECT_EQ(hex(Bytes().token(IEventQueue::descriptor).i32(7).bytes()),
              hex(queueRequests[1].bytes));
}

TEST(SensorServiceWire, ProxyAsksForVersionAndHashOnlyOnce) {
    RecordingBinder target(ISensorManager::descriptor,
                           [](transaction_code_t code, const AParcel*, AParcel* reply) {
                               AParcel_writeInt32(reply, 0);
                               if (code == ISensorManager::TRANSACTION_getInterfaceVersion) {
                                   return AParcel_writeInt32(reply, 1);
                               }
                               return ::ndk::AParcel_writeString(reply, ISensorManager::hash);
                           });
    auto proxy = ::ndk::SharedRefBase::make<BpSensorManager>(target.binder());
    for (int i = 0; i < 2; ++i) {
        int32_t version = 0;
        std::string hash;
        EXPECT_TRUE(proxy->getInterfaceVersion(&version).isOk());
        EXPECT_TRUE(proxy->getInterfaceHash(&hash).isOk());
        EXPECT_EQ(1, version);
        EXPECT_EQ("514f08f7a595501066b94e5de878d240b4d49456", hash);
    }
    const auto requests = target.requests();
    ASSERT_EQ(2u, requests.size());
    EXPECT_EQ(0x00FFFFFFu, requests[0].code);
    EXPECT_EQ(0x00FFFFFEu, requests[1].code);
}

// ---- replies the stubs write ------------------------------------------------------------------

TEST(SensorServiceWire, GetSensorListReplyIsStatusCountAndPresentBodies) {
    auto service = ::ndk::SharedRefBase::make<ScriptedSensorManager>();
    service->sensors = {sampleSensor(1), sampleSensor(2)};

    const auto reply = transactLocal(service->asBinder(), ISensorManager::TRANSACTION_getSensorList,
                                     [](AParcel*) {});
    const Bytes expected = Bytes().i32(0)  // no exception
                                   .i32(2)
                                   .i32(1)
                                   .append(sampleSensorBody(1))
                                   .i32(1)
                                   .append(sampleSensorBody(2));
    EXPECT_EQ(hex(expected.bytes()), hex(reply));

    // And the proxy reads back what the stub wrote.
    auto proxy = ::ndk::SharedRefBase::make<BpSensorManager>(service->asBinder());
    std::vector<SensorInfo> sensors;
    ASSERT_TRUE(proxy->getSensorList(&sensors).isOk());
    EXPECT_EQ(service->sensors, sensors);
}

TEST(SensorServiceWire, ServiceSpecificErrorCarriesItsCodeAndLeavesTheResultAlone) {
    auto service = ::ndk::SharedRefBase::make<ScriptedSensorManager>();
    service->defaultSensor = [](SensorType, SensorInfo*) {
        return ::ndk::ScopedAStatus::fromServiceSpecificError(ISensorManager::RESULT_NOT_EXIST);
    };

    const auto reply =
            transactLocal(service->asBinder(), ISensorManager::TRANSACTION_getDefaultSensor,
                          [](AParcel* in) { AParcel_writeInt32(in, 5); });
    EXPECT_EQ(hex(Bytes().i32(-8).str("").i32(0).i32(1).bytes()), hex(reply));

    auto proxy = ::ndk::SharedRefBase::make<BpSensorManager>(service->asBinder());
    SensorInfo sensor;
    sensor.sensorHandle = 42;
    ::ndk::ScopedAStatus status = proxy->getDefaultSensor(SensorType::LIGHT, &sensor);
    EXPECT_EQ(EX_SERVICE_SPECIFIC, status.getExceptionCode());
    EXPECT_EQ(ISensorManager::RESULT_NOT_EXIST, status.getServiceSpecificError());
    EXPECT_EQ(42, sensor.sensorHandle);
}

TEST(SensorServiceWire, StubAnswersVersionHashAndRejectsUnknownCodes) {
    auto service = ::ndk::SharedRefBase::make<ScriptedSensorManager>();
    EXPECT_EQ(hex(Bytes().i32(0).i32(1).bytes()),
              hex(transactLocal(service->asBinder(), 0x00FFFFFF, [](AParcel*) {})));
    EXPECT_EQ(hex(Bytes().i32(0).str("514f08f7a595501066b94e5de878d240b4d49456").bytes()),
              hex(transactLocal(service->asBinder(), 0x00FFFFFE, [](AParcel*) {})));

    // Held here: the object keeps only a weak reference to its binder.
    const ::ndk::SpAIBinder binder = service->asBinder();
    ::ndk::ScopedAParcel in;
    ::ndk::ScopedAParcel out;
    ASSERT_EQ(STATUS_OK, AIBinder_prepareTransaction(binder.get(), in.getR()));
    EXPECT_EQ(STATUS_UNKNOWN_TRANSACTION,
              AIBinder_transact(binder.get(), 6, in.getR(), out.getR(), 0));
}

// ---- parcelable bodies ------------------------------------------------------------------------

TEST(SensorServiceWire, SensorInfoBodyFieldsInDeclarationOrder) {
    ::ndk::ScopedAParcel parcel(AParcel_create());
    ASSERT_EQ(STATUS_OK, sampleSensor(7).writeToParcel(parcel.get()));
    EXPECT_EQ(hex(sampleSensorBody(7).bytes()), hex(parcelBytes(parcel.get())));

    SensorInfo back;
    int32_t end = 0;
    ASSERT_EQ(STATUS_OK, readFrom(sampleSensorBody(7), &back, &end));
    EXPECT_EQ(sampleSensor(7), back);
    EXPECT_EQ(static_cast<int32_t>(sampleSensorBody(7).bytes().size()), end);
}

TEST(SensorServiceWire, BodiesFromOlderAndNewerSendersAndBrokenSizes) {
    // Older sender: only the first two fields; the rest keep their defaults.
    SensorInfo older;
    older.version = 99;
    ASSERT_EQ(STATUS_OK, readFrom(body(Bytes().i32(3).str("old")), &older));
    EXPECT_EQ(3, older.sensorHandle);
    EXPECT_EQ("old", older.name);
    EXPECT_EQ(99, older.version);

    // Newer sender: an unknown trailing field is skipped, so what follows still lines up.
    Bytes fields = Bytes().i32(4)
                           .str("L")
                           .str("V")
                           .i32(2)
                           .i32(5)
                           .str("android.sensor.light")
                           .f32(100.5f)
                           .f32(0.25f)
                           .f32(1.5f)
                           .i32(1000)
                           .i32(3)
                           .i32(4)
                           .str("")
                           .i32(2000)
                           .i32(2)
                           .i32(0x7777);  // a field this side does not know
    SensorInfo newer;
    int32_t end = 0;
    ASSERT_EQ(STATUS_OK, readFrom(Bytes().append(body(fields)).i32(0x1234), &newer, &end));
    EXPECT_EQ(sampleSensor(4), newer);
    EXPECT_EQ(static_cast<int32_t>(body(fields).bytes().size()), end);

    SensorInfo broken;
    EXPECT_EQ(STATUS_BAD_VALUE, readFrom(Bytes().i32(3).i32(0), &broken));
    EXPECT_EQ(STATUS_BAD_VALUE, readFrom(Bytes().i32(-1), &broken));
}

TEST(SensorServiceWire, UnionTagsAndFixedArraysAreChecked) {
    Payload payload;
    EXPECT_EQ(STATUS_BAD_VALUE, readFrom(Bytes().i32(15).f32(1.0f), &payload));
    EXPECT_EQ(STATUS_BAD_VALUE, readFrom(Bytes().i32(-1).f32(1.0f), &payload));
    EXPECT_EQ(STATUS_OK, readFrom(Bytes().i32(4).f32(2.5f), &payload));
    EXPECT_EQ(2.5f, payload.get<Payload::scalar>());

    // float[16] with 15 elements on the wire.
    Bytes shortArray = Bytes().i32(15);
    for (int i = 0; i < 15; ++i) shortArray.f32(float(i));
    Payload::Data data;
    EXPECT_EQ(STATUS_BAD_VALUE, readFrom(body(shortArray), &data));
}

TEST(SensorServiceWire, AdditionalInfoEventNestsUnionsAndCountedArrays) {
    using InfoPayload = AdditionalInfo::AdditionalInfoPayload;
    AdditionalInfo info;
    info.type = AdditionalInfo::AdditionalInfoType::AINFO_INTERNAL_TEMPERATURE;
    info.serial = 6;
    InfoPayload::FloatValues values;
    values.values[0] = 25.0f;
    values.values[13] = -1.0f;
    info.payload.set<InfoPayload::dataFloat>(values);
    const Event event{.timestamp = 10,
                      .sensorHandle = 1,
                      .sensorType = SensorType::ADDITIONAL_INFO,
                      .payload = Payload::make<Payload::additional>(info)};

    Bytes floats = Bytes().i32(14);
    for (int i = 0; i < 14; ++i) floats.f32(values.values[i]);
    const Bytes infoBody = body(Bytes().i32(0x10001)
                                        .i32(6)
                                        .i32(1)  // payload present
                                        .i32(1)  // tag: dataFloat
                                        .i32(1)  // FloatValues present
                                        .append(body(floats)));
    const Bytes expected = Bytes().i32(1).append(
            body(Bytes().i64(10).i32(1).i32(33).i32(1).i32(9).i32(1).append(infoBody)));
    EXPECT_EQ(hex(expected.bytes()), hex(bytesOf(event)));

    Event back;
    ASSERT_EQ(STATUS_OK,
              readFrom(body(Bytes().i64(10).i32(1).i32(33).i32(1).i32(9).i32(1).append(infoBody)),
                       &back));
    EXPECT_EQ(event, back);
}

TEST(SensorServiceWire, ByteArraysArePackedAndPadded) {
    DynamicSensorInfo dynamic;
    dynamic.connected = true;
    dynamic.sensorHandle = 3;
    for (uint8_t i = 0; i < 16; ++i) dynamic.uuid.values[i] = uint8_t(0xA0 + i);
    Bytes uuid = Bytes().i32(16);
    for (int word = 0; word < 4; ++word) {
        const int base = 0xA0 + 4 * word;
        uuid.i32(base | (base + 1) << 8 | (base + 2) << 16 | (base + 3) << 24);
    }
    const Bytes expected =
            Bytes().i32(1).append(body(Bytes().i32(1).i32(3).i32(1).append(body(uuid))));
    EXPECT_EQ(hex(expected.bytes()), hex(bytesOf(dynamic)));
}

// ---- value semantics --------------------------------------------------------------------------

TEST(SensorServiceValues, SensorInfoEqualityLooksAtEveryField) {
    const SensorInfo base = sampleSensor(1);
    EXPECT_EQ(base, sampleSensor(1));
    const std::vector<std::function<void(SensorInfo&)>> changes = {
            [](SensorInfo& s) { s.sensorHandle++; },
            [](SensorInfo& s) { s.name += "x"; },
            [](SensorInfo& s) { s.vendor += "x"; },
            [](SensorInfo& s) { s.version++; },
            [](SensorInfo& s) { s.type = SensorType::PROXIMITY; },
            [](SensorInfo& s) { s.typeAsString += "x"; },
            [](SensorInfo& s) { s.maxRange = std::nextafter(s.maxRange, 1e9f); },
            [](SensorInfo& s) { s.resolution = std::nextafter(s.resolution, 1e9f); },
            [](SensorInfo& s) { s.power = std::nextafter(s.power, 1e9f); },
            [](SensorInfo& s) { s.minDelayUs++; },
            [](SensorInfo& s) { s.fifoReservedEventCount++; },
            [](SensorInfo& s) { s.fifoMaxEventCount++; },
            [](SensorInfo& s) { s.requiredPermission = "p"; },
            [](SensorInfo& s) { s.maxDelayUs++; },
            [](SensorInfo& s) { s.flags++; },
    };
    for (size_t i = 0; i < changes.size(); ++i) {
        SensorInfo changed = base;
        changes[i](changed);
        EXPECT_NE(base, changed) << "field " << i;
        EXPECT_TRUE(base < changed || changed < base) << "field " << i;
    }
}

TEST(SensorServiceValues, PayloadsCompareTagFirst) {
    const Payload scalarZero = Payload::make<Payload::scalar>(0.0f);
    const Payload countZero = Payload::make<Payload::stepCount>(int64_t{0});
    EXPECT_NE(scalarZero, countZero);
    EXPECT_LT(scalarZero, countZero);
    EXPECT_EQ(scalarZero, Payload::make<Payload::Tag::scalar>(0.0f));
    EXPECT_LT(Payload::make<Payload::scalar>(1.0f), Payload::make<Payload::scalar>(2.0f));

    // A default event holds a zero vec3.
    const Event event;
    EXPECT_EQ(Payload::Tag::vec3, event.payload.getTag());
    EXPECT_EQ(Payload::Vec3(), event.payload.get<Payload::vec3>());
}

TEST(SensorServiceValuesDeathTest, ReadingAnInactiveMemberAborts) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const Payload payload = Payload::make<Payload::scalar>(1.0f);
    EXPECT_DEATH((void)payload.get<Payload::vec3>(), "bad access");
}

}  // namespace
