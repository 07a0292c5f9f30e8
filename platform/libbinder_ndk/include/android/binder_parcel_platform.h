#pragma once

#include <android/binder_parcel.h>

#ifdef __cplusplus
extern "C" {
#endif

bool AParcel_getAllowFds(const AParcel* parcel);

// The parcel's bytes are zeroed before its memory is released or reallocated.
void AParcel_markSensitive(const AParcel* parcel);

#ifdef __cplusplus
}  // extern "C"
#endif
