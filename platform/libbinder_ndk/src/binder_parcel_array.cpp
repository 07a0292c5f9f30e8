#include <android/binder_parcel.h>
#include <string.h>

#include "AStatusImpl.h"
#include "BinderLog.h"
#include "Parcel.h"

using abinder::pruneStatusT;

namespace {

// Arrays start with an int32 count; -1 (and only -1) stands for a null array.
binder_status_t writeArraySize(AParcel* parcel, bool isNullArray, int32_t length) {
    if (length < -1) return STATUS_BAD_VALUE;
    if (!isNullArray && length < 0) {
        BINDER_LOGE("non-null array but length is %d", length);
        return STATUS_BAD_VALUE;
    }
    if (isNullArray && length > 0) {
        BINDER_LOGE("null buffer cannot be for size %d array.", length);
        return STATUS_BAD_VALUE;
    }
    return pruneStatusT(parcel->writeInt32(length));
}

binder_status_t readArraySize(const AParcel* parcel, int32_t* length) {
    binder_status_t status = parcel->readInt32(length);
    if (status != STATUS_OK) return pruneStatusT(status);
    if (*length < -1) return STATUS_BAD_VALUE;
    if (*length <= 0) return STATUS_OK;
    // Every element takes at least one byte, so a larger count cannot be real.
    if (static_cast<size_t>(*length) > parcel->dataAvail()) return STATUS_NO_MEMORY;
    return STATUS_OK;
}

// A refused allocation is a null where none is allowed, or a failed allocation.
binder_status_t allocationFailure(int32_t length) {
    return length < 0 ? STATUS_UNEXPECTED_NULL : STATUS_NO_MEMORY;
}

// Packed arrays: the elements' bytes back to back, padded to 4.
template <typename T>
binder_status_t writePacked(AParcel* parcel, const T* array, int32_t length) {
    binder_status_t status = writeArraySize(parcel, array == nullptr, length);
    if (status != STATUS_OK || length <= 0) return status;
    size_t size = 0;
    if (__builtin_mul_overflow(sizeof(T), static_cast<size_t>(length), &size)) {
        return STATUS_NO_MEMORY;
    }
    void* out = parcel->writeInplace(size);
    if (out == nullptr) return STATUS_NO_MEMORY;
    memcpy(out, array, size);
    return STATUS_OK;
}

template <typename T>
binder_status_t readPacked(const AParcel* parcel, void* arrayData,
                           bool (*allocator)(void*, int32_t, T**)) {
    int32_t length = 0;
    binder_status_t status = readArraySize(parcel, &length);
    if (status != STATUS_OK) return status;
    T* array = nullptr;
    if (!allocator(arrayData, length, &array)) return allocationFailure(length);
    if (length <= 0) return STATUS_OK;
    if (array == nullptr) return STATUS_NO_MEMORY;
    size_t size = 0;
    if (__builtin_mul_overflow(sizeof(T), static_cast<size_t>(length), &size)) {
        return STATUS_NO_MEMORY;
    }
    const void* in = parcel->readInplace(size);
    if (in == nullptr) return STATUS_NO_MEMORY;
    memcpy(array, in, size);
    return STATUS_OK;
}

}  // namespace

binder_status_t AParcel_writeInt32Array(AParcel* parcel, const int32_t* arrayData, int32_t length) {
    return writePacked(parcel, arrayData, length);
}

binder_status_t AParcel_writeUint32Array(AParcel* parcel, const uint32_t* arrayData,
                                         int32_t length) {
    return writePacked(parcel, arrayData, length);
}

binder_status_t AParcel_writeInt64Array(AParcel* parcel, const int64_t* arrayData, int32_t length) {
    return writePacked(parcel, arrayData, length);
}

binder_status_t AParcel_writeUint64Array(AParcel* parcel, const uint64_t* arrayData,
                                         int32_t length) {
    return writePacked(parcel, arrayData, length);
}

binder_status_t AParcel_writeFloatArray(AParcel* parcel, const float* arrayData, int32_t length) {
    return writePacked(parcel, arrayData, length);
}

binder_status_t AParcel_writeDoubleArray(AParcel* parcel, const double* arrayData, int32_t length) {
    return writePacked(parcel, arrayData, length);
}

binder_status_t AParcel_writeByteArray(AParcel* parcel, const int8_t* arrayData, int32_t length) {
    return writePacked(parcel, arrayData, length);
}

// Characters are not packed: one int32 each.
binder_status_t AParcel_writeCharArray(AParcel* parcel, const char16_t* arrayData, int32_t length) {
    binder_status_t status = writeArraySize(parcel, arrayData == nullptr, length);
    if (status != STATUS_OK || length <= 0) return status;
    for (int32_t i = 0; i < length; i++) {
        status = AParcel_writeChar(parcel, arrayData[i]);
        if (status != STATUS_OK) return status;
    }
    return STATUS_OK;
}

binder_status_t AParcel_writeBoolArray(AParcel* parcel, const void* arrayData, int32_t length,
                                       AParcel_boolArrayGetter getter) {
    binder_status_t status = writeArraySize(parcel, arrayData == nullptr, length);
    if (status != STATUS_OK || length <= 0) return status;
    for (int32_t i = 0; i < length; i++) {
        status = AParcel_writeBool(parcel, getter(arrayData, static_cast<size_t>(i)));
        if (status != STATUS_OK) return status;
    }
    return STATUS_OK;
}

binder_status_t AParcel_readInt32Array(const AParcel* parcel, void* arrayData,
                                       AParcel_int32ArrayAllocator allocator) {
    return readPacked(parcel, arrayData, allocator);
}

