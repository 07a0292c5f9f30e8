#pragma once

#include <android/binder_parcel.h>
#include <android/binder_parcelable_utils.h>

#include <array>
#include <compare>
#include <cstdint>
#include <string>
#include <type_traits>

namespace aidl::android::hardware::sensors {

class DynamicSensorInfo {
public:
    typedef std::true_type fixed_size;
    static const char* descriptor;

    class Uuid {
    public:
        typedef std::true_type fixed_size;
        static const char* descriptor;

        std::array<uint8_t, 16> values = {{}};

        binder_status_t readFromParcel(const AParcel* parcel);
        binder_status_t writeToParcel(AParcel* parcel) const;

        bool operator==(const Uuid&) const = default;
        auto operator<=>(const Uuid&) const = default;

        static const ::ndk::parcelable_stability_t _aidl_stability = ::ndk::STABILITY_VINTF;
        std::string toString() const;
    };

    bool connected __attribute__((aligned(1))) = false;
    int32_t sensorHandle __attribute__((aligned(4))) = 0;
    Uuid uuid;

    binder_status_t readFromParcel(const AParcel* parcel);
    binder_status_t writeToParcel(AParcel* parcel) const;

    bool operator==(const DynamicSensorInfo&) const = default;
    auto operator<=>(const DynamicSensorInfo&) const = default;

    static const ::ndk::parcelable_stability_t _aidl_stability = ::ndk::STABILITY_VINTF;
    std::string toString() const;
};

}  // namespace aidl::android::hardware::sensors
