#pragma once

#include <linux/android/binder.h>
#include <stddef.h>
#include <stdint.h>

#include <memory>

namespace abinder::driver {

class DriverProcess;

// A transaction or reply buffer the kernel placed in this process's mapping. Until it is freed
// the space stays used, the references carried by its objects stay held and, for a oneway call,
// later oneway calls to the same node wait. Destroying or resetting it frees it (BC_FREE_BUFFER
// from whatever thread does so).
class ReceivedBuffer {
public:
    ReceivedBuffer() = default;
    ReceivedBuffer(std::shared_ptr<DriverProcess> process, const binder_transaction_data& tr);
    ~ReceivedBuffer() { reset(); }

    ReceivedBuffer(ReceivedBuffer&& other) noexcept;
    ReceivedBuffer& operator=(ReceivedBuffer&& other) noexcept;
    ReceivedBuffer(const ReceivedBuffer&) = delete;
    ReceivedBuffer& operator=(const ReceivedBuffer&) = delete;

    bool empty() const { return mProcess == nullptr; }
    const uint8_t* data() const { return mData; }
    size_t size() const { return mSize; }
    // Offsets of the binder objects in data, in bytes.
    const binder_size_t* offsets() const { return mOffsets; }
    size_t offsetCount() const { return mOffsetCount; }

    void reset();
    // Gives the buffer up without freeing it; whoever takes it frees it with
    // DriverProcess::freeBuffer(data()).
    void release();

private:
    std::shared_ptr<DriverProcess> mProcess;
    const uint8_t* mData = nullptr;
    size_t mSize = 0;
    const binder_size_t* mOffsets = nullptr;
    size_t mOffsetCount = 0;
};

}  // namespace abinder::driver
