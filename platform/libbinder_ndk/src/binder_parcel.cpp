#include <android/binder_parcel.h>
#include <android/binder_parcel_platform.h>
#include <fcntl.h>
#include <unistd.h>

#include <limits>

#include "AStatusImpl.h"
#include "BinderLog.h"
#include "Parcel.h"
#include "Unicode.h"

using abinder::pruneStatusT;

// ---- lifecycle and position ---------------------------------------------------------------

void AParcel_delete(AParcel* parcel) {
    delete parcel;
}

AParcel* AParcel_create(void) {
    return new AParcel(nullptr);
}

binder_status_t AParcel_setDataPosition(const AParcel* parcel, int32_t position) {
    if (position < 0) return STATUS_BAD_VALUE;
    parcel->setDataPosition(static_cast<size_t>(position));
    return STATUS_OK;
}

int32_t AParcel_getDataPosition(const AParcel* parcel) {
    return static_cast<int32_t>(parcel->dataPosition());
}

int32_t AParcel_getDataSize(const AParcel* parcel) {
    return static_cast<int32_t>(parcel->dataSize());
}

binder_status_t AParcel_reset(AParcel* parcel) {
    parcel->freeData();
    return STATUS_OK;
}

binder_status_t AParcel_appendFrom(const AParcel* from, AParcel* to, int32_t start, int32_t size) {
    if (start < 0 || size < 0) return STATUS_BAD_VALUE;
    return pruneStatusT(
            to->appendFrom(*from, static_cast<size_t>(start), static_cast<size_t>(size)));
}

binder_status_t AParcel_marshal(const AParcel* parcel, uint8_t* buffer, size_t start, size_t len) {
    if (!parcel->objectOffsets().empty()) return STATUS_INVALID_OPERATION;
    size_t end = 0;
    if (__builtin_add_overflow(start, len, &end) || end > parcel->dataSize()) {
        return STATUS_BAD_VALUE;
    }
    if (len > 0) memcpy(buffer, parcel->data() + start, len);
    return STATUS_OK;
}

binder_status_t AParcel_unmarshal(AParcel* parcel, const uint8_t* buffer, size_t len) {
    binder_status_t status = parcel->setData(buffer, len);
    if (status == STATUS_OK) parcel->setDataPosition(0);
    return status;
}

bool AParcel_getAllowFds(const AParcel* parcel) {
    return parcel->allowFds();
}

void AParcel_markSensitive(const AParcel* parcel) {
    parcel->markSensitive();
}

// ---- primitives ---------------------------------------------------------------------------

binder_status_t AParcel_writeInt32(AParcel* parcel, int32_t value) {
    return parcel->writeAligned(value);
}

binder_status_t AParcel_writeUint32(AParcel* parcel, uint32_t value) {
    return parcel->writeAligned(value);
}

binder_status_t AParcel_writeInt64(AParcel* parcel, int64_t value) {
    return parcel->writeAligned(value);
}

binder_status_t AParcel_writeUint64(AParcel* parcel, uint64_t value) {
    return parcel->writeAligned(value);
}

binder_status_t AParcel_writeFloat(AParcel* parcel, float value) {
    return parcel->writeAligned(value);
}

binder_status_t AParcel_writeDouble(AParcel* parcel, double value) {
    return parcel->writeAligned(value);
}

binder_status_t AParcel_writeBool(AParcel* parcel, bool value) {
    return parcel->writeAligned(static_cast<int32_t>(value));
}

binder_status_t AParcel_writeChar(AParcel* parcel, char16_t value) {
    return parcel->writeAligned(static_cast<int32_t>(value));
}

binder_status_t AParcel_writeByte(AParcel* parcel, int8_t value) {
    return parcel->writeAligned(static_cast<int32_t>(value));
}

binder_status_t AParcel_readInt32(const AParcel* parcel, int32_t* value) {
    return parcel->readAligned(value);
}

binder_status_t AParcel_readUint32(const AParcel* parcel, uint32_t* value) {
    return parcel->readAligned(value);
}

binder_status_t AParcel_readInt64(const AParcel* parcel, int64_t* value) {
    return parcel->readAligned(value);
}

binder_status_t AParcel_readUint64(const AParcel* parcel, uint64_t* value) {
    return parcel->readAligned(value);
}

binder_status_t AParcel_readFloat(const AParcel* parcel, float* value) {
    return parcel->readAligned(value);
}

binder_status_t AParcel_readDouble(const AParcel* parcel, double* value) {
    return parcel->readAligned(value);
}

binder_status_t AParcel_readBool(const AParcel* parcel, bool* value) {
    int32_t raw = 0;
    binder_status_t status = parcel->readAligned(&raw);
    if (status == STATUS_OK) *value = raw != 0;
    return status;
}

