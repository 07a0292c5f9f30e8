#include <aidl/sensors/convert.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace android::hardware::sensors::implementation {

using ::aidl::android::hardware::sensors::AdditionalInfo;
using ::aidl::android::hardware::sensors::Event;
using ::aidl::android::hardware::sensors::SensorType;
using Payload = Event::EventPayload;

void convertToSensorEvent(const Event& src, sensors_event_t* dst) {
    // Everything the event type does not set stays zero.
    *dst = sensors_event_t{};
    dst->version = sizeof(sensors_event_t);
    dst->sensor = src.sensorHandle;
    dst->type = static_cast<int32_t>(src.sensorType);
    dst->reserved0 = 0;
    dst->timestamp = src.timestamp;

    switch (src.sensorType) {
        case SensorType::META_DATA:
            dst->meta_data.what = static_cast<int32_t>(src.payload.get<Payload::meta>().what);
            // Meta events name their sensor inside the payload; the event itself has none.
            dst->meta_data.sensor = src.sensorHandle;
            dst->sensor = 0;
            break;

        case SensorType::ACCELEROMETER:
        case SensorType::MAGNETIC_FIELD:
        case SensorType::ORIENTATION:
        case SensorType::GYROSCOPE:
        case SensorType::GRAVITY:
        case SensorType::LINEAR_ACCELERATION: {
            const Payload::Vec3& vec3 = src.payload.get<Payload::vec3>();
            dst->acceleration.x = vec3.x;
            dst->acceleration.y = vec3.y;
            dst->acceleration.z = vec3.z;
            dst->acceleration.status = static_cast<int8_t>(vec3.status);
            break;
        }

        case SensorType::GAME_ROTATION_VECTOR: {
            const Payload::Vec4& vec4 = src.payload.get<Payload::vec4>();
            dst->data[0] = vec4.x;
            dst->data[1] = vec4.y;
            dst->data[2] = vec4.z;
            dst->data[3] = vec4.w;
            break;
        }

        case SensorType::ROTATION_VECTOR:
        case SensorType::GEOMAGNETIC_ROTATION_VECTOR: {
            const auto& values = src.payload.get<Payload::data>().values;
            std::copy(values.begin(), values.begin() + 5, dst->data);
            break;
        }

        case SensorType::MAGNETIC_FIELD_UNCALIBRATED:
        case SensorType::GYROSCOPE_UNCALIBRATED:
        case SensorType::ACCELEROMETER_UNCALIBRATED: {
            const Payload::Uncal& uncal = src.payload.get<Payload::uncal>();
            dst->uncalibrated_gyro.x_uncalib = uncal.x;
            dst->uncalibrated_gyro.y_uncalib = uncal.y;
            dst->uncalibrated_gyro.z_uncalib = uncal.z;
            dst->uncalibrated_gyro.x_bias = uncal.xBias;
            dst->uncalibrated_gyro.y_bias = uncal.yBias;
            dst->uncalibrated_gyro.z_bias = uncal.zBias;
            break;
        }

        case SensorType::DEVICE_ORIENTATION:
        case SensorType::LIGHT:
        case SensorType::PRESSURE:
        case SensorType::PROXIMITY:
        case SensorType::RELATIVE_HUMIDITY:
        case SensorType::AMBIENT_TEMPERATURE:
        case SensorType::SIGNIFICANT_MOTION:
        case SensorType::STEP_DETECTOR:
        case SensorType::TILT_DETECTOR:
        case SensorType::WAKE_GESTURE:
        case SensorType::GLANCE_GESTURE:
        case SensorType::PICK_UP_GESTURE:
        case SensorType::WRIST_TILT_GESTURE:
        case SensorType::STATIONARY_DETECT:
        case SensorType::MOTION_DETECT:
        case SensorType::HEART_BEAT:
        case SensorType::LOW_LATENCY_OFFBODY_DETECT:
        case SensorType::HINGE_ANGLE:
            dst->data[0] = src.payload.get<Payload::scalar>();
            break;

        case SensorType::STEP_COUNTER:
            dst->u64.step_counter = static_cast<uint64_t>(src.payload.get<Payload::stepCount>());
            break;

        case SensorType::HEART_RATE: {
            const Payload::HeartRate& heartRate = src.payload.get<Payload::heartRate>();
            dst->heart_rate.bpm = heartRate.bpm;
            dst->heart_rate.status = static_cast<int8_t>(heartRate.status);
            break;
        }

        case SensorType::POSE_6DOF: {
            const auto& values = src.payload.get<Payload::pose6DOF>().values;
            std::copy(values.begin(), values.end(), dst->data);
            break;
        }

        case SensorType::DYNAMIC_SENSOR_META: {
            const auto& dynamic = src.payload.get<Payload::dynamic>();
            dst->dynamic_sensor_meta.connected = dynamic.connected;
            dst->dynamic_sensor_meta.handle = dynamic.sensorHandle;
            dst->dynamic_sensor_meta.sensor = nullptr;
            memcpy(dst->dynamic_sensor_meta.uuid, dynamic.uuid.values.data(),
                   sizeof(dst->dynamic_sensor_meta.uuid));
            break;
        }

        case SensorType::ADDITIONAL_INFO: {
            const AdditionalInfo& info = src.payload.get<Payload::additional>();
            dst->additional_info.type = static_cast<int32_t>(info.type);
            dst->additional_info.serial = info.serial;
            using InfoPayload = AdditionalInfo::AdditionalInfoPayload;
            if (info.payload.getTag() == InfoPayload::Tag::dataInt32) {
                const auto& values = info.payload.get<InfoPayload::dataInt32>().values;
                memcpy(dst->additional_info.data_int32, values.data(),
                       sizeof(dst->additional_info.data_int32));
            } else {
                const auto& values = info.payload.get<InfoPayload::dataFloat>().values;
                memcpy(dst->additional_info.data_float, values.data(),
                       sizeof(dst->additional_info.data_float));
            }
            break;
        }

        case SensorType::HEAD_TRACKER: {
            const Payload::HeadTracker& head = src.payload.get<Payload::headTracker>();
            dst->head_tracker.rx = head.rx;
            dst->head_tracker.ry = head.ry;
            dst->head_tracker.rz = head.rz;
            dst->head_tracker.vx = head.vx;
            dst->head_tracker.vy = head.vy;
            dst->head_tracker.vz = head.vz;
            dst->head_tracker.discontinuity_count = head.discontinuityCount;
            break;
        }

        case SensorType::ACCELEROMETER_LIMITED_AXES:
        case SensorType::GYROSCOPE_LIMITED_AXES: {
            const Payload::LimitedAxesImu& imu = src.payload.get<Payload::limitedAxesImu>();
            dst->limited_axes_imu.x = imu.x;
            dst->limited_axes_imu.y = imu.y;
            dst->limited_axes_imu.z = imu.z;
            dst->limited_axes_imu.x_supported = imu.xSupported;
            dst->limited_axes_imu.y_supported = imu.ySupported;
            dst->limited_axes_imu.z_supported = imu.zSupported;
            break;
        }

        case SensorType::ACCELEROMETER_LIMITED_AXES_UNCALIBRATED:
        case SensorType::GYROSCOPE_LIMITED_AXES_UNCALIBRATED: {
            const Payload::LimitedAxesImuUncal& imu =
                    src.payload.get<Payload::limitedAxesImuUncal>();
            dst->limited_axes_imu_uncalibrated.x_uncalib = imu.x;
            dst->limited_axes_imu_uncalibrated.y_uncalib = imu.y;
            dst->limited_axes_imu_uncalibrated.z_uncalib = imu.z;
            dst->limited_axes_imu_uncalibrated.x_bias = imu.xBias;
            dst->limited_axes_imu_uncalibrated.y_bias = imu.yBias;
            dst->limited_axes_imu_uncalibrated.z_bias = imu.zBias;
            dst->limited_axes_imu_uncalibrated.x_supported = imu.xSupported;
            dst->limited_axes_imu_uncalibrated.y_supported = imu.ySupported;
            dst->limited_axes_imu_uncalibrated.z_supported = imu.zSupported;
            break;
        }

        case SensorType::HEADING: {
            const Payload::Heading& heading = src.payload.get<Payload::heading>();
            dst->heading.heading = heading.heading;
            dst->heading.accuracy = heading.accuracy;
            break;
        }

        default: {
            // Only device-private types may carry raw data; any other unknown type (one this
            // converter was built without) is fatal, as on the device.
            if (static_cast<int32_t>(src.sensorType) <
                static_cast<int32_t>(SensorType::DEVICE_PRIVATE_BASE)) {
                fprintf(stderr, "convertToSensorEvent: unsupported sensor type %d\n",
                        static_cast<int32_t>(src.sensorType));
                abort();
            }
            const auto& values = src.payload.get<Payload::data>().values;
            memcpy(dst->data, values.data(), sizeof(dst->data));
            break;
        }
    }
}

}  // namespace android::hardware::sensors::implementation
