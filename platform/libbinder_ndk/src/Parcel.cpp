#include "Parcel.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <limits>
#include <utility>

#include "ABBinder.h"
#include "ABpBinder.h"
#include "BinderLog.h"
#include "Stability.h"
#include "ThreadState.h"
#include "Transport.h"
#include "Unicode.h"

using abinder::ABBinder;
using abinder::ABpBinder;

namespace {

constexpr size_t kInitialCapacity = 256;

constexpr size_t padSize(size_t len) {
    return (len + 3) & ~size_t{3};
}

void zeroMemory(void* data, size_t len) {
    volatile uint8_t* p = static_cast<volatile uint8_t*>(data);
    while (len-- > 0) *p++ = 0;
}

}  // namespace

AParcel::AParcel(const AIBinder* binder) : mBinder(binder) {}

AParcel::~AParcel() {
    freeData();
}

void* AParcel::writeInplace(size_t len) {
    if (len > static_cast<size_t>(std::numeric_limits<int32_t>::max())) return nullptr;
    const size_t padded = padSize(len);
    if (mPos + padded < mPos) return nullptr;
    makeOwned();
    if (mPos + padded > mOwned.size() && !growTo(mPos + padded)) return nullptr;
    uint8_t* out = mOwned.data() + mPos;
    if (padded != len) memset(out + len, 0, padded - len);
    mPos += padded;
    return out;
}

const void* AParcel::readInplace(size_t len) const {
    if (len > std::numeric_limits<size_t>::max() - mPos) return nullptr;
    const size_t padded = padSize(len);
    if (padded < len || padded > dataAvail()) return nullptr;
    if (validateRead(mPos + padded) != STATUS_OK) return nullptr;
    const void* in = data() + mPos;
    mPos += padded;
    return in;
}

// Plain reads must not overlap an object: that would leak its pointers or handle.
binder_status_t AParcel::validateRead(size_t upperBound) const {
    for (binder_size_t offset : mObjects) {
        if (mPos < offset + sizeof(flat_binder_object) && upperBound > offset) {
            BINDER_LOGE("Attempt to read from protected data in Parcel %p", this);
            return STATUS_PERMISSION_DENIED;
        }
    }
    return STATUS_OK;
}

bool AParcel::growTo(size_t newSize) {
    if (newSize > mOwned.capacity()) {
        // Room for a typical call at the first write, then doubling: one allocation per parcel
        // in the common case instead of one per small write.
        const size_t capacity = std::max({newSize, mOwned.capacity() * 2, kInitialCapacity});
        if (mSensitive) {
            // Reallocate by hand so the old copy can be wiped.
            std::vector<uint8_t> bigger;
            bigger.reserve(capacity);
            bigger.assign(mOwned.begin(), mOwned.end());
            zeroMemory(mOwned.data(), mOwned.size());
            mOwned.swap(bigger);
        } else {
            mOwned.reserve(capacity);
        }
    }
    mOwned.resize(newSize);
    return true;
}

void AParcel::makeOwned() {
    if (mAdopted == nullptr) return;
    // The adopted buffer stays alive (and keeps the references it carries) until release.
    mOwned.assign(mAdopted, mAdopted + mAdoptedSize);
    mAdopted = nullptr;
    mAdoptedSize = 0;
}

void AParcel::dropHeld() {
    std::vector<AIBinder*> held;
    held.swap(mHeldBinders);
    for (AIBinder* binder : held) binder->refs()->decStrong();
    for (int fd : mOwnedFds) close(fd);
    mOwnedFds.clear();
}

void AParcel::freeData() {
    if (mSensitive) zeroMemory(mOwned.data(), mOwned.size());
    mOwned.clear();
    mOwned.shrink_to_fit();
    mObjects.clear();
    mPos = 0;
    dropHeld();
    mAdopted = nullptr;
    mAdoptedSize = 0;
    releaseAdopted();
    mTransport.reset();
}

void AParcel::releaseAdopted() {
    if (mReceived.release == nullptr || mTransport == nullptr) return;
    const Received received = std::exchange(mReceived, Received{});
    received.release(*mTransport, received.data, received.size, received.objects,
                     received.objectCount);
}