binder_status_t AParcel_readChar(const AParcel* parcel, char16_t* value) {
    int32_t raw = 0;
    binder_status_t status = parcel->readAligned(&raw);
    if (status == STATUS_OK) *value = static_cast<char16_t>(raw);
    return status;
}

binder_status_t AParcel_readByte(const AParcel* parcel, int8_t* value) {
    int32_t raw = 0;
    binder_status_t status = parcel->readAligned(&raw);
    if (status == STATUS_OK) *value = static_cast<int8_t>(raw);
    return status;
}

// ---- binders and file descriptors ---------------------------------------------------------

binder_status_t AParcel_writeStrongBinder(AParcel* parcel, AIBinder* binder) {
    return pruneStatusT(parcel->writeStrongBinder(binder));
}

binder_status_t AParcel_readStrongBinder(const AParcel* parcel, AIBinder** binder) {
    AIBinder* result = nullptr;
    binder_status_t status = parcel->readStrongBinder(&result);
    if (status == STATUS_OK) *binder = result;
    return pruneStatusT(status);
}

// A ParcelFileDescriptor: int32 1 (present), int32 0 (no comm channel), then a descriptor object
// owning a duplicate; int32 0 alone for none.
binder_status_t AParcel_writeParcelFileDescriptor(AParcel* parcel, int fd) {
    if (fd < 0) {
        if (fd != -1) return STATUS_UNKNOWN_ERROR;
        return pruneStatusT(parcel->writeInt32(0));
    }
    if (!parcel->allowFds()) return STATUS_FDS_NOT_ALLOWED;
    binder_status_t status = parcel->writeInt32(1);
    if (status == STATUS_OK) status = parcel->writeInt32(0);
    if (status != STATUS_OK) return pruneStatusT(status);
    const int dup = fcntl(fd, F_DUPFD_CLOEXEC, 0);
    if (dup < 0) return STATUS_BAD_VALUE;
    status = parcel->writeFileDescriptor(dup, true);
    if (status != STATUS_OK) close(dup);
    return pruneStatusT(status);
}

binder_status_t AParcel_readParcelFileDescriptor(const AParcel* parcel, int* fd) {
    int32_t present = 0;
    binder_status_t status = parcel->readInt32(&present);
    if (status != STATUS_OK) return pruneStatusT(status);
    if (present == 0) {
        *fd = -1;
        return STATUS_OK;
    }
    int32_t hasComm = 0;
    status = parcel->readInt32(&hasComm);
    if (status != STATUS_OK) return pruneStatusT(status);
    int raw = -1;
    status = parcel->readFileDescriptor(&raw);
    if (status != STATUS_OK) return pruneStatusT(status);
    if (hasComm != 0) {
        int comm = -1;
        (void)parcel->readFileDescriptor(&comm);
    }
    const int dup = fcntl(raw, F_DUPFD_CLOEXEC, 0);
    if (dup < 0) return STATUS_BAD_VALUE;
    *fd = dup;
    return STATUS_OK;
}

// ---- strings ------------------------------------------------------------------------------

binder_status_t AParcel_writeString(AParcel* parcel, const char* string, int32_t length) {
    if (string == nullptr) {
        if (length != -1) {
            BINDER_LOGW("AParcel_writeString: null string must be used with length -1.");
            return STATUS_BAD_VALUE;
        }
        return pruneStatusT(parcel->writeInt32(-1));
    }
    if (length < 0) {
        BINDER_LOGW("AParcel_writeString: Negative string length: %d", length);
        return STATUS_BAD_VALUE;
    }

    const uint8_t* str8 = reinterpret_cast<const uint8_t*>(string);
    const ssize_t len16 = abinder::utf8ToUtf16Length(str8, static_cast<size_t>(length));
    if (len16 < 0 || len16 >= std::numeric_limits<int32_t>::max()) {
        BINDER_LOGW("AParcel_writeString: Invalid string length: %zd", len16);
        return STATUS_BAD_VALUE;
    }
    binder_status_t status = parcel->writeInt32(static_cast<int32_t>(len16));
    if (status != STATUS_OK) return pruneStatusT(status);
    void* str16 = parcel->writeInplace((static_cast<size_t>(len16) + 1) * sizeof(char16_t));
    if (str16 == nullptr) return STATUS_NO_MEMORY;
    abinder::utf8ToUtf16(str8, static_cast<size_t>(length), static_cast<char16_t*>(str16),
                         static_cast<size_t>(len16) + 1);
    return STATUS_OK;
}