binder_status_t AParcel_readUint32Array(const AParcel* parcel, void* arrayData,
                                        AParcel_uint32ArrayAllocator allocator) {
    return readPacked(parcel, arrayData, allocator);
}

binder_status_t AParcel_readInt64Array(const AParcel* parcel, void* arrayData,
                                       AParcel_int64ArrayAllocator allocator) {
    return readPacked(parcel, arrayData, allocator);
}

binder_status_t AParcel_readUint64Array(const AParcel* parcel, void* arrayData,
                                        AParcel_uint64ArrayAllocator allocator) {
    return readPacked(parcel, arrayData, allocator);
}

binder_status_t AParcel_readFloatArray(const AParcel* parcel, void* arrayData,
                                       AParcel_floatArrayAllocator allocator) {
    return readPacked(parcel, arrayData, allocator);
}

binder_status_t AParcel_readDoubleArray(const AParcel* parcel, void* arrayData,
                                        AParcel_doubleArrayAllocator allocator) {
    return readPacked(parcel, arrayData, allocator);
}

binder_status_t AParcel_readByteArray(const AParcel* parcel, void* arrayData,
                                      AParcel_byteArrayAllocator allocator) {
    return readPacked(parcel, arrayData, allocator);
}

binder_status_t AParcel_readCharArray(const AParcel* parcel, void* arrayData,
                                      AParcel_charArrayAllocator allocator) {
    int32_t length = 0;
    binder_status_t status = readArraySize(parcel, &length);
    if (status != STATUS_OK) return status;
    char16_t* array = nullptr;
    if (!allocator(arrayData, length, &array)) return allocationFailure(length);
    if (length <= 0) return STATUS_OK;
    if (array == nullptr) return STATUS_NO_MEMORY;
    for (int32_t i = 0; i < length; i++) {
        status = AParcel_readChar(parcel, &array[i]);
        if (status != STATUS_OK) return status;
    }
    return STATUS_OK;
}

binder_status_t AParcel_readBoolArray(const AParcel* parcel, void* arrayData,
                                      AParcel_boolArrayAllocator allocator,
                                      AParcel_boolArraySetter setter) {
    int32_t length = 0;
    binder_status_t status = readArraySize(parcel, &length);
    if (status != STATUS_OK) return status;
    if (!allocator(arrayData, length)) return allocationFailure(length);
    for (int32_t i = 0; i < length; i++) {
        bool value = false;
        status = AParcel_readBool(parcel, &value);
        if (status != STATUS_OK) return status;
        setter(arrayData, static_cast<size_t>(i), value);
    }
    return STATUS_OK;
}

binder_status_t AParcel_writeStringArray(AParcel* parcel, const void* arrayData, int32_t length,
                                         AParcel_stringArrayElementGetter getter) {
    binder_status_t status = writeArraySize(parcel, arrayData == nullptr, length);
    if (status != STATUS_OK || length <= 0) return status;
    for (int32_t i = 0; i < length; i++) {
        int32_t elementLength = 0;
        const char* element = getter(arrayData, static_cast<size_t>(i), &elementLength);
        if (element == nullptr && elementLength != -1) return STATUS_BAD_VALUE;
        status = AParcel_writeString(parcel, element, elementLength);
        if (status != STATUS_OK) return status;
    }
    return STATUS_OK;
}

namespace {

struct StringElement {
    void* arrayData;
    size_t index;
    AParcel_stringArrayElementAllocator allocator;
};

bool stringElementAllocator(void* data, int32_t length, char** buffer) {
    StringElement* element = static_cast<StringElement*>(data);
    return element->allocator(element->arrayData, element->index, length, buffer);
}

}  // namespace

binder_status_t AParcel_readStringArray(const AParcel* parcel, void* arrayData,
                                        AParcel_stringArrayAllocator allocator,
                                        AParcel_stringArrayElementAllocator elementAllocator) {
    int32_t length = 0;
    binder_status_t status = readArraySize(parcel, &length);
    if (status != STATUS_OK) return status;
    if (!allocator(arrayData, length)) return allocationFailure(length);
    for (int32_t i = 0; i < length; i++) {
        StringElement element{arrayData, static_cast<size_t>(i), elementAllocator};
        status = AParcel_readString(parcel, &element, stringElementAllocator);
        if (status != STATUS_OK) return status;
    }
    return STATUS_OK;
}

binder_status_t AParcel_writeParcelableArray(AParcel* parcel, const void* arrayData, int32_t length,
                                             AParcel_writeParcelableElement elementWriter) {
    binder_status_t status = writeArraySize(parcel, arrayData == nullptr, length);
    if (status != STATUS_OK || length <= 0) return status;
    for (int32_t i = 0; i < length; i++) {
        status = elementWriter(parcel, arrayData, static_cast<size_t>(i));
        if (status != STATUS_OK) return status;
    }
    return STATUS_OK;
}

binder_status_t AParcel_readParcelableArray(const AParcel* parcel, void* arrayData,
                                            AParcel_parcelableArrayAllocator allocator,
                                            AParcel_readParcelableElement elementReader) {
    int32_t length = 0;
    binder_status_t status = readArraySize(parcel, &length);
    if (status != STATUS_OK) return status;
    if (!allocator(arrayData, length)) return allocationFailure(length);
    for (int32_t i = 0; i < length; i++) {
        status = elementReader(parcel, arrayData, static_cast<size_t>(i));
        if (status != STATUS_OK) return status;
    }
    return STATUS_OK;
}
