#pragma once

// Parcel helpers shared by the hand-written AIDL types of this library.

#include <android/binder_parcel.h>
#include <android/binder_parcel_utils.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>
#include <vector>

namespace aidl::host {

// A fixed-length array travels as a counted array; any other count on the way back is an error.
template <typename T, size_t N>
binder_status_t writeField(AParcel* parcel, const std::array<T, N>& value) {
    const std::vector<T> elements(value.begin(), value.end());
    return ::ndk::AParcel_writeVector(parcel, elements);
}

template <typename T, size_t N>
binder_status_t readField(const AParcel* parcel, std::array<T, N>* value) {
    std::vector<T> elements;
    binder_status_t status = ::ndk::AParcel_readVector(parcel, &elements);
    if (status != STATUS_OK) return status;
    if (elements.size() != N) return STATUS_BAD_VALUE;
    for (size_t i = 0; i < N; ++i) (*value)[i] = elements[i];
    return STATUS_OK;
}

template <typename T>
binder_status_t writeField(AParcel* parcel, const T& value) {
    return ::ndk::AParcel_writeData(parcel, value);
}

template <typename T>
binder_status_t readField(const AParcel* parcel, T* value) {
    return ::ndk::AParcel_readData(parcel, value);
}

// Writes a structured parcelable body: a size word that counts itself, then the fields.
class StructuredWriter {
public:
    explicit StructuredWriter(AParcel* parcel)
        : mParcel(parcel), mStart(AParcel_getDataPosition(parcel)) {
        mStatus = AParcel_writeInt32(parcel, 0);
    }

    template <typename T>
    StructuredWriter& field(const T& value) {
        if (mStatus == STATUS_OK) mStatus = writeField(mParcel, value);
        return *this;
    }

    // Patches the size word.
    binder_status_t finish() {
        if (mStatus != STATUS_OK) return mStatus;
        const int32_t end = AParcel_getDataPosition(mParcel);
        binder_status_t status = AParcel_setDataPosition(mParcel, mStart);
        if (status == STATUS_OK) status = AParcel_writeInt32(mParcel, end - mStart);
        if (status == STATUS_OK) status = AParcel_setDataPosition(mParcel, end);
        return status;
    }

private:
    AParcel* mParcel;
    int32_t mStart;
    binder_status_t mStatus;
};

// Reads a structured parcelable body. A body shorter than this side's field list (an older
// sender) leaves the remaining fields at their defaults; a longer one (a newer sender) has its
// extra fields skipped.
class StructuredReader {
public:
    explicit StructuredReader(const AParcel* parcel)
        : mParcel(parcel), mStart(AParcel_getDataPosition(parcel)) {
        mStatus = AParcel_readInt32(parcel, &mSize);
        if (mStatus != STATUS_OK) return;
        if (mSize < 4 || mSize > INT32_MAX - mStart) mStatus = STATUS_BAD_VALUE;
    }

    template <typename T>
    StructuredReader& field(T* value) {
        if (mStatus != STATUS_OK || mExhausted) return *this;
        if (AParcel_getDataPosition(mParcel) - mStart >= mSize) {
            mExhausted = true;
            return *this;
        }
        mStatus = readField(mParcel, value);
        return *this;
    }

    binder_status_t finish() {
        if (mStatus != STATUS_OK) return mStatus;
        return AParcel_setDataPosition(mParcel, mStart + mSize);
    }

private:
    const AParcel* mParcel;
    int32_t mStart;
    int32_t mSize = 0;
    bool mExhausted = false;
    binder_status_t mStatus;
};

// Calls f(std::integral_constant<Tag, tag>) for the member tag equal to `wire` (tags are the
// numbers 0 .. count-1). Returns false when no member has that tag.
template <typename Tag, size_t Count, typename F>
bool visitTag(int32_t wire, F&& f) {
    return [&]<size_t... I>(std::index_sequence<I...>) {
        return ((wire == static_cast<int32_t>(I) &&
                 (f(std::integral_constant<Tag, static_cast<Tag>(I)>{}), true)) ||
                ...);
    }
    (std::make_index_sequence<Count>{});
}

// Aborts: a union member other than the active one was asked for.
[[noreturn]] void abortWrongTag(const char* unionName, int32_t active, int32_t wanted);

}  // namespace aidl::host