binder_status_t AParcel::setData(const uint8_t* buffer, size_t len) {
    if (len > static_cast<size_t>(std::numeric_limits<int32_t>::max())) return STATUS_BAD_VALUE;
    freeData();
    mOwned.assign(buffer, buffer + len);
    return STATUS_OK;
}

void AParcel::adopt(std::shared_ptr<abinder::Transport> transport, const uint8_t* data, size_t size,
                    const binder_size_t* objects, size_t objectCount, ReleaseFn release) {
    freeData();
    mTransport = std::move(transport);
    mAdopted = data;
    mAdoptedSize = size;
    mObjects.assign(objects, objects + objectCount);
    mReceived = {release, data, size, objects, objectCount};
    // An empty adopted buffer may come with a null pointer; keep data() non-null regardless.
    if (mAdopted == nullptr) mAdoptedSize = 0;
}

binder_status_t AParcel::writeString16(const char16_t* str, size_t len) {
    if (str == nullptr) return writeInt32(-1);
    if (len >= static_cast<size_t>(std::numeric_limits<int32_t>::max())) return STATUS_BAD_VALUE;
    binder_status_t status = writeInt32(static_cast<int32_t>(len));
    if (status != STATUS_OK) return status;
    const size_t bytes = len * sizeof(char16_t);
    uint8_t* out = static_cast<uint8_t*>(writeInplace(bytes + sizeof(char16_t)));
    if (out == nullptr) return STATUS_NO_MEMORY;
    memcpy(out, str, bytes);
    memset(out + bytes, 0, sizeof(char16_t));
    return STATUS_OK;
}

const char16_t* AParcel::readString16Inplace(size_t* outLen) const {
    int32_t size = 0;
    if (readInt32(&size) != STATUS_OK) return nullptr;
    if (size < 0 || size == std::numeric_limits<int32_t>::max()) return nullptr;
    *outLen = static_cast<size_t>(size);
    const size_t bytes = (static_cast<size_t>(size) + 1) * sizeof(char16_t);
    const char16_t* str = static_cast<const char16_t*>(readInplace(bytes));
    if (str == nullptr) return nullptr;
    char16_t terminator;
    memcpy(&terminator, reinterpret_cast<const uint8_t*>(str) + bytes - sizeof(char16_t),
           sizeof(terminator));
    if (terminator != 0) {
        BINDER_LOGE("readString16Inplace: string of length %d is not terminated", size);
        return nullptr;
    }
    return str;
}

binder_status_t AParcel::writeInterfaceToken(const std::u16string& descriptor) {
    const abinder::ThreadState& state = abinder::ThreadState::self();
    binder_status_t status = writeInt32(state.strictModePolicy | abinder::kStrictModePenaltyGather);
    if (status != STATUS_OK) return status;
    status = writeInt32(state.propagateWorkSource ? state.workSourceUid : -1);
    if (status != STATUS_OK) return status;
    status = writeInt32(abinder::kInterfaceHeader);
    if (status != STATUS_OK) return status;
    return writeString16(descriptor.data(), descriptor.size());
}

bool AParcel::enforceInterface(const std::u16string& descriptor) const {
    abinder::ThreadState& state = abinder::ThreadState::self();
    int32_t strictPolicy = 0;
    if (readInt32(&strictPolicy) != STATUS_OK) return false;
    state.strictModePolicy = (state.lastTransactionFlags & FLAG_ONEWAY) != 0 ? 0 : strictPolicy;
    int32_t workSource = 0;
    if (readInt32(&workSource) != STATUS_OK) return false;
    state.workSourceUid = workSource;
    int32_t header = 0;
    if (readInt32(&header) != STATUS_OK) return false;
    if (header != abinder::kInterfaceHeader) {
        BINDER_LOGE("Expecting header 0x%x but found 0x%x. Mixing copies of libbinder?",
                    static_cast<uint32_t>(abinder::kInterfaceHeader),
                    static_cast<uint32_t>(header));
        return false;
    }
    size_t len = 0;
    const char16_t* str = readString16Inplace(&len);
    if (str != nullptr && len == descriptor.size() &&
        memcmp(str, descriptor.data(), len * sizeof(char16_t)) == 0) {
        return true;
    }
    const std::string expected = abinder::utf16ToUtf8String(descriptor);
    const std::string actual =
            str != nullptr ? abinder::utf16ToUtf8String(std::u16string_view(str, len)) : "<null>";
    BINDER_LOGE("**** enforceInterface() expected '%s' but read '%s'", expected.c_str(),
                actual.c_str());
    return false;
}

