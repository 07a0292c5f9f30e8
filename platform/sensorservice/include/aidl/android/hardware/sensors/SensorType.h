#pragma once

#include <android/binder_enums.h>

#include <array>
#include <cstdint>
#include <string>

namespace aidl::android::hardware::sensors {

enum class SensorType : int32_t {
    META_DATA = 0,
    ACCELEROMETER = 1,
    MAGNETIC_FIELD = 2,
    ORIENTATION = 3,
    GYROSCOPE = 4,
    LIGHT = 5,
    PRESSURE = 6,
    PROXIMITY = 8,
    GRAVITY = 9,
    LINEAR_ACCELERATION = 10,
    ROTATION_VECTOR = 11,
    RELATIVE_HUMIDITY = 12,
    AMBIENT_TEMPERATURE = 13,
    MAGNETIC_FIELD_UNCALIBRATED = 14,
    GAME_ROTATION_VECTOR = 15,
    GYROSCOPE_UNCALIBRATED = 16,
    SIGNIFICANT_MOTION = 17,
    STEP_DETECTOR = 18,
    STEP_COUNTER = 19,
    GEOMAGNETIC_ROTATION_VECTOR = 20,
    HEART_RATE = 21,
    TILT_DETECTOR = 22,
    WAKE_GESTURE = 23,
    GLANCE_GESTURE = 24,
    PICK_UP_GESTURE = 25,
    WRIST_TILT_GESTURE = 26,
    DEVICE_ORIENTATION = 27,
    POSE_6DOF = 28,
    STATIONARY_DETECT = 29,
    MOTION_DETECT = 30,
    HEART_BEAT = 31,
    DYNAMIC_SENSOR_META = 32,
    ADDITIONAL_INFO = 33,
    LOW_LATENCY_OFFBODY_DETECT = 34,
    ACCELEROMETER_UNCALIBRATED = 35,
    HINGE_ANGLE = 36,
    HEAD_TRACKER = 37,
    ACCELEROMETER_LIMITED_AXES = 38,
    GYROSCOPE_LIMITED_AXES = 39,
    ACCELEROMETER_LIMITED_AXES_UNCALIBRATED = 40,
    GYROSCOPE_LIMITED_AXES_UNCALIBRATED = 41,
    HEADING = 42,
    MOISTURE_INTRUSION = 43,
    DEVICE_PRIVATE_BASE = 65536,
};

[[nodiscard]] std::string toString(SensorType val);

}  // namespace aidl::android::hardware::sensors

namespace ndk::internal {

template <>
constexpr inline std::array<aidl::android::hardware::sensors::SensorType, 44> enum_values<
        aidl::android::hardware::sensors::SensorType> = {
        aidl::android::hardware::sensors::SensorType::META_DATA,
        aidl::android::hardware::sensors::SensorType::ACCELEROMETER,
        aidl::android::hardware::sensors::SensorType::MAGNETIC_FIELD,
        aidl::android::hardware::sensors::SensorType::ORIENTATION,
        aidl::android::hardware::sensors::SensorType::GYROSCOPE,
        aidl::android::hardware::sensors::SensorType::LIGHT,
        aidl::android::hardware::sensors::SensorType::PRESSURE,
        aidl::android::hardware::sensors::SensorType::PROXIMITY,
        aidl::android::hardware::sensors::SensorType::GRAVITY,
        aidl::android::hardware::sensors::SensorType::LINEAR_ACCELERATION,
        aidl::android::hardware::sensors::SensorType::ROTATION_VECTOR,
        aidl::android::hardware::sensors::SensorType::RELATIVE_HUMIDITY,
        aidl::android::hardware::sensors::SensorType::AMBIENT_TEMPERATURE,
        aidl::android::hardware::sensors::SensorType::MAGNETIC_FIELD_UNCALIBRATED,
        aidl::android::hardware::sensors::SensorType::GAME_ROTATION_VECTOR,
        aidl::android::hardware::sensors::SensorType::GYROSCOPE_UNCALIBRATED,
        aidl::android::hardware::sensors::SensorType::SIGNIFICANT_MOTION,
        aidl::android::hardware::sensors::SensorType::STEP_DETECTOR,
        aidl::android::hardware::sensors::SensorType::STEP_COUNTER,
        aidl::android::hardware::sensors::SensorType::GEOMAGNETIC_ROTATION_VECTOR,
        aidl::android::hardware::sensors::SensorType::HEART_RATE,
        aidl::android::hardware::sensors::SensorType::TILT_DETECTOR,
        aidl::android::hardware::sensors::SensorType::WAKE_GESTURE,
        aidl::android::hardware::sensors::SensorType::GLANCE_GESTURE,
        aidl::android::hardware::sensors::SensorType::PICK_UP_GESTURE,
        aidl::android::hardware::sensors::SensorType::WRIST_TILT_GESTURE,
        aidl::android::hardware::sensors::SensorType::DEVICE_ORIENTATION,
        aidl::android::hardware::sensors::SensorType::POSE_6DOF,
        aidl::android::hardware::sensors::SensorType::STATIONARY_DETECT,
        aidl::android::hardware::sensors::SensorType::MOTION_DETECT,
        aidl::android::hardware::sensors::SensorType::HEART_BEAT,
        aidl::android::hardware::sensors::SensorType::DYNAMIC_SENSOR_META,
        aidl::android::hardware::sensors::SensorType::ADDITIONAL_INFO,
        aidl::android::hardware::sensors::SensorType::LOW_LATENCY_OFFBODY_DETECT,
        aidl::android::hardware::sensors::SensorType::ACCELEROMETER_UNCALIBRATED,
        aidl::android::hardware::sensors::SensorType::HINGE_ANGLE,
        aidl::android::hardware::sensors::SensorType::HEAD_TRACKER,
        aidl::android::hardware::sensors::SensorType::ACCELEROMETER_LIMITED_AXES,
        aidl::android::hardware::sensors::SensorType::GYROSCOPE_LIMITED_AXES,
        aidl::android::hardware::sensors::SensorType::ACCELEROMETER_LIMITED_AXES_UNCALIBRATED,
        aidl::android::hardware::sensors::SensorType::GYROSCOPE_LIMITED_AXES_UNCALIBRATED,
        aidl::android::hardware::sensors::SensorType::HEADING,
        aidl::android::hardware::sensors::SensorType::MOISTURE_INTRUSION,
        aidl::android::hardware::sensors::SensorType::DEVICE_PRIVATE_BASE,
};

}  // namespace ndk::internal
