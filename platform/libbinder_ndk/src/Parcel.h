#pragma once

#include <android/binder_parcel.h>
#include <linux/android/binder.h>
#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include <memory>
#include <string>
#include <vector>

namespace abinder {
class Transport;
}

// A kernel-format parcel: 4-byte aligned little-endian data with binder objects written inline as
// flat_binder_object (each followed by an int32 stability) and listed in an offset table.
//
// Objects written here hold a reference for the parcel's life (binders strongly, file
// descriptors as owned duplicates). A parcel can instead adopt a buffer received from a
// transport; its objects are then resolved through that transport and the buffer is handed back
// through the release callback when the parcel is reset or destroyed. Writing into an adopted
// parcel first copies its bytes.
//
// Not thread-safe: a parcel belongs to one thread at a time. The read position is mutable so that
// reads work on const parcels, as the C API requires.
struct AParcel {
    // Hands an adopted buffer back to the transport it came from. A plain function, so that
    // adopting a buffer allocates nothing.
    using ReleaseFn = void (*)(abinder::Transport& transport, const uint8_t* data, size_t size,
                               const binder_size_t* objects, size_t objectCount);

    // binder: the object this parcel is prepared for (AIBinder_prepareTransaction) or null.
    explicit AParcel(const AIBinder* binder = nullptr);
    ~AParcel();

    AParcel(const AParcel&) = delete;
    AParcel& operator=(const AParcel&) = delete;

    const AIBinder* boundBinder() const { return mBinder; }

    // ---- raw data ----
    const uint8_t* data() const { return mAdopted != nullptr ? mAdopted : mOwned.data(); }
    size_t dataSize() const { return mAdopted != nullptr ? mAdoptedSize : mOwned.size(); }
    size_t dataPosition() const { return mPos; }
    void setDataPosition(size_t pos) const { mPos = pos; }
    size_t dataAvail() const { return mPos < dataSize() ? dataSize() - mPos : 0; }
    const std::vector<binder_size_t>& objectOffsets() const { return mObjects; }

    // Writes sizeof(T) (a multiple of 4) bytes at the position.
    template <typename T>
    binder_status_t writeAligned(T value) {
        static_assert(sizeof(T) % 4 == 0);
        void* out = writeInplace(sizeof(T));
        if (out == nullptr) return STATUS_NO_MEMORY;
        memcpy(out, &value, sizeof(T));
        return STATUS_OK;
    }

    // Leaves *value untouched on failure.
    template <typename T>
    binder_status_t readAligned(T* value) const {
        static_assert(sizeof(T) % 4 == 0);
        if (sizeof(T) > dataAvail()) return STATUS_NOT_ENOUGH_DATA;
        if (binder_status_t status = validateRead(mPos + sizeof(T)); status != STATUS_OK) {
            return status;
        }
        memcpy(value, data() + mPos, sizeof(T));
        mPos += sizeof(T);
        return STATUS_OK;
    }

    binder_status_t writeInt32(int32_t value) { return writeAligned(value); }
    binder_status_t readInt32(int32_t* value) const { return readAligned(value); }

    // Reserves len bytes padded to 4 (pad zeroed); null if the size overflows.
    void* writeInplace(size_t len);
    // Null if fewer than the padded len bytes remain.
    const void* readInplace(size_t len) const;

    // ---- strings, tokens, objects ----
    // UTF-16 with an int32 unit count and a NUL; null writes -1.
    binder_status_t writeString16(const char16_t* str, size_t len);
    // Null for the null marker, a truncated or unterminated string or a bad length.
    const char16_t* readString16Inplace(size_t* outLen) const;

    binder_status_t writeInterfaceToken(const std::u16string& descriptor);
    bool enforceInterface(const std::u16string& descriptor) const;

    binder_status_t writeStrongBinder(AIBinder* binder);
    // *binder gets a strong reference owned by the caller, or null for a null object.
    binder_status_t readStrongBinder(AIBinder** binder) const;

    // Raw descriptor object. With takeOwnership the parcel closes fd when it is done.
    binder_status_t writeFileDescriptor(int fd, bool takeOwnership);
    // The descriptor stays owned by the parcel.
    binder_status_t readFileDescriptor(int* fd) const;

    // ---- whole-parcel operations ----
    binder_status_t appendFrom(const AParcel& from, size_t start, size_t len);
    // Empties the parcel and drops everything it holds.
    void freeData();
    binder_status_t setData(const uint8_t* buffer, size_t len);

    void markSensitive() const { mSensitive = true; }
    bool allowFds() const { return mAllowFds; }

    // Takes over a buffer received from transport. The bytes and offsets must stay valid until
    // release runs, with the same arguments.
    void adopt(std::shared_ptr<abinder::Transport> transport, const uint8_t* data, size_t size,
               const binder_size_t* objects, size_t objectCount, ReleaseFn release);

private:
    binder_status_t validateRead(size_t upperBound) const;
    bool growTo(size_t newSize);
    void releaseAdopted();
    void makeOwned();
    void dropHeld();

    // Reads the object at the position: a null object, or one listed in the offset table.
    bool readObject(flat_binder_object* object) const;
    // Resolves a non-null binder object to a new strong reference.
    binder_status_t resolveBinder(const flat_binder_object& object, AIBinder** out) const;
    binder_status_t writeObject(const flat_binder_object& object, bool nullMetaData);

    const AIBinder* const mBinder;

    std::vector<uint8_t> mOwned;
    const uint8_t* mAdopted = nullptr;
    size_t mAdoptedSize = 0;
    // What adopt() was given, kept for release even once writes have copied the bytes.
    struct Received {
        ReleaseFn release = nullptr;
        const uint8_t* data = nullptr;
        size_t size = 0;
        const binder_size_t* objects = nullptr;
        size_t objectCount = 0;
    };
    Received mReceived;
    std::shared_ptr<abinder::Transport> mTransport;

    mutable size_t mPos = 0;
    std::vector<binder_size_t> mObjects;
    std::vector<AIBinder*> mHeldBinders;  // strong references
    std::vector<int> mOwnedFds;

    mutable bool mSensitive = false;
    bool mAllowFds = true;
};

namespace abinder {

// Value of the header word in interface tokens ('SYST').
inline constexpr int32_t kInterfaceHeader = 0x53595354;
// Set in the strict-mode word of every token.
inline constexpr int32_t kStrictModePenaltyGather = static_cast<int32_t>(0x80000000u);
// Flags of objects and the null binder unless a scheduler policy is set: normal policy, nice 19.
inline constexpr uint32_t kDefaultSchedBits = 0x13;
inline constexpr uint32_t kFlagSchedPolicyShift = 9;
inline constexpr uint32_t kFlagInheritRt = 0x800;

}  // namespace abinder