binder_status_t AParcel::writeObject(const flat_binder_object& object, bool nullMetaData) {
    const size_t position = mPos;
    void* out = writeInplace(sizeof(object));
    if (out == nullptr) return STATUS_NO_MEMORY;
    memcpy(out, &object, sizeof(object));
    // Null objects are recognised by their zero pointers and stay out of the table.
    if (nullMetaData || object.binder != 0) mObjects.push_back(position);
    return STATUS_OK;
}

bool AParcel::readObject(flat_binder_object* object) const {
    const size_t position = mPos;
    if (sizeof(flat_binder_object) > dataAvail()) return false;
    // Objects sit at 4-byte boundaries only: copy rather than cast.
    memcpy(object, data() + position, sizeof(*object));
    mPos = position + sizeof(flat_binder_object);
    if (object->cookie == 0 && object->binder == 0) return true;
    if (std::find(mObjects.begin(), mObjects.end(), position) != mObjects.end()) return true;
    BINDER_LOGW(
            "Attempt to read object from Parcel %p at offset %zu that is not in the object "
            "list",
            this, position);
    return false;
}

binder_status_t AParcel::resolveBinder(const flat_binder_object& object, AIBinder** out) const {
    if (object.hdr.type == BINDER_TYPE_BINDER) {
        for (AIBinder* held : mHeldBinders) {
            if (reinterpret_cast<uintptr_t>(held) == object.cookie &&
                reinterpret_cast<uintptr_t>(held->refs()) == object.binder) {
                held->refs()->incStrong();
                *out = held;
                return STATUS_OK;
            }
        }
        if (mTransport != nullptr) {
            // A received buffer names one of our own objects, which the transport keeps alive
            // while the remote side references it.
            AIBinder* local = reinterpret_cast<AIBinder*>(static_cast<uintptr_t>(object.cookie));
            local->refs()->incStrong();
            *out = local;
            return STATUS_OK;
        }
        return STATUS_BAD_TYPE;
    }
    if (object.hdr.type == BINDER_TYPE_HANDLE) {
        for (AIBinder* held : mHeldBinders) {
            ABpBinder* proxy = held->asABpBinder();
            if (proxy != nullptr && proxy->handle() == object.handle) {
                held->refs()->incStrong();
                *out = held;
                return STATUS_OK;
            }
        }
        if (mTransport != nullptr) {
            *out = mTransport->proxyForHandle(object.handle);
            return *out != nullptr ? STATUS_OK : STATUS_BAD_TYPE;
        }
    }
    return STATUS_BAD_TYPE;
}

binder_status_t AParcel::writeStrongBinder(AIBinder* binder) {
    flat_binder_object object;
    memset(&object, 0, sizeof(object));
    object.flags = abinder::kDefaultSchedBits;
    if (binder == nullptr) {
        object.hdr.type = BINDER_TYPE_BINDER;
        binder_status_t status = writeObject(object, false);
        if (status != STATUS_OK) return status;
        return writeInt32(abinder::kStabilityUndeclared);
    }

    if (ABBinder* local = binder->asABBinder(); local != nullptr) {
        object.hdr.type = BINDER_TYPE_BINDER;
        object.flags = local->objectFlags();
        object.binder = reinterpret_cast<uintptr_t>(binder->refs());
        object.cookie = reinterpret_cast<uintptr_t>(binder);
        local->markParceled();
    } else {
        object.hdr.type = BINDER_TYPE_HANDLE;
        object.handle = binder->asABpBinder()->handle();
    }
    abinder::tryMarkCompilationUnit(binder);

    binder_status_t status = writeObject(object, false);
    if (status != STATUS_OK) return status;
    binder->refs()->incStrong();
    mHeldBinders.push_back(binder);
    return writeInt32(binder->stability());
}

