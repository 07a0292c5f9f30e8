#pragma once

#include <android/binder_enums.h>
#include <android/binder_parcel.h>
#include <android/binder_parcelable_utils.h>

#include <array>
#include <compare>
#include <cstdint>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>

namespace aidl::android::hardware::sensors {

class AdditionalInfo {
public:
    typedef std::true_type fixed_size;
    static const char* descriptor;

    enum class AdditionalInfoType : int32_t {
        AINFO_BEGIN = 0,
        AINFO_END = 1,
        AINFO_UNTRACKED_DELAY = 65536,
        AINFO_INTERNAL_TEMPERATURE = 65537,
        AINFO_VEC3_CALIBRATION = 65538,
        AINFO_SENSOR_PLACEMENT = 65539,
        AINFO_SAMPLING = 65540,
        AINFO_CHANNEL_NOISE = 131072,
        AINFO_CHANNEL_SAMPLER = 131073,
        AINFO_CHANNEL_FILTER = 131074,
        AINFO_CHANNEL_LINEAR_TRANSFORM = 131075,
        AINFO_CHANNEL_NONLINEAR_MAP = 131076,
        AINFO_CHANNEL_RESAMPLER = 131077,
        AINFO_LOCAL_GEOMAGNETIC_FIELD = 196608,
        AINFO_LOCAL_GRAVITY = 196609,
        AINFO_DOCK_STATE = 196610,
        AINFO_HIGH_PERFORMANCE_MODE = 196611,
        AINFO_MAGNETIC_FIELD_CALIBRATION = 196612,
        AINFO_CUSTOM_START = 268435456,
        AINFO_DEBUGGING_START = 1073741824,
    };

    class AdditionalInfoPayload {
    public:
        typedef std::true_type fixed_size;
        static const char* descriptor;

        class Int32Values {
        public:
            typedef std::true_type fixed_size;
            static const char* descriptor;

            std::array<int32_t, 14> values = {{}};

            binder_status_t readFromParcel(const AParcel* parcel);
            binder_status_t writeToParcel(AParcel* parcel) const;

            bool operator==(const Int32Values&) const = default;
            auto operator<=>(const Int32Values&) const = default;

            static const ::ndk::parcelable_stability_t _aidl_stability = ::ndk::STABILITY_VINTF;
            std::string toString() const;
        };

        class FloatValues {
        public:
            typedef std::true_type fixed_size;
            static const char* descriptor;

            std::array<float, 14> values = {{}};

            binder_status_t readFromParcel(const AParcel* parcel);
            binder_status_t writeToParcel(AParcel* parcel) const;

            bool operator==(const FloatValues&) const = default;
            auto operator<=>(const FloatValues&) const = default;

            static const ::ndk::parcelable_stability_t _aidl_stability = ::ndk::STABILITY_VINTF;
            std::string toString() const;
        };

        enum class Tag : int8_t {
            dataInt32 = 0,
            dataFloat = 1,
        };

        // Legacy spellings: get<AdditionalInfoPayload::dataInt32>() works as well.
        static const inline Tag dataInt32 = Tag::dataInt32;
        static const inline Tag dataFloat = Tag::dataFloat;

        template <Tag _Tag>
        using _at = typename std::tuple_element<static_cast<size_t>(_Tag),
                                                std::tuple<Int32Values, FloatValues>>::type;

        template <Tag _Tag, typename _Type>
        static AdditionalInfoPayload make(_Type&& _arg) {
            AdditionalInfoPayload _inst;
            _inst.set<_Tag>(std::forward<_Type>(_arg));
            return _inst;
        }

        constexpr Tag getTag() const { return _tag; }

        template <Tag _Tag>
        const _at<_Tag>& get() const {
            checkTag(_Tag);
            return member<_Tag>(*this);
        }

        template <Tag _Tag>
        _at<_Tag>& get() {
            checkTag(_Tag);
            return member<_Tag>(*this);
        }

        template <Tag _Tag, typename _Type>
        void set(_Type&& _arg) {
            _tag = _Tag;
            member<_Tag>(*this) = std::forward<_Type>(_arg);
        }

        binder_status_t readFromParcel(const AParcel* parcel);
        binder_status_t writeToParcel(AParcel* parcel) const;

        bool operator==(const AdditionalInfoPayload& rhs) const;
        bool operator<(const AdditionalInfoPayload& rhs) const;
        bool operator!=(const AdditionalInfoPayload& rhs) const { return !(*this == rhs); }
        bool operator>(const AdditionalInfoPayload& rhs) const { return rhs < *this; }
        bool operator>=(const AdditionalInfoPayload& rhs) const { return !(*this < rhs); }
        bool operator<=(const AdditionalInfoPayload& rhs) const { return !(rhs < *this); }

        static const ::ndk::parcelable_stability_t _aidl_stability = ::ndk::STABILITY_VINTF;
        std::string toString() const;

    private:
        // Reading a member other than the active one is a programming error; it aborts as it
        // does on the device.
        void checkTag(Tag wanted) const;

        template <Tag _Tag, typename Self>
        static auto& member(Self& self) {
            if constexpr (_Tag == Tag::dataInt32) {
                return self._value.dataInt32;
            } else {
                return self._value.dataFloat;
            }
        }

        Tag _tag = Tag::dataInt32;
        union _value_t {
            _value_t() : dataInt32() {}
            Int32Values dataInt32 __attribute__((aligned(4)));
            FloatValues dataFloat __attribute__((aligned(4)));
        } _value;
    };

    AdditionalInfoType type __attribute__((aligned(4))) = AdditionalInfoType(0);
    int32_t serial __attribute__((aligned(4))) = 0;
    AdditionalInfoPayload payload;

    binder_status_t readFromParcel(const AParcel* parcel);
    binder_status_t writeToParcel(AParcel* parcel) const;

    bool operator==(const AdditionalInfo& rhs) const {
        return std::tie(type, serial, payload) == std::tie(rhs.type, rhs.serial, rhs.payload);
    }
    bool operator<(const AdditionalInfo& rhs) const {
        return std::tie(type, serial, payload) < std::tie(rhs.type, rhs.serial, rhs.payload);
    }
    bool operator!=(const AdditionalInfo& rhs) const { return !(*this == rhs); }
    bool operator>(const AdditionalInfo& rhs) const { return rhs < *this; }
    bool operator>=(const AdditionalInfo& rhs) const { return !(*this < rhs); }
    bool operator<=(const AdditionalInfo& rhs) const { return !(rhs < *this); }

    static const ::ndk::parcelable_stability_t _aidl_stability = ::ndk::STABILITY_VINTF;
    std::string toString() const;
};

[[nodiscard]] std::string toString(AdditionalInfo::AdditionalInfoType val);

}  // namespace aidl::android::hardware::sensors
