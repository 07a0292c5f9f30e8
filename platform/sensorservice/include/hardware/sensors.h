#pragma once

#include <hardware/sensors-base.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

// Sensor types newer than the generated base list.
#define SENSOR_TYPE_HINGE_ANGLE 36
#define SENSOR_TYPE_HEAD_TRACKER 37
#define SENSOR_TYPE_ACCELEROMETER_LIMITED_AXES 38
#define SENSOR_TYPE_GYROSCOPE_LIMITED_AXES 39
#define SENSOR_TYPE_ACCELEROMETER_LIMITED_AXES_UNCALIBRATED 40
#define SENSOR_TYPE_GYROSCOPE_LIMITED_AXES_UNCALIBRATED 41
#define SENSOR_TYPE_HEADING 42

#define SENSOR_STRING_TYPE_ACCELEROMETER "android.sensor.accelerometer"
#define SENSOR_STRING_TYPE_MAGNETIC_FIELD "android.sensor.magnetic_field"
#define SENSOR_STRING_TYPE_ORIENTATION "android.sensor.orientation"
#define SENSOR_STRING_TYPE_GYROSCOPE "android.sensor.gyroscope"
#define SENSOR_STRING_TYPE_LIGHT "android.sensor.light"
#define SENSOR_STRING_TYPE_PRESSURE "android.sensor.pressure"
#define SENSOR_STRING_TYPE_TEMPERATURE "android.sensor.temperature"
#define SENSOR_STRING_TYPE_PROXIMITY "android.sensor.proximity"
#define SENSOR_STRING_TYPE_GRAVITY "android.sensor.gravity"
#define SENSOR_STRING_TYPE_LINEAR_ACCELERATION "android.sensor.linear_acceleration"
#define SENSOR_STRING_TYPE_ROTATION_VECTOR "android.sensor.rotation_vector"
#define SENSOR_STRING_TYPE_RELATIVE_HUMIDITY "android.sensor.relative_humidity"
#define SENSOR_STRING_TYPE_AMBIENT_TEMPERATURE "android.sensor.ambient_temperature"
#define SENSOR_STRING_TYPE_STEP_COUNTER "android.sensor.step_counter"
#define SENSOR_STRING_TYPE_HEART_RATE "android.sensor.heart_rate"
#define SENSOR_STRING_TYPE_DEVICE_ORIENTATION "android.sensor.device_orientation"
#define SENSOR_STRING_TYPE_DYNAMIC_SENSOR_META "android.sensor.dynamic_sensor_meta"
#define SENSOR_STRING_TYPE_ADDITIONAL_INFO "android.sensor.additional_info"
#define SENSOR_STRING_TYPE_HINGE_ANGLE "android.sensor.hinge_angle"
#define SENSOR_STRING_TYPE_HEAD_TRACKER "android.sensor.head_tracker"
#define SENSOR_STRING_TYPE_HEADING "android.sensor.heading"

typedef struct {
    union {
        float v[3];
        struct {
            float x;
            float y;
            float z;
        };
        struct {
            float azimuth;
            float pitch;
            float roll;
        };
    };
    int8_t status;
    uint8_t reserved[3];
} sensors_vec_t;

typedef struct {
    union {
        float uncalib[3];
        struct {
            float x_uncalib;
            float y_uncalib;
            float z_uncalib;
        };
    };
    union {
        float bias[3];
        struct {
            float x_bias;
            float y_bias;
            float z_bias;
        };
    };
} uncalibrated_event_t;

typedef struct meta_data_event {
    int32_t what;
    int32_t sensor;
} meta_data_event_t;

typedef struct {
    float bpm;
    int8_t status;
} heart_rate_event_t;

struct sensor_t;

typedef struct {
    int32_t connected;
    int32_t handle;
    const struct sensor_t* sensor;
    uint8_t uuid[16];
} dynamic_sensor_meta_event_t;

typedef struct {
    int32_t type;
    int32_t serial;
    union {
        int32_t data_int32[14];
        float data_float[14];
    };
} additional_info_event_t;

typedef struct {
    float rx;
    float ry;
    float rz;
    float vx;
    float vy;
    float vz;
    int32_t discontinuity_count;
} head_tracker_event_t;

typedef struct {
    union {
        float calib[3];
        struct {
            float x;
            float y;
            float z;
        };
    };
    union {
        float supported[3];
        struct {
            float x_supported;
            float y_supported;
            float z_supported;
        };
    };
} limited_axes_imu_event_t;

typedef struct {
    union {
        float calib[3];
        struct {
            float x_uncalib;
            float y_uncalib;
            float z_uncalib;
        };
    };
    union {
        float bias[3];
        struct {
            float x_bias;
            float y_bias;
            float z_bias;
        };
    };
    union {
        float supported[3];
        struct {
            float x_supported;
            float y_supported;
            float z_supported;
        };
    };
} limited_axes_imu_uncalibrated_event_t;

typedef struct {
    float heading;
    float accuracy;
} heading_event_t;

// Same layout as ASensorEvent: 104 bytes, 8-byte aligned.
typedef struct sensors_event_t {
    int32_t version;
    int32_t sensor;
    int32_t type;
    int32_t reserved0;
    int64_t timestamp;
    union {
        union {
            float data[16];
            sensors_vec_t acceleration;
            sensors_vec_t magnetic;
            sensors_vec_t orientation;
            sensors_vec_t gyro;
            float temperature;
            float distance;
            float light;
            float pressure;
            float relative_humidity;
            uncalibrated_event_t uncalibrated_gyro;
            uncalibrated_event_t uncalibrated_magnetic;
            uncalibrated_event_t uncalibrated_accelerometer;
            heart_rate_event_t heart_rate;
            meta_data_event_t meta_data;
            dynamic_sensor_meta_event_t dynamic_sensor_meta;
            additional_info_event_t additional_info;
            head_tracker_event_t head_tracker;
            limited_axes_imu_event_t limited_axes_imu;
            limited_axes_imu_uncalibrated_event_t limited_axes_imu_uncalibrated;
            heading_event_t heading;
        };
        union {
            uint64_t data[8];
            uint64_t step_counter;
        } u64;
    };
    uint32_t flags;
    uint32_t reserved1[3];
} sensors_event_t;

#ifdef __cplusplus
}  // extern "C"
#endif