binder_status_t AParcel::readStrongBinder(AIBinder** binder) const {
    flat_binder_object object;
    if (!readObject(&object)) return STATUS_BAD_TYPE;

    AIBinder* result = nullptr;
    const bool isNull =
            object.hdr.type == BINDER_TYPE_BINDER && object.cookie == 0 && object.binder == 0;
    if (!isNull) {
        binder_status_t status = resolveBinder(object, &result);
        if (status != STATUS_OK) return status;
    }

    int32_t stability = 0;
    binder_status_t status = readInt32(&stability);
    if (status == STATUS_OK) status = abinder::setStability(result, stability, true, false);
    if (status != STATUS_OK) {
        if (result != nullptr) result->refs()->decStrong();
        return status;
    }
    *binder = result;
    return STATUS_OK;
}

binder_status_t AParcel::writeFileDescriptor(int fd, bool takeOwnership) {
    if (!mAllowFds) return STATUS_FDS_NOT_ALLOWED;
    flat_binder_object object;
    memset(&object, 0, sizeof(object));
    object.hdr.type = BINDER_TYPE_FD;
    object.handle = static_cast<uint32_t>(fd);
    object.cookie = takeOwnership ? 1 : 0;
    binder_status_t status = writeObject(object, true);
    if (status != STATUS_OK) return status;
    if (takeOwnership) mOwnedFds.push_back(fd);
    return STATUS_OK;
}

binder_status_t AParcel::readFileDescriptor(int* fd) const {
    const size_t position = mPos;
    flat_binder_object object;
    if (!readObject(&object) || object.hdr.type != BINDER_TYPE_FD) return STATUS_BAD_TYPE;
    // Only descriptors this parcel really holds: an offset alone proves nothing in-process.
    const int value = static_cast<int>(object.handle);
    const bool held = mTransport != nullptr ||
                      std::find(mOwnedFds.begin(), mOwnedFds.end(), value) != mOwnedFds.end();
    if (!held || std::find(mObjects.begin(), mObjects.end(), position) == mObjects.end()) {
        return STATUS_BAD_TYPE;
    }
    *fd = value;
    return STATUS_OK;
}

binder_status_t AParcel::appendFrom(const AParcel& from, size_t start, size_t len) {
    if (len == 0) return STATUS_OK;
    if (len > static_cast<size_t>(std::numeric_limits<int32_t>::max())) return STATUS_BAD_VALUE;
    const size_t fromSize = from.dataSize();
    if (start > fromSize || len > fromSize || start + len > fromSize) return STATUS_BAD_VALUE;

    const size_t startPos = mPos;
    makeOwned();
    if (startPos + len > mOwned.size() && !growTo(startPos + len)) return STATUS_NO_MEMORY;
    memcpy(mOwned.data() + startPos, from.data() + start, len);
    mPos = startPos + len;

    for (binder_size_t offset : from.mObjects) {
        if (offset < start || offset + sizeof(flat_binder_object) > start + len) continue;
        const size_t newOffset = offset - start + startPos;
        flat_binder_object object;
        memcpy(&object, mOwned.data() + newOffset, sizeof(object));
        if (object.hdr.type == BINDER_TYPE_FD) {
            if (!mAllowFds) return STATUS_FDS_NOT_ALLOWED;
            // The copy owns its own duplicate.
            const int dup = fcntl(static_cast<int>(object.handle), F_DUPFD_CLOEXEC, 0);
            object.handle = static_cast<uint32_t>(dup);
            object.cookie = 1;
            memcpy(mOwned.data() + newOffset, &object, sizeof(object));
            if (dup >= 0) mOwnedFds.push_back(dup);
        } else {
            AIBinder* binder = nullptr;
            if (from.resolveBinder(object, &binder) == STATUS_OK) mHeldBinders.push_back(binder);
        }
        mObjects.push_back(newOffset);
    }
    return STATUS_OK;
}
