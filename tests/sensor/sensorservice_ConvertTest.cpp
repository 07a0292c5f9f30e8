#include <aidl/android/hardware/sensors/Event.h>
#include <aidl/android/hardware/sensors/SensorInfo.h>
#include <aidl/sensors/convert.h>
#include <gtest/gtest.h>
#include <hardware/sensors.h>

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace {

using ::aidl::android::hardware::sensors::AdditionalInfo;
using ::aidl::android::hardware::sensors::Event;
using ::aidl::android::hardware::sensors::SensorType;
using ::android::hardware::sensors::implementation::convertToSensorEvent;
using Payload = Event::EventPayload;

// Converts into a buffer full of 0xff so that fields the converter forgets stand out.
sensors_event_t convert(const Event& event) {
    sensors_event_t out;
    memset(&out, 0xff, sizeof(out));
    convertToSensorEvent(event, &out);
    return out;
}

bool allZero(const void* begin, size_t size) {
    const auto* bytes = static_cast<const uint8_t*>(begin);
    return std::all_of(bytes, bytes + size, [](uint8_t b) { return b == 0; });
}

TEST(SensorEventLayout, MatchesTheNdkEventLayout) {
    EXPECT_EQ(104u, sizeof(sensors_event_t));
    EXPECT_EQ(8u, alignof(sensors_event_t));
    EXPECT_EQ(16u, offsetof(sensors_event_t, timestamp));
    EXPECT_EQ(24u, offsetof(sensors_event_t, light));
    EXPECT_EQ(24u, offsetof(sensors_event_t, u64.step_counter));
    EXPECT_EQ(88u, offsetof(sensors_event_t, flags));
    EXPECT_EQ(32u, offsetof(sensors_event_t, additional_info.data_int32));
}

TEST(ConvertToSensorEvent, LightEventFillsHeaderAndFirstValueAndZeroesTheRest) {
    const Event event{.timestamp = 123456789012,
                      .sensorHandle = 7,
                      .sensorType = SensorType::LIGHT,
                      .payload = Payload::make<Payload::scalar>(812.25f)};
    const sensors_event_t out = convert(event);
    EXPECT_EQ(104, out.version);
    EXPECT_EQ(7, out.sensor);
    EXPECT_EQ(5, out.type);
    EXPECT_EQ(0, out.reserved0);
    EXPECT_EQ(123456789012, out.timestamp);
    EXPECT_EQ(812.25f, out.light);
    EXPECT_TRUE(allZero(&out.data[1], sizeof(float) * 15));
    EXPECT_EQ(0u, out.flags);
    EXPECT_TRUE(allZero(out.reserved1, sizeof(out.reserved1)));
}

TEST(ConvertToSensorEvent, AdditionalInfoPayloadKeepsTypeSerialAndValues) {
    using InfoPayload = AdditionalInfo::AdditionalInfoPayload;
    AdditionalInfo info;
    info.type = AdditionalInfo::AdditionalInfoType::AINFO_SENSOR_PLACEMENT;
    info.serial = 4;
    InfoPayload::Int32Values ints;
    for (int i = 0; i < 14; ++i) ints.values[i] = 100 + i;
    info.payload.set<InfoPayload::dataInt32>(ints);

    const sensors_event_t out = convert({.timestamp = 1,
                                         .sensorHandle = 2,
                                         .sensorType = SensorType::ADDITIONAL_INFO,
                                         .payload = Payload::make<Payload::additional>(info)});
    EXPECT_EQ(0x10003, out.additional_info.type);
    EXPECT_EQ(4, out.additional_info.serial);
    EXPECT_EQ(100, out.additional_info.data_int32[0]);
    EXPECT_EQ(113, out.additional_info.data_int32[13]);
}

TEST(ConvertToSensorEventDeathTest, UnknownTypesAbort) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const Event unknownType{.timestamp = 1,
                            .sensorHandle = 2,
                            .sensorType = SensorType::MOISTURE_INTRUSION,
                            .payload = Payload::make<Payload::scalar>(1.0f)};
    EXPECT_DEATH(convert(unknownType), "unsupported sensor type 43");
}

}  // namespace
