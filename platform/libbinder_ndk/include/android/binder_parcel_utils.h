#pragma once

#include <android/binder_auto_utils.h>
#include <android/binder_interface_utils.h>
#include <android/binder_parcel.h>
#include <stdint.h>

#include <concepts>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

namespace ndk {

// ---- type classification ------------------------------------------------------------------

namespace internal {

template <typename T, template <typename...> class Tmpl>
inline constexpr bool is_specialization_v = false;
template <template <typename...> class Tmpl, typename... Args>
inline constexpr bool is_specialization_v<Tmpl<Args...>, Tmpl> = true;

// Generated parcelables and unions have these two members.
template <typename T>
concept Parcelable = requires(T t, const T ct, AParcel* out, const AParcel* in) {
    { t.readFromParcel(in) } -> std::same_as<binder_status_t>;
    { ct.writeToParcel(out) } -> std::same_as<binder_status_t>;
};

// A std::shared_ptr to a generated interface.
template <typename T>
inline constexpr bool is_interface_v = false;
template <typename I>
inline constexpr bool is_interface_v<std::shared_ptr<I>> = std::is_base_of_v<ICInterface, I>;

// Element types that the C API moves as one contiguous buffer.
template <typename T>
inline constexpr bool is_packed_v =
        std::is_same_v<T, int32_t> || std::is_same_v<T, uint32_t> || std::is_same_v<T, int64_t> ||
        std::is_same_v<T, uint64_t> || std::is_same_v<T, float> || std::is_same_v<T, double> ||
        std::is_same_v<T, char16_t> || std::is_same_v<T, int8_t> || std::is_same_v<T, uint8_t>;

template <typename T>
struct PackedArray;
template <>
struct PackedArray<int32_t> {
    using Wire = int32_t;
    static constexpr auto write = AParcel_writeInt32Array;
    static constexpr auto read = AParcel_readInt32Array;
};
template <>
struct PackedArray<uint32_t> {
    using Wire = uint32_t;
    static constexpr auto write = AParcel_writeUint32Array;
    static constexpr auto read = AParcel_readUint32Array;
};
template <>
struct PackedArray<int64_t> {
    using Wire = int64_t;
    static constexpr auto write = AParcel_writeInt64Array;
    static constexpr auto read = AParcel_readInt64Array;
};
template <>
struct PackedArray<uint64_t> {
    using Wire = uint64_t;
    static constexpr auto write = AParcel_writeUint64Array;
    static constexpr auto read = AParcel_readUint64Array;
};
template <>
struct PackedArray<float> {
    using Wire = float;
    static constexpr auto write = AParcel_writeFloatArray;
    static constexpr auto read = AParcel_readFloatArray;
};
template <>
struct PackedArray<double> {
    using Wire = double;
    static constexpr auto write = AParcel_writeDoubleArray;
    static constexpr auto read = AParcel_readDoubleArray;
};
template <>
struct PackedArray<char16_t> {
    using Wire = char16_t;
    static constexpr auto write = AParcel_writeCharArray;
    static constexpr auto read = AParcel_readCharArray;
};
template <>
struct PackedArray<int8_t> {
    using Wire = int8_t;
    static constexpr auto write = AParcel_writeByteArray;
    static constexpr auto read = AParcel_readByteArray;
};
template <>
struct PackedArray<uint8_t> : PackedArray<int8_t> {};

// Enums travel as their backing type.
template <typename T>
struct WireOf {
    using type = T;
};
template <typename T>
requires std::is_enum_v<T>
struct WireOf<T> {
    using type = std::underlying_type_t<T>;
};
template <typename T>
using wire_t = typename WireOf<T>::type;

}  // namespace internal

// ---- allocators the C API calls back into -------------------------------------------------

template <typename T, typename Wire = T>
static inline bool AParcel_stdVectorAllocator(void* vectorData, int32_t length, Wire** outBuffer) {
    if (length < 0) return false;
    std::vector<T>* vec = static_cast<std::vector<T>*>(vectorData);
    vec->resize(static_cast<size_t>(length));
    *outBuffer = reinterpret_cast<Wire*>(vec->data());
    return true;
}

template <typename T, typename Wire = T>
static inline bool AParcel_nullableStdVectorAllocator(void* vectorData, int32_t length,
                                                      Wire** outBuffer) {
    std::optional<std::vector<T>>* vec = static_cast<std::optional<std::vector<T>>*>(vectorData);
    if (length < 0) {
        *vec = std::nullopt;
        return true;
    }
    *vec = std::optional<std::vector<T>>(std::vector<T>{});
    (*vec)->resize(static_cast<size_t>(length));
    *outBuffer = reinterpret_cast<Wire*>((*vec)->data());
    return true;
}

// For element-wise arrays: only sizes the vector.
template <typename T>
static inline bool AParcel_stdVectorExternalAllocator(void* vectorData, int32_t length) {
    if (length < 0) return false;
    std::vector<T>* vec = static_cast<std::vector<T>*>(vectorData);
    vec->resize(static_cast<size_t>(length));
    return true;
}

template <typename T>
static inline bool AParcel_nullableStdVectorExternalAllocator(void* vectorData, int32_t length) {
    std::optional<std::vector<T>>* vec = static_cast<std::optional<std::vector<T>>*>(vectorData);
    if (length < 0) {
        *vec = std::nullopt;
        return true;
    }
    *vec = std::optional<std::vector<T>>(std::vector<T>{});
    (*vec)->resize(static_cast<size_t>(length));
    return true;
}

template <typename T>
static inline T AParcel_stdVectorGetter(const void* vectorData, size_t index) {
    const std::vector<T>* vec = static_cast<const std::vector<T>*>(vectorData);
    return (*vec)[index];
}

template <typename T>
static inline void AParcel_stdVectorSetter(void* vectorData, size_t index, T value) {
    std::vector<T>* vec = static_cast<std::vector<T>*>(vectorData);
    (*vec)[index] = value;
}

template <typename T>
static inline T AParcel_nullableStdVectorGetter(const void* vectorData, size_t index) {
    const std::optional<std::vector<T>>* vec =
            static_cast<const std::optional<std::vector<T>>*>(vectorData);
    return (**vec)[index];
}

template <typename T>
static inline void AParcel_nullableStdVectorSetter(void* vectorData, size_t index, T value) {
    std::optional<std::vector<T>>* vec = static_cast<std::optional<std::vector<T>>*>(vectorData);
    (**vec)[index] = value;
}

// The length counts the terminating NUL, so a real string has length >= 1.
static inline bool AParcel_stdStringAllocator(void* stringData, int32_t length, char** buffer) {
    if (length <= 0) return false;
    std::string* str = static_cast<std::string*>(stringData);
    str->resize(static_cast<size_t>(length) - 1);
    *buffer = &(*str)[0];
    return true;
}

static inline bool AParcel_nullableStdStringAllocator(void* stringData, int32_t length,
                                                      char** buffer) {
    std::optional<std::string>* str = static_cast<std::optional<std::string>*>(stringData);
    if (length < 0) {
        *str = std::nullopt;
        return true;
    }
    if (length == 0) return false;
    *str = std::optional<std::string>(std::string{});
    (*str)->resize(static_cast<size_t>(length) - 1);
    *buffer = &(**str)[0];
    return true;
}

// ---- strong binders and file descriptors --------------------------------------------------

static inline binder_status_t AParcel_writeRequiredStrongBinder(AParcel* parcel,
                                                                const SpAIBinder& binder) {
    if (binder.get() == nullptr) return STATUS_UNEXPECTED_NULL;
    return AParcel_writeStrongBinder(parcel, binder.get());
}

static inline binder_status_t AParcel_readRequiredStrongBinder(const AParcel* parcel,
                                                               SpAIBinder* binder) {
    AIBinder* readBinder = nullptr;
    binder_status_t status = AParcel_readStrongBinder(parcel, &readBinder);
    if (status != STATUS_OK) return status;
    if (readBinder == nullptr) return STATUS_UNEXPECTED_NULL;
    binder->set(readBinder);
    return STATUS_OK;
}

static inline binder_status_t AParcel_writeNullableStrongBinder(AParcel* parcel,
                                                                const SpAIBinder& binder) {
    return AParcel_writeStrongBinder(parcel, binder.get());
}

static inline binder_status_t AParcel_readNullableStrongBinder(const AParcel* parcel,
                                                               SpAIBinder* binder) {
    AIBinder* readBinder = nullptr;
    binder_status_t status = AParcel_readStrongBinder(parcel, &readBinder);
    if (status == STATUS_OK) binder->set(readBinder);
    return status;
}

static inline binder_status_t AParcel_writeRequiredParcelFileDescriptor(
        AParcel* parcel, const ScopedFileDescriptor& fd) {
    if (fd.get() < 0) return STATUS_UNEXPECTED_NULL;
    return AParcel_writeParcelFileDescriptor(parcel, fd.get());
}

static inline binder_status_t AParcel_readRequiredParcelFileDescriptor(const AParcel* parcel,
                                                                       ScopedFileDescriptor* fd) {
    int readFd = -1;
    binder_status_t status = AParcel_readParcelFileDescriptor(parcel, &readFd);
    if (status != STATUS_OK) return status;
    if (readFd < 0) return STATUS_UNEXPECTED_NULL;
    fd->set(readFd);
    return STATUS_OK;
}

static inline binder_status_t AParcel_writeNullableParcelFileDescriptor(
        AParcel* parcel, const ScopedFileDescriptor& fd) {
    return AParcel_writeParcelFileDescriptor(parcel, fd.get());
}

static inline binder_status_t AParcel_readNullableParcelFileDescriptor(const AParcel* parcel,
                                                                       ScopedFileDescriptor* fd) {
    int readFd = -1;
    binder_status_t status = AParcel_readParcelFileDescriptor(parcel, &readFd);
    if (status == STATUS_OK) fd->set(readFd);
    return status;
}

// ---- strings ------------------------------------------------------------------------------

static inline binder_status_t AParcel_writeString(AParcel* parcel, const std::string& str) {
    return AParcel_writeString(parcel, str.c_str(), static_cast<int32_t>(str.size()));
}

static inline binder_status_t AParcel_readString(const AParcel* parcel, std::string* str) {
    return AParcel_readString(parcel, static_cast<void*>(str), AParcel_stdStringAllocator);
}

static inline binder_status_t AParcel_writeString(AParcel* parcel,
                                                  const std::optional<std::string>& str) {
    if (!str) return AParcel_writeString(parcel, nullptr, -1);
    return AParcel_writeString(parcel, str->c_str(), static_cast<int32_t>(str->size()));
}

static inline binder_status_t AParcel_readString(const AParcel* parcel,
                                                 std::optional<std::string>* str) {
    return AParcel_readString(parcel, static_cast<void*>(str), AParcel_nullableStdStringAllocator);
}

// ---- parcelables --------------------------------------------------------------------------

// A present parcelable is preceded by int32 1; int32 0 stands for null.
template <typename P>
static inline binder_status_t AParcel_writeParcelable(AParcel* parcel, const P& p) {
    binder_status_t status = AParcel_writeInt32(parcel, 1);
    if (status != STATUS_OK) return status;
    return p.writeToParcel(parcel);
}

template <typename P>
static inline binder_status_t AParcel_readParcelable(const AParcel* parcel, P* p) {
    int32_t present = 0;
    binder_status_t status = AParcel_readInt32(parcel, &present);
    if (status != STATUS_OK) return status;
    if (present == 0) return STATUS_UNEXPECTED_NULL;
    return p->readFromParcel(parcel);
}

template <typename P>
static inline binder_status_t AParcel_writeNullableParcelable(AParcel* parcel,
                                                              const std::optional<P>& p) {
    if (!p) return AParcel_writeInt32(parcel, 0);
    return AParcel_writeParcelable(parcel, *p);
}

template <typename P>
static inline binder_status_t AParcel_readNullableParcelable(const AParcel* parcel,
                                                             std::optional<P>* p) {
    int32_t present = 0;
    binder_status_t status = AParcel_readInt32(parcel, &present);
    if (status != STATUS_OK) return status;
    if (present == 0) {
        *p = std::nullopt;
        return STATUS_OK;
    }
    *p = std::optional<P>(P{});
    return (*p)->readFromParcel(parcel);
}

template <typename P>
static inline binder_status_t AParcel_writeNullableParcelable(AParcel* parcel,
                                                              const std::unique_ptr<P>& p) {
    if (!p) return AParcel_writeInt32(parcel, 0);
    return AParcel_writeParcelable(parcel, *p);
}

template <typename P>
static inline binder_status_t AParcel_readNullableParcelable(const AParcel* parcel,
                                                             std::unique_ptr<P>* p) {
    int32_t present = 0;
    binder_status_t status = AParcel_readInt32(parcel, &present);
    if (status != STATUS_OK) return status;
    if (present == 0) {
        p->reset();
        return STATUS_OK;
    }
    *p = std::make_unique<P>();
    return (*p)->readFromParcel(parcel);
}

// ---- generic single values ----------------------------------------------------------------

template <typename T>
static inline binder_status_t AParcel_writeData(AParcel* parcel, const T& value);
template <typename T>
static inline binder_status_t AParcel_writeNullableData(AParcel* parcel, const T& value);
template <typename T>
static inline binder_status_t AParcel_readData(const AParcel* parcel, T* value);
template <typename T>
static inline binder_status_t AParcel_readNullableData(const AParcel* parcel, T* value);

// ---- vectors ------------------------------------------------------------------------------

template <typename T>
static inline binder_status_t AParcel_writeStdVectorElement(AParcel* parcel, const void* vectorData,
                                                            size_t index) {
    const std::vector<T>* vec = static_cast<const std::vector<T>*>(vectorData);
    return AParcel_writeData(parcel, (*vec)[index]);
}

template <typename T>
static inline binder_status_t AParcel_readStdVectorElement(const AParcel* parcel, void* vectorData,
                                                           size_t index) {
    std::vector<T>* vec = static_cast<std::vector<T>*>(vectorData);
    return AParcel_readData(parcel, &(*vec)[index]);
}

template <typename T>
static inline binder_status_t AParcel_readNullableStdVectorElement(const AParcel* parcel,
                                                                   void* vectorData, size_t index) {
    std::optional<std::vector<T>>* vec = static_cast<std::optional<std::vector<T>>*>(vectorData);
    return AParcel_readData(parcel, &(**vec)[index]);
}

template <typename T>
static inline binder_status_t AParcel_writeVector(AParcel* parcel, const std::vector<T>& vec) {
    if (vec.size() > static_cast<size_t>(INT32_MAX)) return STATUS_BAD_VALUE;
    const int32_t size = static_cast<int32_t>(vec.size());
    using W = internal::wire_t<T>;
    if constexpr (std::is_same_v<T, bool>) {
        return AParcel_writeBoolArray(parcel, static_cast<const void*>(&vec), size,
                                      AParcel_stdVectorGetter<bool>);
    } else if constexpr (internal::is_packed_v<W>) {
        using Wire = typename internal::PackedArray<W>::Wire;
        return internal::PackedArray<W>::write(parcel, reinterpret_cast<const Wire*>(vec.data()),
                                               size);
    } else {
        return AParcel_writeParcelableArray(parcel, static_cast<const void*>(&vec), size,
                                            AParcel_writeStdVectorElement<T>);
    }
}

template <typename T>
static inline binder_status_t AParcel_writeVector(AParcel* parcel,
                                                  const std::optional<std::vector<T>>& vec) {
    if (!vec) return AParcel_writeInt32(parcel, -1);
    return AParcel_writeVector(parcel, *vec);
}

template <typename T>
static inline binder_status_t AParcel_readVector(const AParcel* parcel, std::vector<T>* vec) {
    using W = internal::wire_t<T>;
    void* data = static_cast<void*>(vec);
    if constexpr (std::is_same_v<T, bool>) {
        return AParcel_readBoolArray(parcel, data, AParcel_stdVectorExternalAllocator<bool>,
                                     AParcel_stdVectorSetter<bool>);
    } else if constexpr (internal::is_packed_v<W>) {
        using Wire = typename internal::PackedArray<W>::Wire;
        return internal::PackedArray<W>::read(parcel, data, AParcel_stdVectorAllocator<T, Wire>);
    } else {
        return AParcel_readParcelableArray(parcel, data, AParcel_stdVectorExternalAllocator<T>,
                                           AParcel_readStdVectorElement<T>);
    }
}

template <typename T>
static inline binder_status_t AParcel_readVector(const AParcel* parcel,
                                                 std::optional<std::vector<T>>* vec) {
    using W = internal::wire_t<T>;
    void* data = static_cast<void*>(vec);
    if constexpr (std::is_same_v<T, bool>) {
        return AParcel_readBoolArray(parcel, data, AParcel_nullableStdVectorExternalAllocator<bool>,
                                     AParcel_nullableStdVectorSetter<bool>);
    } else if constexpr (internal::is_packed_v<W>) {
        using Wire = typename internal::PackedArray<W>::Wire;
        return internal::PackedArray<W>::read(parcel, data,
                                              AParcel_nullableStdVectorAllocator<T, Wire>);
    } else {
        return AParcel_readParcelableArray(parcel, data,
                                           AParcel_nullableStdVectorExternalAllocator<T>,
                                           AParcel_readNullableStdVectorElement<T>);
    }
}

// For out-arrays: the caller sends only the size it expects back.
template <typename T>
static inline binder_status_t AParcel_writeVectorSize(AParcel* parcel, const std::vector<T>& vec) {
    if (vec.size() > static_cast<size_t>(INT32_MAX)) return STATUS_BAD_VALUE;
    return AParcel_writeInt32(parcel, static_cast<int32_t>(vec.size()));
}

template <typename T>
static inline binder_status_t AParcel_writeVectorSize(AParcel* parcel,
                                                      const std::optional<std::vector<T>>& vec) {
    if (!vec) return AParcel_writeInt32(parcel, -1);
    return AParcel_writeVectorSize(parcel, *vec);
}

template <typename T>
static inline binder_status_t AParcel_resizeVector(const AParcel* parcel, std::vector<T>* vec) {
    int32_t size = 0;
    binder_status_t err = AParcel_readInt32(parcel, &size);
    if (err != STATUS_OK) return err;
    if (size < 0) return STATUS_UNEXPECTED_NULL;
    if (size > 1000000) return STATUS_NO_MEMORY;
    vec->resize(static_cast<size_t>(size));
    return STATUS_OK;
}

template <typename T>
static inline binder_status_t AParcel_resizeVector(const AParcel* parcel,
                                                   std::optional<std::vector<T>>* vec) {
    int32_t size = 0;
    binder_status_t err = AParcel_readInt32(parcel, &size);
    if (err != STATUS_OK) return err;
    if (size < -1) return STATUS_BAD_VALUE;
    if (size == -1) {
        *vec = std::nullopt;
        return STATUS_OK;
    }
    if (size > 1000000) return STATUS_NO_MEMORY;
    *vec = std::optional<std::vector<T>>(std::vector<T>{});
    (*vec)->resize(static_cast<size_t>(size));
    return STATUS_OK;
}

// ---- generic single values: definitions ---------------------------------------------------

template <typename T>
static inline binder_status_t AParcel_writeData(AParcel* parcel, const T& value) {
    if constexpr (std::is_enum_v<T>) {
        return AParcel_writeData(parcel, static_cast<std::underlying_type_t<T>>(value));
    } else if constexpr (std::is_same_v<T, bool>) {
        return AParcel_writeBool(parcel, value);
    } else if constexpr (std::is_same_v<T, int8_t> || std::is_same_v<T, uint8_t>) {
        return AParcel_writeByte(parcel, static_cast<int8_t>(value));
    } else if constexpr (std::is_same_v<T, char16_t>) {
        return AParcel_writeChar(parcel, value);
    } else if constexpr (std::is_same_v<T, int32_t>) {
        return AParcel_writeInt32(parcel, value);
    } else if constexpr (std::is_same_v<T, uint32_t>) {
        return AParcel_writeUint32(parcel, value);
    } else if constexpr (std::is_same_v<T, int64_t>) {
        return AParcel_writeInt64(parcel, value);
    } else if constexpr (std::is_same_v<T, uint64_t>) {
        return AParcel_writeUint64(parcel, value);
    } else if constexpr (std::is_same_v<T, float>) {
        return AParcel_writeFloat(parcel, value);
    } else if constexpr (std::is_same_v<T, double>) {
        return AParcel_writeDouble(parcel, value);
    } else if constexpr (std::is_same_v<T, std::string>) {
        return AParcel_writeString(parcel, value);
    } else if constexpr (std::is_same_v<T, SpAIBinder>) {
        return AParcel_writeRequiredStrongBinder(parcel, value);
    } else if constexpr (std::is_same_v<T, ScopedFileDescriptor>) {
        return AParcel_writeRequiredParcelFileDescriptor(parcel, value);
    } else if constexpr (internal::is_interface_v<T>) {
        return T::element_type::writeToParcel(parcel, value);
    } else if constexpr (internal::is_specialization_v<T, std::vector>) {
        return AParcel_writeVector(parcel, value);
    } else if constexpr (internal::is_specialization_v<T, std::optional> ||
                         internal::is_specialization_v<T, std::unique_ptr>) {
        return AParcel_writeNullableData(parcel, value);
    } else {
        static_assert(internal::Parcelable<T>, "type cannot be written to a parcel");
        return AParcel_writeParcelable(parcel, value);
    }
}

template <typename T>
static inline binder_status_t AParcel_writeNullableData(AParcel* parcel, const T& value) {
    if constexpr (std::is_same_v<T, SpAIBinder>) {
        return AParcel_writeNullableStrongBinder(parcel, value);
    } else if constexpr (std::is_same_v<T, ScopedFileDescriptor>) {
        return AParcel_writeNullableParcelFileDescriptor(parcel, value);
    } else if constexpr (internal::is_interface_v<T>) {
        return T::element_type::writeToParcel(parcel, value);
    } else if constexpr (std::is_same_v<T, std::optional<std::string>>) {
        return AParcel_writeString(parcel, value);
    } else if constexpr (internal::is_specialization_v<T, std::optional>) {
        using U = typename T::value_type;
        if constexpr (internal::is_specialization_v<U, std::vector>) {
            return AParcel_writeVector(parcel, value);
        } else {
            return AParcel_writeNullableParcelable(parcel, value);
        }
    } else if constexpr (internal::is_specialization_v<T, std::unique_ptr>) {
        return AParcel_writeNullableParcelable(parcel, value);
    } else {
        return AParcel_writeData(parcel, value);
    }
}

template <typename T>
static inline binder_status_t AParcel_readData(const AParcel* parcel, T* value) {
    if constexpr (std::is_enum_v<T>) {
        return AParcel_readData(parcel, reinterpret_cast<std::underlying_type_t<T>*>(value));
    } else if constexpr (std::is_same_v<T, bool>) {
        return AParcel_readBool(parcel, value);
    } else if constexpr (std::is_same_v<T, int8_t>) {
        return AParcel_readByte(parcel, value);
    } else if constexpr (std::is_same_v<T, uint8_t>) {
        return AParcel_readByte(parcel, reinterpret_cast<int8_t*>(value));
    } else if constexpr (std::is_same_v<T, char16_t>) {
        return AParcel_readChar(parcel, value);
    } else if constexpr (std::is_same_v<T, int32_t>) {
        return AParcel_readInt32(parcel, value);
    } else if constexpr (std::is_same_v<T, uint32_t>) {
        return AParcel_readUint32(parcel, value);
    } else if constexpr (std::is_same_v<T, int64_t>) {
        return AParcel_readInt64(parcel, value);
    } else if constexpr (std::is_same_v<T, uint64_t>) {
        return AParcel_readUint64(parcel, value);
    } else if constexpr (std::is_same_v<T, float>) {
        return AParcel_readFloat(parcel, value);
    } else if constexpr (std::is_same_v<T, double>) {
        return AParcel_readDouble(parcel, value);
    } else if constexpr (std::is_same_v<T, std::string>) {
        return AParcel_readString(parcel, value);
    } else if constexpr (std::is_same_v<T, SpAIBinder>) {
        return AParcel_readRequiredStrongBinder(parcel, value);
    } else if constexpr (std::is_same_v<T, ScopedFileDescriptor>) {
        return AParcel_readRequiredParcelFileDescriptor(parcel, value);
    } else if constexpr (internal::is_interface_v<T>) {
        return T::element_type::readFromParcel(parcel, value);
    } else if constexpr (internal::is_specialization_v<T, std::vector>) {
        return AParcel_readVector(parcel, value);
    } else if constexpr (internal::is_specialization_v<T, std::optional> ||
                         internal::is_specialization_v<T, std::unique_ptr>) {
        return AParcel_readNullableData(parcel, value);
    } else {
        static_assert(internal::Parcelable<T>, "type cannot be read from a parcel");
        return AParcel_readParcelable(parcel, value);
    }
}

template <typename T>
static inline binder_status_t AParcel_readNullableData(const AParcel* parcel, T* value) {
    if constexpr (std::is_same_v<T, SpAIBinder>) {
        return AParcel_readNullableStrongBinder(parcel, value);
    } else if constexpr (std::is_same_v<T, ScopedFileDescriptor>) {
        return AParcel_readNullableParcelFileDescriptor(parcel, value);
    } else if constexpr (internal::is_interface_v<T>) {
        return T::element_type::readFromParcel(parcel, value);
    } else if constexpr (std::is_same_v<T, std::optional<std::string>>) {
        return AParcel_readString(parcel, value);
    } else if constexpr (internal::is_specialization_v<T, std::optional>) {
        using U = typename T::value_type;
        if constexpr (internal::is_specialization_v<U, std::vector>) {
            return AParcel_readVector(parcel, value);
        } else {
            return AParcel_readNullableParcelable(parcel, value);
        }
    } else if constexpr (internal::is_specialization_v<T, std::unique_ptr>) {
        return AParcel_readNullableParcelable(parcel, value);
    } else {
        return AParcel_readData(parcel, value);
    }
}

}  // namespace ndk
