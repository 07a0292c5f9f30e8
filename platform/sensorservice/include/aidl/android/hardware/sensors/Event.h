#pragma once

#include <aidl/android/hardware/sensors/AdditionalInfo.h>
#include <aidl/android/hardware/sensors/DynamicSensorInfo.h>
#include <aidl/android/hardware/sensors/SensorStatus.h>
#include <aidl/android/hardware/sensors/SensorType.h>
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

class Event {
public:
    typedef std::true_type fixed_size;
    static const char* descriptor;

    class EventPayload {
    public:
        typedef std::true_type fixed_size;
        static const char* descriptor;

        class Vec4 {
        public:
            typedef std::true_type fixed_size;
            static const char* descriptor;

            float x __attribute__((aligned(4))) = 0.000000f;
            float y __attribute__((aligned(4))) = 0.000000f;
            float z __attribute__((aligned(4))) = 0.000000f;
            float w __attribute__((aligned(4))) = 0.000000f;

            binder_status_t readFromParcel(const AParcel* parcel);
            binder_status_t writeToParcel(AParcel* parcel) const;
            bool operator==(const Vec4&) const = default;
            auto operator<=>(const Vec4&) const = default;
            static const ::ndk::parcelable_stability_t _aidl_stability = ::ndk::STABILITY_VINTF;
            std::string toString() const;
        };

        class Vec3 {
        public:
            typedef std::true_type fixed_size;
            static const char* descriptor;

            float x __attribute__((aligned(4))) = 0.000000f;
            float y __attribute__((aligned(4))) = 0.000000f;
            float z __attribute__((aligned(4))) = 0.000000f;
            SensorStatus status __attribute__((aligned(1))) = SensorStatus(0);

            binder_status_t readFromParcel(const AParcel* parcel);
            binder_status_t writeToParcel(AParcel* parcel) const;
            bool operator==(const Vec3&) const = default;
            auto operator<=>(const Vec3&) const = default;
            static const ::ndk::parcelable_stability_t _aidl_stability = ::ndk::STABILITY_VINTF;
            std::string toString() const;
        };

        class Uncal {
        public:
            typedef std::true_type fixed_size;
            static const char* descriptor;

            float x __attribute__((aligned(4))) = 0.000000f;
            float y __attribute__((aligned(4))) = 0.000000f;
            float z __attribute__((aligned(4))) = 0.000000f;
            float xBias __attribute__((aligned(4))) = 0.000000f;
            float yBias __attribute__((aligned(4))) = 0.000000f;
            float zBias __attribute__((aligned(4))) = 0.000000f;

            binder_status_t readFromParcel(const AParcel* parcel);
            binder_status_t writeToParcel(AParcel* parcel) const;
            bool operator==(const Uncal&) const = default;
            auto operator<=>(const Uncal&) const = default;
            static const ::ndk::parcelable_stability_t _aidl_stability = ::ndk::STABILITY_VINTF;
            std::string toString() const;
        };

        class HeadTracker {
        public:
            typedef std::true_type fixed_size;
            static const char* descriptor;

            float rx __attribute__((aligned(4))) = 0.000000f;
            float ry __attribute__((aligned(4))) = 0.000000f;
            float rz __attribute__((aligned(4))) = 0.000000f;
            float vx __attribute__((aligned(4))) = 0.000000f;
            float vy __attribute__((aligned(4))) = 0.000000f;
            float vz __attribute__((aligned(4))) = 0.000000f;
            int32_t discontinuityCount __attribute__((aligned(4))) = 0;

            binder_status_t readFromParcel(const AParcel* parcel);
            binder_status_t writeToParcel(AParcel* parcel) const;
            bool operator==(const HeadTracker&) const = default;
            auto operator<=>(const HeadTracker&) const = default;
            static const ::ndk::parcelable_stability_t _aidl_stability = ::ndk::STABILITY_VINTF;
            std::string toString() const;
        };

        class LimitedAxesImu {
        public:
            typedef std::true_type fixed_size;
            static const char* descriptor;

            float x __attribute__((aligned(4))) = 0.000000f;
            float y __attribute__((aligned(4))) = 0.000000f;
            float z __attribute__((aligned(4))) = 0.000000f;
            float xSupported __attribute__((aligned(4))) = 0.000000f;
            float ySupported __attribute__((aligned(4))) = 0.000000f;
            float zSupported __attribute__((aligned(4))) = 0.000000f;

            binder_status_t readFromParcel(const AParcel* parcel);
            binder_status_t writeToParcel(AParcel* parcel) const;
            bool operator==(const LimitedAxesImu&) const = default;
            auto operator<=>(const LimitedAxesImu&) const = default;
            static const ::ndk::parcelable_stability_t _aidl_stability = ::ndk::STABILITY_VINTF;
            std::string toString() const;
        };

        class LimitedAxesImuUncal {
        public:
            typedef std::true_type fixed_size;
            static const char* descriptor;

