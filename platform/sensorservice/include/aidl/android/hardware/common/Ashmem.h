#pragma once

#include <android/binder_auto_utils.h>
#include <android/binder_parcel.h>
#include <android/binder_parcelable_utils.h>

#include <cstdint>
#include <string>
#include <tuple>
#include <type_traits>

namespace aidl::android::hardware::common {

class Ashmem {
public:
    typedef std::false_type fixed_size;
    static const char* descriptor;

    ::ndk::ScopedFileDescriptor fd;
    int64_t size = 0L;

    binder_status_t readFromParcel(const AParcel* parcel);
    binder_status_t writeToParcel(AParcel* parcel) const;

    bool operator==(const Ashmem& rhs) const {
        return std::tie(fd, size) == std::tie(rhs.fd, rhs.size);
    }
    bool operator<(const Ashmem& rhs) const {
        return std::tie(fd, size) < std::tie(rhs.fd, rhs.size);
    }
    bool operator!=(const Ashmem& rhs) const { return !(*this == rhs); }
    bool operator>(const Ashmem& rhs) const { return rhs < *this; }
    bool operator>=(const Ashmem& rhs) const { return !(*this < rhs); }
    bool operator<=(const Ashmem& rhs) const { return !(rhs < *this); }

    static const ::ndk::parcelable_stability_t _aidl_stability = ::ndk::STABILITY_VINTF;
    std::string toString() const;
};

}  // namespace aidl::android::hardware::common
