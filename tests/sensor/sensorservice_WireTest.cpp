#include <aidl/android/frameworks/sensorservice/BpEventQueue.h>
#include <aidl/android/frameworks/sensorservice/BpEventQueueCallback.h>
#include <aidl/android/frameworks/sensorservice/BpSensorManager.h>
#include <aidl/android/hardware/sensors/Event.h>
#include <aidl/android/hardware/sensors/SensorInfo.h>
#include <android/binder_parcel_utils.h>
#include <android/binder_stability.h>
#include <gtest/gtest.h>

#include <functional>

#include "lightsensormanager_FakeService.h"
#include "sensorservice_LinkSeams.h"
#include "sensorservice_TestUtil.h"

namespace {

using ::aidl::android::frameworks::sensorservice::BpEventQueue;
using ::aidl::android::frameworks::sensorservice::BpEventQueueCallback;
using ::aidl::android::frameworks::sensorservice::BpSensorManager;
using ::aidl::android::frameworks::sensorservice::IEventQueue;
using ::aidl::android::frameworks::sensorservice::IEventQueueCallback;
using ::aidl::android::frameworks::sensorservice::ISensorManager;
using ::aidl::android::hardware::sensors::AdditionalInfo;
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

Bytes sampleSensorFields(int32_t handle) {
    return Bytes()
            .i32(handle)
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
            .i32(2);
}

Bytes sampleSensorBody(int32_t handle) {
    return body(sampleSensorFields(handle));
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
    const auto okReply = [](transaction_code_t, const AParcel*, AParcel* reply) {
        return AParcel_writeInt32(reply, 0);  // OK, no result read
    };
    RecordingBinder manager(ISensorManager::descriptor, okReply);
    const size_t callsBefore = sensortest::transactCalls().size();
    auto managerProxy = ::ndk::SharedRefBase::make<BpSensorManager>(manager.binder());
    SensorInfo ignored;
    (void)managerProxy->getDefaultSensor(SensorType::PROXIMITY, &ignored);

    RecordingBinder queue(IEventQueue::descriptor, okReply);
    auto queueProxy = ::ndk::SharedRefBase::make<BpEventQueue>(queue.binder());
    EXPECT_TRUE(queueProxy->enableSensor(7, 50000, 0x100000002).isOk());
    EXPECT_TRUE(queueProxy->disableSensor(7).isOk());

    ASSERT_EQ(1u, manager.requests().size());
    EXPECT_EQ(4u, manager.requests()[0].code);
    EXPECT_EQ(hex(Bytes().token(ISensorManager::descriptor).i32(8).bytes()),
              hex(manager.requests()[0].bytes));

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
}

// ---- replies the stubs write ------------------------------------------------------------------

TEST(SensorServiceWire, GetSensorListReplyIsStatusCountAndPresentBodies) {
    auto service = ::ndk::SharedRefBase::make<lsmtest::FakeSensorService>();
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
    auto service = ::ndk::SharedRefBase::make<lsmtest::FakeSensorService>();

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

TEST(SensorServiceWire, StubAnswersVersionAndRejectsUnknownCodes) {
    auto service = ::ndk::SharedRefBase::make<lsmtest::FakeSensorService>();
    EXPECT_EQ(hex(Bytes().i32(0).i32(1).bytes()),
              hex(transactLocal(service->asBinder(), 0x00FFFFFF, [](AParcel*) {})));

    // Held here: the object keeps only a weak reference to its binder.
    const ::ndk::SpAIBinder binder = service->asBinder();
    ::ndk::ScopedAParcel in;
    ::ndk::ScopedAParcel out;
    ASSERT_EQ(STATUS_OK, AIBinder_prepareTransaction(binder.get(), in.getR()));
    EXPECT_EQ(STATUS_UNKNOWN_TRANSACTION,
              AIBinder_transact(binder.get(), 6, in.getR(), out.getR(), 0));
}

// ---- parcelable bodies ------------------------------------------------------------------------

TEST(SensorServiceWire, BodiesFromOlderAndNewerSendersAndBrokenSizes) {
    // Older sender: only the first two fields; the rest keep their defaults.
    SensorInfo older;
    older.version = 99;
    ASSERT_EQ(STATUS_OK, readFrom(body(Bytes().i32(3).str("old")), &older));
    EXPECT_EQ(3, older.sensorHandle);
    EXPECT_EQ("old", older.name);
    EXPECT_EQ(99, older.version);

    // Newer sender: an unknown trailing field is skipped, so what follows still lines up.
    Bytes fields = sampleSensorFields(4).i32(0x7777);
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
}

}  // namespace
