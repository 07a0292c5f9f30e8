#include <aidl/android/hardware/sensors/AdditionalInfo.h>
#include <android/binder_to_string.h>

#include "ParcelFields.h"

namespace aidl::android::hardware::sensors {

using ::android::internal::ToString;
using Payload = AdditionalInfo::AdditionalInfoPayload;

const char* AdditionalInfo::descriptor = "android.hardware.sensors.AdditionalInfo";
const char* Payload::descriptor = "android.hardware.sensors.AdditionalInfo.AdditionalInfoPayload";
const char* Payload::Int32Values::descriptor =
        "android.hardware.sensors.AdditionalInfo.AdditionalInfoPayload.Int32Values";
const char* Payload::FloatValues::descriptor =
        "android.hardware.sensors.AdditionalInfo.AdditionalInfoPayload.FloatValues";

namespace {
constexpr size_t kPayloadMembers = 2;
}  // namespace

binder_status_t Payload::Int32Values::readFromParcel(const AParcel* parcel) {
    return host::StructuredReader(parcel).field(&values).finish();
}

binder_status_t Payload::Int32Values::writeToParcel(AParcel* parcel) const {
    return host::StructuredWriter(parcel).field(values).finish();
}

std::string Payload::Int32Values::toString() const {
    return "Int32Values{values: " + ToString(values) + "}";
}

binder_status_t Payload::FloatValues::readFromParcel(const AParcel* parcel) {
    return host::StructuredReader(parcel).field(&values).finish();
}

binder_status_t Payload::FloatValues::writeToParcel(AParcel* parcel) const {
    return host::StructuredWriter(parcel).field(values).finish();
}

std::string Payload::FloatValues::toString() const {
    return "FloatValues{values: " + ToString(values) + "}";
}

void Payload::checkTag(Tag wanted) const {
    if (_tag != wanted) {
        host::abortWrongTag("AdditionalInfoPayload", static_cast<int32_t>(_tag),
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
        text = (t == Tag::dataInt32 ? "dataInt32: " : "dataFloat: ") +
               ToString(get<decltype(t)::value>());
    });
    return "AdditionalInfoPayload{" + text + "}";
}

binder_status_t AdditionalInfo::readFromParcel(const AParcel* parcel) {
    return host::StructuredReader(parcel).field(&type).field(&serial).field(&payload).finish();
}

binder_status_t AdditionalInfo::writeToParcel(AParcel* parcel) const {
    return host::StructuredWriter(parcel).field(type).field(serial).field(payload).finish();
}

std::string AdditionalInfo::toString() const {
    return "AdditionalInfo{type: " + sensors::toString(type) + ", serial: " + ToString(serial) +
           ", payload: " + payload.toString() + "}";
}

std::string toString(AdditionalInfo::AdditionalInfoType val) {
    using Type = AdditionalInfo::AdditionalInfoType;
    switch (val) {
        case Type::AINFO_BEGIN:
            return "AINFO_BEGIN";
        case Type::AINFO_END:
            return "AINFO_END";
        case Type::AINFO_UNTRACKED_DELAY:
            return "AINFO_UNTRACKED_DELAY";
        case Type::AINFO_INTERNAL_TEMPERATURE:
            return "AINFO_INTERNAL_TEMPERATURE";
        case Type::AINFO_VEC3_CALIBRATION:
            return "AINFO_VEC3_CALIBRATION";
        case Type::AINFO_SENSOR_PLACEMENT:
            return "AINFO_SENSOR_PLACEMENT";
        case Type::AINFO_SAMPLING:
            return "AINFO_SAMPLING";
        case Type::AINFO_CHANNEL_NOISE:
            return "AINFO_CHANNEL_NOISE";
        case Type::AINFO_CHANNEL_SAMPLER:
            return "AINFO_CHANNEL_SAMPLER";
        case Type::AINFO_CHANNEL_FILTER:
            return "AINFO_CHANNEL_FILTER";
        case Type::AINFO_CHANNEL_LINEAR_TRANSFORM:
            return "AINFO_CHANNEL_LINEAR_TRANSFORM";
        case Type::AINFO_CHANNEL_NONLINEAR_MAP:
            return "AINFO_CHANNEL_NONLINEAR_MAP";
        case Type::AINFO_CHANNEL_RESAMPLER:
            return "AINFO_CHANNEL_RESAMPLER";
        case Type::AINFO_LOCAL_GEOMAGNETIC_FIELD:
            return "AINFO_LOCAL_GEOMAGNETIC_FIELD";
        case Type::AINFO_LOCAL_GRAVITY:
            return "AINFO_LOCAL_GRAVITY";
        case Type::AINFO_DOCK_STATE:
            return "AINFO_DOCK_STATE";
        case Type::AINFO_HIGH_PERFORMANCE_MODE:
            return "AINFO_HIGH_PERFORMANCE_MODE";
        case Type::AINFO_MAGNETIC_FIELD_CALIBRATION:
            return "AINFO_MAGNETIC_FIELD_CALIBRATION";
        case Type::AINFO_CUSTOM_START:
            return "AINFO_CUSTOM_START";
        case Type::AINFO_DEBUGGING_START:
            return "AINFO_DEBUGGING_START";
    }
    return std::to_string(static_cast<int32_t>(val));
}

}  // namespace aidl::android::hardware::sensors
