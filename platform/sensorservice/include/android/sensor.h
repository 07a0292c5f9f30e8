#pragma once

#include <stdbool.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

enum {
    ASENSOR_TYPE_INVALID = -1,
    ASENSOR_TYPE_ACCELEROMETER = 1,
    ASENSOR_TYPE_MAGNETIC_FIELD = 2,
    ASENSOR_TYPE_GYROSCOPE = 4,
    ASENSOR_TYPE_LIGHT = 5,
    ASENSOR_TYPE_PRESSURE = 6,
    ASENSOR_TYPE_PROXIMITY = 8,
    ASENSOR_TYPE_GRAVITY = 9,
    ASENSOR_TYPE_LINEAR_ACCELERATION = 10,
    ASENSOR_TYPE_ROTATION_VECTOR = 11,
    ASENSOR_TYPE_RELATIVE_HUMIDITY = 12,
    ASENSOR_TYPE_AMBIENT_TEMPERATURE = 13,
    ASENSOR_TYPE_STEP_COUNTER = 19,
    ASENSOR_TYPE_HEART_RATE = 21,
    ASENSOR_TYPE_ADDITIONAL_INFO = 33,
    ASENSOR_TYPE_HINGE_ANGLE = 36,
    ASENSOR_TYPE_HEAD_TRACKER = 37,
    ASENSOR_TYPE_HEADING = 42,
};

enum {
    ASENSOR_INVALID = -1,
    ASENSOR_REPORTING_MODE_INVALID = -1,
    ASENSOR_REPORTING_MODE_CONTINUOUS = 0,
    ASENSOR_REPORTING_MODE_ON_CHANGE = 1,
    ASENSOR_REPORTING_MODE_ONE_SHOT = 2,
    ASENSOR_REPORTING_MODE_SPECIAL_TRIGGER = 3,
};

struct ASensor;
typedef struct ASensor ASensor;
typedef ASensor const* ASensorRef;
typedef ASensorRef const* ASensorList;

// A null sensor gives NULL, ASENSOR_TYPE_INVALID or ASENSOR_INVALID.
const char* ASensor_getName(ASensor const* sensor);
const char* ASensor_getVendor(ASensor const* sensor);
int ASensor_getType(ASensor const* sensor);
float ASensor_getResolution(ASensor const* sensor);
int ASensor_getMinDelay(ASensor const* sensor);
const char* ASensor_getStringType(ASensor const* sensor);
int ASensor_getReportingMode(ASensor const* sensor);
bool ASensor_isWakeUpSensor(ASensor const* sensor);
int ASensor_getHandle(ASensor const* sensor);

#ifdef __cplusplus
}  // extern "C"
#endif
