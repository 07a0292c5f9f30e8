#include "SensorCatalog.h"

#include <hardware/sensors.h>

#include <fstream>
#include <sstream>

#include "TextParsing.h"

namespace sensord {

using SensorInfo = SensorCatalog::SensorInfo;
using SensorType = SensorCatalog::SensorType;

namespace {

struct TypeName {
    SensorType type;
    const char* name;        // as accepted on the command line
    const char* stringType;  // as the platform reports it
    bool onChange;
};

constexpr TypeName kTypes[] = {
        {SensorType::ACCELEROMETER, "accelerometer", SENSOR_STRING_TYPE_ACCELEROMETER, false},
        {SensorType::MAGNETIC_FIELD, "magnetic_field", SENSOR_STRING_TYPE_MAGNETIC_FIELD, false},
        {SensorType::ORIENTATION, "orientation", SENSOR_STRING_TYPE_ORIENTATION, false},
        {SensorType::GYROSCOPE, "gyroscope", SENSOR_STRING_TYPE_GYROSCOPE, false},
        {SensorType::LIGHT, "light", SENSOR_STRING_TYPE_LIGHT, true},
        {SensorType::PRESSURE, "pressure", SENSOR_STRING_TYPE_PRESSURE, false},
        {SensorType::PROXIMITY, "proximity", SENSOR_STRING_TYPE_PROXIMITY, true},
        {SensorType::GRAVITY, "gravity", SENSOR_STRING_TYPE_GRAVITY, false},
        {SensorType::LINEAR_ACCELERATION, "linear_acceleration",
         SENSOR_STRING_TYPE_LINEAR_ACCELERATION, false},
        {SensorType::ROTATION_VECTOR, "rotation_vector", SENSOR_STRING_TYPE_ROTATION_VECTOR, false},
        {SensorType::RELATIVE_HUMIDITY, "relative_humidity", SENSOR_STRING_TYPE_RELATIVE_HUMIDITY,
         true},
        {SensorType::AMBIENT_TEMPERATURE, "ambient_temperature",
         SENSOR_STRING_TYPE_AMBIENT_TEMPERATURE, true},
        {SensorType::STEP_COUNTER, "step_counter", SENSOR_STRING_TYPE_STEP_COUNTER, true},
        {SensorType::HEART_RATE, "heart_rate", SENSOR_STRING_TYPE_HEART_RATE, true},
        {SensorType::DEVICE_ORIENTATION, "device_orientation",
         SENSOR_STRING_TYPE_DEVICE_ORIENTATION, true},
        {SensorType::HINGE_ANGLE, "hinge_angle", SENSOR_STRING_TYPE_HINGE_ANGLE, true},
        {SensorType::HEADING, "heading", SENSOR_STRING_TYPE_HEADING, false},
};

const TypeName* findType(SensorType type) {
    for (const TypeName& entry : kTypes) {
        if (entry.type == type) return &entry;
    }
    return nullptr;
}

std::vector<std::string> splitFields(const std::string& text) {
    std::vector<std::string> fields;
    std::stringstream stream(text);
    std::string field;
    while (std::getline(stream, field, ',')) fields.emplace_back(trim(field));
    // A trailing comma leaves an empty last field.
    if (!text.empty() && text.back() == ',') fields.emplace_back();
    return fields;
}

}  // namespace

SensorInfo SensorCatalog::defaultLightSensor(int32_t handle) {
    SensorInfo sensor;
    sensor.sensorHandle = handle;
    sensor.name = "Ambient Light Sensor (simulated)";
    sensor.vendor = "TPS host";
    sensor.version = 1;
    sensor.type = SensorType::LIGHT;
    sensor.typeAsString = SENSOR_STRING_TYPE_LIGHT;
    sensor.maxRange = 40000.0f;
    sensor.resolution = 1.0f;
    sensor.power = 0.1f;
    sensor.minDelayUs = 0;
    sensor.maxDelayUs = 0;
    sensor.flags = SensorInfo::SENSOR_FLAG_BITS_ON_CHANGE_MODE;
    return sensor;
}

std::string SensorCatalog::stringType(SensorType type) {
    if (const TypeName* known = findType(type)) return known->stringType;
    if (type == SensorType::ADDITIONAL_INFO) return SENSOR_STRING_TYPE_ADDITIONAL_INFO;
    return "vendor.sensor." + std::to_string(static_cast<int32_t>(type));
}

bool SensorCatalog::parseType(const std::string& text, SensorType* type) {
    for (const TypeName& entry : kTypes) {
        if (text == entry.name) {
            *type = entry.type;
            return true;
        }
    }
    int32_t number = 0;
    if (!parseInt32(text, &number) || number <= 0) return false;
    *type = static_cast<SensorType>(number);
    return true;
}

bool SensorCatalog::parseSpec(const std::string& spec, int32_t handle, SensorInfo* sensor,
                              std::string* error) {
    const std::vector<std::string> fields = splitFields(spec);
    if (fields.size() < 2 || fields.size() > 9) {
        *error = "expected TYPE,NAME[,VENDOR[,MAX_RANGE[,RESOLUTION[,POWER[,MIN_DELAY_US"
                 "[,MAX_DELAY_US[,FLAGS]]]]]]], got '" +
                 spec + "'";
        return false;
    }

    SensorInfo result;
    result.sensorHandle = handle;
    result.version = 1;
    if (!parseType(fields[0], &result.type)) {
        *error = "unknown sensor type '" + fields[0] + "'";
        return false;
    }
    if (fields[1].empty()) {
        *error = "sensor name is empty";
        return false;
    }
    result.name = fields[1];
    result.vendor = fields.size() > 2 && !fields[2].empty() ? fields[2] : "TPS host";
    result.typeAsString = stringType(result.type);
    const TypeName* known = findType(result.type);
    const bool onChange = known != nullptr && known->onChange;
    result.flags = onChange ? int32_t{SensorInfo::SENSOR_FLAG_BITS_ON_CHANGE_MODE}
                            : int32_t{SensorInfo::SENSOR_FLAG_BITS_CONTINUOUS_MODE};
    result.maxRange = 1000.0f;
    result.resolution = 1.0f;
    result.power = 0.1f;

    struct FloatField {
        size_t index;
        const char* what;
        float* value;
    };
    for (const FloatField& field :
         {FloatField{3, "maximum range", &result.maxRange},
          FloatField{4, "resolution", &result.resolution}, FloatField{5, "power", &result.power}}) {
        if (fields.size() <= field.index || fields[field.index].empty()) continue;
        if (!parseFloat(fields[field.index], field.value)) {
            *error = std::string(field.what) + " is not a number: '" + fields[field.index] + "'";
            return false;
        }
    }
    struct IntField {
        size_t index;
        const char* what;
        int32_t* value;
    };
    for (const IntField& field :
         {IntField{6, "minimum delay", &result.minDelayUs},
          IntField{7, "maximum delay", &result.maxDelayUs}, IntField{8, "flags", &result.flags}}) {
        if (fields.size() <= field.index || fields[field.index].empty()) continue;
        if (!parseInt32(fields[field.index], field.value)) {
            *error = std::string(field.what) + " is not an integer: '" + fields[field.index] + "'";
            return false;
        }
    }
    if (result.minDelayUs < 0 || result.maxDelayUs < 0) {
        *error = "delays must not be negative";
        return false;
    }
    if (result.maxDelayUs > 0 && result.maxDelayUs < result.minDelayUs) {
        *error = "maximum delay is below the minimum delay";
        return false;
    }
    *sensor = std::move(result);
    return true;
}

bool SensorCatalog::parseList(std::istream& in, const std::string& name, int32_t firstHandle,
                              std::vector<SensorInfo>* sensors, std::string* error) {
    std::vector<SensorInfo> result;
    std::string line;
    for (int lineNumber = 1; std::getline(in, line); ++lineNumber) {
        const std::string_view text = trim(line);
        if (text.empty() || text.front() == '#') continue;
        SensorInfo sensor;
        std::string problem;
        const int32_t handle = firstHandle + static_cast<int32_t>(result.size());
        if (!parseSpec(std::string(text), handle, &sensor, &problem)) {
            *error = name + ":" + std::to_string(lineNumber) + ": " + problem;
            return false;
        }
        result.push_back(std::move(sensor));
    }
    if (in.bad()) {
        *error = name + ": read error";
        return false;
    }
    sensors->insert(sensors->end(), result.begin(), result.end());
    return true;
}

bool SensorCatalog::loadList(const std::string& path, int32_t firstHandle,
                             std::vector<SensorInfo>* sensors, std::string* error) {
    std::ifstream in(path);
    if (!in) {
        *error = path + ": cannot open";
        return false;
    }
    return parseList(in, path, firstHandle, sensors, error);
}

}  // namespace sensord