binder_status_t AParcel_readString(const AParcel* parcel, void* stringData,
                                   AParcel_stringAllocator allocator) {
    size_t len16 = 0;
    const char16_t* str16 = parcel->readString16Inplace(&len16);
    if (str16 == nullptr) {
        if (allocator(stringData, -1, nullptr)) return STATUS_OK;
        return STATUS_UNEXPECTED_NULL;
    }

    ssize_t len8;
    if (len16 == 0) {
        len8 = 1;
    } else {
        len8 = abinder::utf16ToUtf8Length(str16, len16) + 1;
    }
    if (len8 <= 0 || len8 > std::numeric_limits<int32_t>::max()) {
        BINDER_LOGW("AParcel_readString: Invalid string length: %zd", len8);
        return STATUS_BAD_VALUE;
    }
    char* str8 = nullptr;
    if (!allocator(stringData, static_cast<int32_t>(len8), &str8) || str8 == nullptr) {
        BINDER_LOGW("AParcel_readString: AParcel_stringAllocator failed to allocate.");
        return STATUS_NO_MEMORY;
    }
    abinder::utf16ToUtf8(str16, len16, str8, static_cast<size_t>(len8));
    return STATUS_OK;
}

// ---- status headers -----------------------------------------------------------------------

binder_status_t AParcel_writeStatusHeader(AParcel* parcel, const AStatus* status) {
    // A failed transaction has no header: its status becomes the transaction's result.
    if (status->exception == EX_TRANSACTION_FAILED) return pruneStatusT(status->errorCode);

    binder_status_t err = parcel->writeInt32(status->exception);
    if (err != STATUS_OK || status->exception == EX_NONE) return pruneStatusT(err);
    const std::u16string message = abinder::utf8ToUtf16String(status->message);
    err = parcel->writeString16(message.data(), message.size());
    if (err != STATUS_OK) return pruneStatusT(err);
    err = parcel->writeInt32(0);  // empty remote stack trace
    if (err != STATUS_OK) return pruneStatusT(err);
    if (status->exception == EX_SERVICE_SPECIFIC) {
        err = parcel->writeInt32(status->errorCode);
    } else if (status->exception == EX_PARCELABLE) {
        err = parcel->writeInt32(0);  // no parcelable payload
    }
    return pruneStatusT(err);
}

namespace {

constexpr int32_t kExHasReplyHeader = -128;

// Skips a block that starts with its own int32 size (the size counts itself).
binder_status_t skipSizedBlock(const AParcel* parcel, bool skipZero) {
    const size_t start = parcel->dataPosition();
    const size_t avail = parcel->dataAvail();
    int32_t size = 0;
    binder_status_t status = parcel->readInt32(&size);
    if (status != STATUS_OK) return status;
    // Every writer pads to words; an odd size from a peer would leave later reads misaligned.
    if (size < 0 || static_cast<size_t>(size) > avail || size % 4 != 0) return STATUS_UNKNOWN_ERROR;
    if (size != 0 || skipZero) parcel->setDataPosition(start + static_cast<size_t>(size));
    return STATUS_OK;
}

binder_status_t readStatus(const AParcel* parcel, AStatus* out) {
    binder_status_t status = parcel->readInt32(&out->exception);
    if (status != STATUS_OK) return status;

    if (out->exception == kExHasReplyHeader) {
        status = skipSizedBlock(parcel, true);
        if (status != STATUS_OK) return status;
        out->exception = EX_NONE;
    }
    if (out->exception == EX_NONE) return STATUS_OK;

    // The message may be null (-1), which reads as empty.
    std::string message;
    int32_t size = 0;
    const size_t messageStart = parcel->dataPosition();
    status = parcel->readInt32(&size);
    if (status != STATUS_OK) return status;
    if (size >= 0) {
        parcel->setDataPosition(messageStart);
        size_t len = 0;
        const char16_t* str = parcel->readString16Inplace(&len);
        if (str == nullptr) return STATUS_UNEXPECTED_NULL;
        message = abinder::utf16ToUtf8String(std::u16string_view(str, len));
    }

    status = skipSizedBlock(parcel, false);  // remote stack trace
    if (status != STATUS_OK) return status;

    if (out->exception == EX_SERVICE_SPECIFIC) {
        status = parcel->readInt32(&out->errorCode);
    } else if (out->exception == EX_PARCELABLE) {
        status = skipSizedBlock(parcel, true);
    }
    if (status != STATUS_OK) return status;
    out->message = std::move(message);
    return STATUS_OK;
}

}  // namespace

binder_status_t AParcel_readStatusHeader(const AParcel* parcel, AStatus** status) {
    AStatus result;
    const binder_status_t err = pruneStatusT(readStatus(parcel, &result));
    if (err == STATUS_OK) *status = new AStatus(std::move(result));
    return err;
}