            float x __attribute__((aligned(4))) = 0.000000f;
            float y __attribute__((aligned(4))) = 0.000000f;
            float z __attribute__((aligned(4))) = 0.000000f;
            float xBias __attribute__((aligned(4))) = 0.000000f;
            float yBias __attribute__((aligned(4))) = 0.000000f;
            float zBias __attribute__((aligned(4))) = 0.000000f;
            float xSupported __attribute__((aligned(4))) = 0.000000f;
            float ySupported __attribute__((aligned(4))) = 0.000000f;
            float zSupported __attribute__((aligned(4))) = 0.000000f;

            binder_status_t readFromParcel(const AParcel* parcel);
            binder_status_t writeToParcel(AParcel* parcel) const;
            bool operator==(const LimitedAxesImuUncal&) const = default;
            auto operator<=>(const LimitedAxesImuUncal&) const = default;
            static const ::ndk::parcelable_stability_t _aidl_stability = ::ndk::STABILITY_VINTF;
            std::string toString() const;
        };

        class Heading {
        public:
            typedef std::true_type fixed_size;
            static const char* descriptor;

            float heading __attribute__((aligned(4))) = 0.000000f;
            float accuracy __attribute__((aligned(4))) = 0.000000f;

            binder_status_t readFromParcel(const AParcel* parcel);
            binder_status_t writeToParcel(AParcel* parcel) const;
            bool operator==(const Heading&) const = default;
            auto operator<=>(const Heading&) const = default;
            static const ::ndk::parcelable_stability_t _aidl_stability = ::ndk::STABILITY_VINTF;
            std::string toString() const;
        };

        class HeartRate {
        public:
            typedef std::true_type fixed_size;
            static const char* descriptor;

            float bpm __attribute__((aligned(4))) = 0.000000f;
            SensorStatus status __attribute__((aligned(1))) = SensorStatus(0);

            binder_status_t readFromParcel(const AParcel* parcel);
            binder_status_t writeToParcel(AParcel* parcel) const;
            bool operator==(const HeartRate&) const = default;
            auto operator<=>(const HeartRate&) const = default;
            static const ::ndk::parcelable_stability_t _aidl_stability = ::ndk::STABILITY_VINTF;
            std::string toString() const;
        };

        class MetaData {
        public:
            typedef std::true_type fixed_size;
            static const char* descriptor;

            enum class MetaDataEventType : int32_t {
                META_DATA_FLUSH_COMPLETE = 1,
            };

            MetaDataEventType what __attribute__((aligned(4))) = MetaDataEventType(0);

            binder_status_t readFromParcel(const AParcel* parcel);
            binder_status_t writeToParcel(AParcel* parcel) const;
            bool operator==(const MetaData&) const = default;
            auto operator<=>(const MetaData&) const = default;
            static const ::ndk::parcelable_stability_t _aidl_stability = ::ndk::STABILITY_VINTF;
            std::string toString() const;
        };

        class Pose6Dof {
        public:
            typedef std::true_type fixed_size;
            static const char* descriptor;

            std::array<float, 15> values = {{}};

            binder_status_t readFromParcel(const AParcel* parcel);
            binder_status_t writeToParcel(AParcel* parcel) const;
            bool operator==(const Pose6Dof&) const = default;
            auto operator<=>(const Pose6Dof&) const = default;
            static const ::ndk::parcelable_stability_t _aidl_stability = ::ndk::STABILITY_VINTF;
            std::string toString() const;
        };

        class Data {
        public:
            typedef std::true_type fixed_size;
            static const char* descriptor;

            std::array<float, 16> values = {{}};

            binder_status_t readFromParcel(const AParcel* parcel);
            binder_status_t writeToParcel(AParcel* parcel) const;
            bool operator==(const Data&) const = default;
            auto operator<=>(const Data&) const = default;
            static const ::ndk::parcelable_stability_t _aidl_stability = ::ndk::STABILITY_VINTF;
            std::string toString() const;
        };

        enum class Tag : int8_t {
            vec3 = 0,
            vec4 = 1,
            uncal = 2,
            meta = 3,
            scalar = 4,
            stepCount = 5,
            heartRate = 6,
            pose6DOF = 7,
            dynamic = 8,
            additional = 9,
            data = 10,
            headTracker = 11,
            limitedAxesImu = 12,
            limitedAxesImuUncal = 13,
            heading = 14,
        };

        // Legacy spellings: get<EventPayload::scalar>() works as well as get<Tag::scalar>().
        static const inline Tag vec3 = Tag::vec3;
        static const inline Tag vec4 = Tag::vec4;
        static const inline Tag uncal = Tag::uncal;
        static const inline Tag meta = Tag::meta;
        static const inline Tag scalar = Tag::scalar;
        static const inline Tag stepCount = Tag::stepCount;
        static const inline Tag heartRate = Tag::heartRate;
        static const inline Tag pose6DOF = Tag::pose6DOF;
        static const inline Tag dynamic = Tag::dynamic;
        static const inline Tag additional = Tag::additional;
        static const inline Tag data = Tag::data;
        static const inline Tag headTracker = Tag::headTracker;
        static const inline Tag limitedAxesImu = Tag::limitedAxesImu;
        static const inline Tag limitedAxesImuUncal = Tag::limitedAxesImuUncal;
        static const inline Tag heading = Tag::heading;

