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
    return {.sensorHandle = handle,
            .name = "L",
            .vendor = "V",
            .version = 2,
            .type = SensorType::LIGHT,
            .typeAsString = "android.sensor.light",
            .maxRange = 100.5f,
            .resolution = 0.25f,
            .power = 1.5f,
            .minDelayUs = 1000,
            .fifoReservedEventCount = 3,
            .fifoMaxEventCount = 4,
            .requiredPermission = "",
            .maxDelayUs = 2000,
            .flags = 2};
}

// A structured parcelable body: size word (counting itself), then the fields.
Bytes body(const Bytes& fields) {
    return Bytes().i32(static_cast<int32_t>(fields.bytes().size()) + 4).append(fields);
}

// sampleSensor() as written down from the wire layout.
Bytes sampleSensorFields(int32_t handle) {
    Bytes fields = Bytes().i32(handle).str("L").str("V").i32(2).i32(5);
    fields.str("android.sensor.light").f32(100.5f).f32(0.25f).f32(1.5f).i32(1000).i32(3).i32(4);
    return fields.str("").i32(2000).i32(2);
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

// Runs one transaction against a local stub; the reply bytes land in *reply.
binder_status_t transactLocal(const ::ndk::SpAIBinder& binder, transaction_code_t code,
                              const std::function<void(AParcel*)>& writeArgs,
                              std::vector<uint8_t>* reply) {
    ::ndk::ScopedAParcel in;
    ::ndk::ScopedAParcel out;
    EXPECT_EQ(STATUS_OK, AIBinder_prepareTransaction(binder.get(), in.getR()));
    writeArgs(in.get());
    const binder_status_t status = AIBinder_transact(binder.get(), code, in.getR(), out.getR(), 0);
    *reply = out.get() == nullptr ? std::vector<uint8_t>() : parcelBytes(out.get());
    return status;
}

// ---- requests the proxies send ----------------------------------------------------------------

TEST(SensorServiceWire, ProxiesSendTheirCodeArgumentsAndFlags) {
    const auto okReply = [](transaction_code_t, const AParcel*, AParcel* reply) {
        return AParcel_writeInt32(reply, 0);  // OK, no result read
    };
    RecordingBinder manager(ISensorManager::descriptor, okReply);
    RecordingBinder queue(IEventQueue::descriptor, okReply);
    RecordingBinder callback(IEventQueueCallback::descriptor, [](transaction_code_t, const AParcel*,
                                                                 AParcel*) { return STATUS_OK; });
    auto managerProxy = ::ndk::SharedRefBase::make<BpSensorManager>(manager.binder());
    auto queueProxy = ::ndk::SharedRefBase::make<BpEventQueue>(queue.binder());
    std::shared_ptr<IEventQueueCallback> callbackProxy =
            IEventQueueCallback::fromBinder(callback.binder());
    ASSERT_NE(nullptr, dynamic_cast<BpEventQueueCallback*>(callbackProxy.get()));
    SensorInfo ignored;
    const Event event{.timestamp = 0x0102030405060708,
                      .sensorHandle = 9,
                      .sensorType = SensorType::LIGHT,
                      .payload = Payload::make<Payload::scalar>(321.5f)};

    const struct {
        std::function<::ndk::ScopedAStatus()> call;
        const RecordingBinder& target;
        transaction_code_t code;
        Bytes request;
        binder_flags_t flags;  // all from vendor code
    } cases[] = {
            {[&] { return managerProxy->getDefaultSensor(SensorType::PROXIMITY, &ignored); },
             manager, 4, Bytes().token(ISensorManager::descriptor).i32(8), FLAG_PRIVATE_VENDOR},
            {[&] { return queueProxy->enableSensor(7, 50000, 0x100000002); }, queue, 2,
             Bytes().token(IEventQueue::descriptor).i32(7).i32(50000).i64(0x100000002),
             FLAG_PRIVATE_VENDOR},
            {[&] { return queueProxy->disableSensor(7); }, queue, 1,
             Bytes().token(IEventQueue::descriptor).i32(7), FLAG_PRIVATE_VENDOR},
            // Oneway, and the event buffer need not be cleared.
            {[&] { return callbackProxy->onEvent(event); }, callback, 1,
             Bytes().token(IEventQueueCallback::descriptor)
                     .i32(1)   // present
                     .i32(32)  // size of the event body
                     .i64(0x0102030405060708)
                     .i32(9)
                     .i32(5)  // LIGHT
                     .i32(1)  // payload present
                     .i32(4)  // tag: scalar
                     .f32(321.5f),
             FLAG_ONEWAY | FLAG_PRIVATE_VENDOR},
    };
    for (const auto& c : cases) {
        const size_t callsBefore = sensortest::transactCalls().size();
        (void)c.call();
        const auto requests = c.target.requests();
        ASSERT_FALSE(requests.empty());
        EXPECT_EQ(c.code, requests.back().code);
        EXPECT_EQ(hex(c.request.bytes()), hex(requests.back().bytes));
        const auto calls = sensortest::transactCalls();
        ASSERT_EQ(callsBefore + 1, calls.size()) << "code " << c.code;
        EXPECT_EQ(c.target.binder().get(), calls.back().binder);
        EXPECT_EQ(c.flags, calls.back().flags) << "code " << c.code;
    }
}

// ---- replies the stubs write ------------------------------------------------------------------

TEST(SensorServiceWire, StubRepliesAreStatusThenResultAndProxiesReadThemBack) {
    auto service = ::ndk::SharedRefBase::make<lsmtest::FakeSensorService>();
    service->sensors = {sampleSensor(1), sampleSensor(2)};
    // Held here: the object keeps only a weak reference to its binder.
    const ::ndk::SpAIBinder binder = service->asBinder();
    const auto noArgs = [](AParcel*) {};
    std::vector<uint8_t> reply;

    ASSERT_EQ(STATUS_OK,
              transactLocal(binder, ISensorManager::TRANSACTION_getSensorList, noArgs, &reply));
    const Bytes list = Bytes().i32(0)  // no exception
                               .i32(2)
                               .i32(1)  // present
                               .append(body(sampleSensorFields(1)))
                               .i32(1)
                               .append(body(sampleSensorFields(2)));
    EXPECT_EQ(hex(list.bytes()), hex(reply));
    auto proxy = ::ndk::SharedRefBase::make<BpSensorManager>(binder);
    std::vector<SensorInfo> sensors;
    ASSERT_TRUE(proxy->getSensorList(&sensors).isOk());
    EXPECT_EQ(service->sensors, sensors);

    // A service-specific error carries its code and leaves the result alone.
    ASSERT_EQ(STATUS_OK, transactLocal(
                                 binder, ISensorManager::TRANSACTION_getDefaultSensor,
                                 [](AParcel* in) { AParcel_writeInt32(in, 5); }, &reply));
    EXPECT_EQ(hex(Bytes().i32(-8).str("").i32(0).i32(1).bytes()), hex(reply));
    SensorInfo sensor;
    sensor.sensorHandle = 42;
    ::ndk::ScopedAStatus status = proxy->getDefaultSensor(SensorType::LIGHT, &sensor);
    EXPECT_EQ(EX_SERVICE_SPECIFIC, status.getExceptionCode());
    EXPECT_EQ(ISensorManager::RESULT_NOT_EXIST, status.getServiceSpecificError());
    EXPECT_EQ(42, sensor.sensorHandle);

    ASSERT_EQ(STATUS_OK, transactLocal(binder, 0x00FFFFFF, noArgs, &reply));
    EXPECT_EQ(hex(Bytes().i32(0).i32(1).bytes()), hex(reply)) << "interface version";
    EXPECT_EQ(STATUS_UNKNOWN_TRANSACTION, transactLocal(binder, 6, noArgs, &reply));
}

// ---- parcelable bodies ------------------------------------------------------------------------

TEST(SensorServiceWire, ReadersAcceptOlderAndNewerBodiesAndRefuseBrokenOnes) {
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

    // Union tags and fixed array lengths are checked too.
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
    ::ndk::ScopedAParcel parcel(AParcel_create());
    ASSERT_EQ(STATUS_OK, ::ndk::AParcel_writeData(parcel.get(), event));
    EXPECT_EQ(hex(expected.bytes()), hex(parcelBytes(parcel.get())));
}

}  // namespace
