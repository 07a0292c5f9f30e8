#pragma once

#include <android/binder_parcel_utils.h>

namespace ndk {

// Where a parcelable may travel: within one partition only, or across the vendor interface.
enum parcelable_stability_t {
    STABILITY_LOCAL,
    STABILITY_VINTF,
};

}  // namespace ndk
