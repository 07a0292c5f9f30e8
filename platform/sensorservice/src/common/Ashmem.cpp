#include <aidl/android/hardware/common/Ashmem.h>
#include <android/binder_to_string.h>

#include "ParcelFields.h"

namespace aidl::android::hardware::common {

const char* Ashmem::descriptor = "android.hardware.common.Ashmem";

binder_status_t Ashmem::readFromParcel(const AParcel* parcel) {
    return host::StructuredReader(parcel).field(&fd).field(&size).finish();
}

binder_status_t Ashmem::writeToParcel(AParcel* parcel) const {
    return host::StructuredWriter(parcel).field(fd).field(size).finish();
}

std::string Ashmem::toString() const {
    using ::android::internal::ToString;
    return "Ashmem{fd: " + ToString(fd) + ", size: " + ToString(size) + "}";
}

}  // namespace aidl::android::hardware::common
