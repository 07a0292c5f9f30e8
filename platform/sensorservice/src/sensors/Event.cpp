#include <aidl/android/hardware/sensors/Event.h>
#include <android/binder_to_string.h>

#include "ParcelFields.h"

namespace aidl::android::hardware::sensors {

using ::android::internal::ToString;
using Payload = Event::EventPayload;

namespace {

constexpr size_t kPayloadMembers = 15;

constexpr const char* kMemberNames[kPayloadMembers] = {
        "vec3",           "vec4",
        "uncal",          "meta",
        "scalar",         "stepCount",
        "heartRate",      "pose6DOF",
        "dynamic",        "additional",
        "data",           "headTracker",
        "limitedAxesImu", "limitedAxesImuUncal",
        "heading",
};

}  // namespace

const char* Event::descriptor = "android.hardware.sensors.Event";
const char* Payload::descriptor = "android.hardware.sensors.Event.EventPayload";
const char* Payload::Vec4::descriptor = "android.hardware.sensors.Event.EventPayload.Vec4";
const char* Payload::Vec3::descriptor = "android.hardware.sensors.Event.EventPayload.Vec3";
const char* Payload::Uncal::descriptor = "android.hardware.sensors.Event.EventPayload.Uncal";
const char* Payload::HeadTracker::descriptor =
        "android.hardware.sensors.Event.EventPayload.HeadTracker";
const char* Payload::LimitedAxesImu::descriptor =
        "android.hardware.sensors.Event.EventPayload.LimitedAxesImu";
const char* Payload::LimitedAxesImuUncal::descriptor =
        "android.hardware.sensors.Event.EventPayload.LimitedAxesImuUncal";
const char* Payload::Heading::descriptor = "android.hardware.sensors.Event.EventPayload.Heading";
const char* Payload::HeartRate::descriptor =
        "android.hardware.sensors.Event.EventPayload.HeartRate";
const char* Payload::MetaData::descriptor = "android.hardware.sensors.Event.EventPayload.MetaData";
const char* Payload::Pose6Dof::descriptor = "android.hardware.sensors.Event.EventPayload.Pose6Dof";
const char* Payload::Data::descriptor = "android.hardware.sensors.Event.EventPayload.Data";

// ---- payload structs ------------------------------------------------------------------------

binder_status_t Payload::Vec4::readFromParcel(const AParcel* parcel) {
    return host::StructuredReader(parcel).field(&x).field(&y).field(&z).field(&w).finish();
}

binder_status_t Payload::Vec4::writeToParcel(AParcel* parcel) const {
    return host::StructuredWriter(parcel).field(x).field(y).field(z).field(w).finish();
}

std::string Payload::Vec4::toString() const {
    return "Vec4{x: " + ToString(x) + ", y: " + ToString(y) + ", z: " + ToString(z) +
           ", w: " + ToString(w) + "}";
}

binder_status_t Payload::Vec3::readFromParcel(const AParcel* parcel) {
    return host::StructuredReader(parcel).field(&x).field(&y).field(&z).field(&status).finish();
}

binder_status_t Payload::Vec3::writeToParcel(AParcel* parcel) const {
    return host::StructuredWriter(parcel).field(x).field(y).field(z).field(status).finish();
}

std::string Payload::Vec3::toString() const {
    return "Vec3{x: " + ToString(x) + ", y: " + ToString(y) + ", z: " + ToString(z) +
           ", status: " + sensors::toString(status) + "}";
}

binder_status_t Payload::Uncal::readFromParcel(const AParcel* parcel) {
    return host::StructuredReader(parcel)
            .field(&x)
            .field(&y)
            .field(&z)
            .field(&xBias)
            .field(&yBias)
            .field(&zBias)
            .finish();
}

binder_status_t Payload::Uncal::writeToParcel(AParcel* parcel) const {
    return host::StructuredWriter(parcel)
            .field(x)
            .field(y)
            .field(z)
            .field(xBias)
            .field(yBias)
            .field(zBias)
            .finish();
}

std::string Payload::Uncal::toString() const {
    return "Uncal{x: " + ToString(x) + ", y: " + ToString(y) + ", z: " + ToString(z) +
           ", xBias: " + ToString(xBias) + ", yBias: " + ToString(yBias) +
           ", zBias: " + ToString(zBias) + "}";
}

binder_status_t Payload::HeadTracker::readFromParcel(const AParcel* parcel) {
    return host::StructuredReader(parcel)
            .field(&rx)
            .field(&ry)
            .field(&rz)
            .field(&vx)
            .field(&vy)
            .field(&vz)
            .field(&discontinuityCount)
            .finish();
}

binder_status_t Payload::HeadTracker::writeToParcel(AParcel* parcel) const {
    return host::StructuredWriter(parcel)
            .field(rx)
            .field(ry)
            .field(rz)
            .field(vx)
            .field(vy)
            .field(vz)
            .field(discontinuityCount)
            .finish();
}

std::string Payload::HeadTracker::toString() const {
    return "HeadTracker{rx: " + ToString(rx) + ", ry: " + ToString(ry) + ", rz: " + ToString(rz) +
           ", vx: " + ToString(vx) + ", vy: " + ToString(vy) + ", vz: " + ToString(vz) +
           ", discontinuityCount: " + ToString(discontinuityCount) + "}";
}

binder_status_t Payload::LimitedAxesImu::readFromParcel(const AParcel* parcel) {
    return host::StructuredReader(parcel)
            .field(&x)
            .field(&y)
            .field(&z)
            .field(&xSupported)
            .field(&ySupported)
            .field(&zSupported)
            .finish();
}

binder_status_t Payload::LimitedAxesImu::writeToParcel(AParcel* parcel) const {
    return host::StructuredWriter(parcel)
            .field(x)
            .field(y)
            .field(z)
            .field(xSupported)
            .field(ySupported)
            .field(zSupported)
            .finish();
}

std::string Payload::LimitedAxesImu::toString() const {
    return "LimitedAxesImu{x: " + ToString(x) + ", y: " + ToString(y) + ", z: " + ToString(z) +
           ", xSupported: " + ToString(xSupported) + ", ySupported: " + ToString(ySupported) +
           ", zSupported: " + ToString(zSupported) + "}";
}

binder_status_t Payload::LimitedAxesImuUncal::readFromParcel(const AParcel* parcel) {
    return host::StructuredReader(parcel)
            .field(&x)
            .field(&y)
            .field(&z)
            .field(&xBias)
            .field(&yBias)
            .field(&zBias)
            .field(&xSupported)
            .field(&ySupported)
            .field(&zSupported)
            .finish();
}

binder_status_t Payload::LimitedAxesImuUncal::writeToParcel(AParcel* parcel) const {
    return host::StructuredWriter(parcel)
            .field(x)
            .field(y)
            .field(z)
            .field(xBias)
            .field(yBias)
            .field(zBias)
            .field(xSupported)
            .field(ySupported)
            .field(zSupported)
            .finish();
}

std::string Payload::LimitedAxesImuUncal::toString() const {
    return "LimitedAxesImuUncal{x: " + ToString(x) + ", y: " + ToString(y) + ", z: " + ToString(z) +
           ", xBias: " + ToString(xBias) + ", yBias: " + ToString(yBias) +
           ", zBias: " + ToString(zBias) + ", xSupported: " + ToString(xSupported) +
           ", ySupported: " + ToString(ySupported) + ", zSupported: " + ToString(zSupported) + "}";
}

binder_status_t Payload::Heading::readFromParcel(const AParcel* parcel) {
    return host::StructuredReader(parcel).field(&heading).field(&accuracy).finish();
}

binder_status_t Payload::Heading::writeToParcel(AParcel* parcel) const {
    return host::StructuredWriter(parcel).field(heading).field(accuracy).finish();
}

std::string Payload::Heading::toString() const {
    return "Heading{heading: " + ToString(heading) + ", accuracy: " + ToString(accuracy) + "}";
}

binder_status_t Payload::HeartRate::readFromParcel(const AParcel* parcel) {
    return host::StructuredReader(parcel).field(&bpm).field(&status).finish();
}

binder_status_t Payload::HeartRate::writeToParcel(AParcel* parcel) const {
    return host::StructuredWriter(parcel).field(bpm).field(status).finish();
}

std::string Payload::HeartRate::toString() const {
    return "HeartRate{bpm: " + ToString(bpm) + ", status: " + sensors::toString(status) + "}";
}

binder_status_t Payload::MetaData::readFromParcel(const AParcel* parcel) {
    return host::StructuredReader(parcel).field(&what).finish();
}

binder_status_t Payload::MetaData::writeToParcel(AParcel* parcel) const {
    return host::StructuredWriter(parcel).field(what).finish();
}

std::string Payload::MetaData::toString() const {
    return "MetaData{what: " + sensors::toString(what) + "}";
}

binder_status_t Payload::Pose6Dof::readFromParcel(const AParcel* parcel) {
    return host::StructuredReader(parcel).field(&values).finish();
}

binder_status_t Payload::Pose6Dof::writeToParcel(AParcel* parcel) const {
    return host::StructuredWriter(parcel).field(values).finish();
}

std::string Payload::Pose6Dof::toString() const {
    return "Pose6Dof{values: " + ToString(values) + "}";
}

binder_status_t Payload::Data::readFromParcel(const AParcel* parcel) {
    return host::StructuredReader(parcel).field(&values).finish();
}

binder_status_t Payload::Data::writeToParcel(AParcel* parcel) const {
    return host::StructuredWriter(parcel).field(values).finish();
}

std::string Payload::Data::toString() const {
    return "Data{values: " + ToString(values) + "}";
}

// ---- the payload union ----------------------------------------------------------------------

void Payload::checkTag(Tag wanted) const {
    if (_tag != wanted) {
        host::abortWrongTag("EventPayload", static_cast<int32_t>(_tag),
                            static_cast<int32_t>(wanted));
    }
}

binder_status_t Payload::readFromParcel(const AParcel* parcel) {
    int32_t tag = 0;
    binder_status_t status = AParcel_readInt32(parcel, &tag);
    if (status != STATUS_OK) return status;
    status = STATUS_BAD_VALUE;
    host::visitTag<Tag, kPayloadMembers>(tag, [&](auto t) {
        constexpr Tag kTag = decltype(t)::value;
        _at<kTag> value;
        status = host::readField(parcel, &value);
        if (status == STATUS_OK) set<kTag>(value);
    });
    return status;
}

binder_status_t Payload::writeToParcel(AParcel* parcel) const {
    binder_status_t status = AParcel_writeInt32(parcel, static_cast<int32_t>(_tag));
    if (status != STATUS_OK) return status;
    host::visitTag<Tag, kPayloadMembers>(static_cast<int32_t>(_tag), [&](auto t) {
        status = host::writeField(parcel, get<decltype(t)::value>());
    });
    return status;
}

bool Payload::operator==(const Payload& rhs) const {
    if (_tag != rhs._tag) return false;
    bool equal = false;
    host::visitTag<Tag, kPayloadMembers>(static_cast<int32_t>(_tag), [&](auto t) {
        equal = get<decltype(t)::value>() == rhs.get<decltype(t)::value>();
    });
    return equal;
}

bool Payload::operator<(const Payload& rhs) const {
    if (_tag != rhs._tag) return _tag < rhs._tag;
    bool less = false;
    host::visitTag<Tag, kPayloadMembers>(static_cast<int32_t>(_tag), [&](auto t) {
        less = get<decltype(t)::value>() < rhs.get<decltype(t)::value>();
    });
    return less;
}

std::string Payload::toString() const {
    std::string text;
    host::visitTag<Tag, kPayloadMembers>(static_cast<int32_t>(_tag), [&](auto t) {
        const auto& value = get<decltype(t)::value>();
        std::string valueText;
        if constexpr (std::is_arithmetic_v<std::decay_t<decltype(value)>>) {
            valueText = ToString(value);
        } else {
            valueText = value.toString();
        }
        text = std::string(kMemberNames[static_cast<size_t>(_tag)]) + ": " + valueText;
    });
    return "EventPayload{" + text + "}";
}

// ---- the event ------------------------------------------------------------------------------

binder_status_t Event::readFromParcel(const AParcel* parcel) {
    return host::StructuredReader(parcel)
            .field(&timestamp)
            .field(&sensorHandle)
            .field(&sensorType)
            .field(&payload)
            .finish();
}

binder_status_t Event::writeToParcel(AParcel* parcel) const {
    return host::StructuredWriter(parcel)
            .field(timestamp)
            .field(sensorHandle)
            .field(sensorType)
            .field(payload)
            .finish();
}

std::string Event::toString() const {
    return "Event{timestamp: " + ToString(timestamp) + ", sensorHandle: " + ToString(sensorHandle) +
           ", sensorType: " + sensors::toString(sensorType) + ", payload: " + payload.toString() +
           "}";
}

std::string toString(Payload::MetaData::MetaDataEventType val) {
    if (val == Payload::MetaData::MetaDataEventType::META_DATA_FLUSH_COMPLETE) {
        return "META_DATA_FLUSH_COMPLETE";
    }
    return std::to_string(static_cast<int32_t>(val));
}

}  // namespace aidl::android::hardware::sensors