        template <Tag _Tag>
        using _at = typename std::tuple_element<
                static_cast<size_t>(_Tag),
                std::tuple<Vec3, Vec4, Uncal, MetaData, float, int64_t, HeartRate, Pose6Dof,
                           DynamicSensorInfo, AdditionalInfo, Data, HeadTracker, LimitedAxesImu,
                           LimitedAxesImuUncal, Heading>>::type;

        template <Tag _Tag, typename _Type>
        static EventPayload make(_Type&& _arg) {
            EventPayload _inst;
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

        bool operator==(const EventPayload& rhs) const;
        bool operator<(const EventPayload& rhs) const;
        bool operator!=(const EventPayload& rhs) const { return !(*this == rhs); }
        bool operator>(const EventPayload& rhs) const { return rhs < *this; }
        bool operator>=(const EventPayload& rhs) const { return !(*this < rhs); }
        bool operator<=(const EventPayload& rhs) const { return !(rhs < *this); }

        static const ::ndk::parcelable_stability_t _aidl_stability = ::ndk::STABILITY_VINTF;
        std::string toString() const;

    private:
        // Reading a member other than the active one is a programming error; it aborts as it
        // does on the device.
        void checkTag(Tag wanted) const;

        template <Tag _Tag, typename Self>
        static auto& member(Self& self) {
            auto& v = self._value;
            if constexpr (_Tag == Tag::vec3)
                return v.vec3;
            else if constexpr (_Tag == Tag::vec4)
                return v.vec4;
            else if constexpr (_Tag == Tag::uncal)
                return v.uncal;
            else if constexpr (_Tag == Tag::meta)
                return v.meta;
            else if constexpr (_Tag == Tag::scalar)
                return v.scalar;
            else if constexpr (_Tag == Tag::stepCount)
                return v.stepCount;
            else if constexpr (_Tag == Tag::heartRate)
                return v.heartRate;
            else if constexpr (_Tag == Tag::pose6DOF)
                return v.pose6DOF;
            else if constexpr (_Tag == Tag::dynamic)
                return v.dynamic;
            else if constexpr (_Tag == Tag::additional)
                return v.additional;
            else if constexpr (_Tag == Tag::data)
                return v.data;
            else if constexpr (_Tag == Tag::headTracker)
                return v.headTracker;
            else if constexpr (_Tag == Tag::limitedAxesImu)
                return v.limitedAxesImu;
            else if constexpr (_Tag == Tag::limitedAxesImuUncal)
                return v.limitedAxesImuUncal;
            else
                return v.heading;
        }

        Tag _tag = Tag::vec3;
        union _value_t {
            _value_t() : vec3() {}
            Vec3 vec3 __attribute__((aligned(4)));
            Vec4 vec4 __attribute__((aligned(4)));
            Uncal uncal __attribute__((aligned(4)));
            MetaData meta __attribute__((aligned(4)));
            float scalar __attribute__((aligned(4)));
            int64_t stepCount __attribute__((aligned(8)));
            HeartRate heartRate __attribute__((aligned(4)));
            Pose6Dof pose6DOF __attribute__((aligned(4)));
            DynamicSensorInfo dynamic __attribute__((aligned(4)));
            AdditionalInfo additional __attribute__((aligned(4)));
            Data data __attribute__((aligned(4)));
            HeadTracker headTracker __attribute__((aligned(4)));
            LimitedAxesImu limitedAxesImu __attribute__((aligned(4)));
            LimitedAxesImuUncal limitedAxesImuUncal __attribute__((aligned(4)));
            Heading heading __attribute__((aligned(4)));
        } _value;
    };

    int64_t timestamp __attribute__((aligned(8))) = 0L;
    int32_t sensorHandle __attribute__((aligned(4))) = 0;
    SensorType sensorType __attribute__((aligned(4))) = SensorType(0);
    EventPayload payload;

    binder_status_t readFromParcel(const AParcel* parcel);
    binder_status_t writeToParcel(AParcel* parcel) const;

    bool operator==(const Event& rhs) const {
        return std::tie(timestamp, sensorHandle, sensorType, payload) ==
               std::tie(rhs.timestamp, rhs.sensorHandle, rhs.sensorType, rhs.payload);
    }
    bool operator<(const Event& rhs) const {
        return std::tie(timestamp, sensorHandle, sensorType, payload) <
               std::tie(rhs.timestamp, rhs.sensorHandle, rhs.sensorType, rhs.payload);
    }
    bool operator!=(const Event& rhs) const { return !(*this == rhs); }
    bool operator>(const Event& rhs) const { return rhs < *this; }
    bool operator>=(const Event& rhs) const { return !(*this < rhs); }
    bool operator<=(const Event& rhs) const { return !(rhs < *this); }

    static const ::ndk::parcelable_stability_t _aidl_stability = ::ndk::STABILITY_VINTF;
    std::string toString() const;
};

[[nodiscard]] std::string toString(Event::EventPayload::MetaData::MetaDataEventType val);

}  // namespace aidl::android::hardware::sensors
