#include "ReceivedBuffer.h"

#include <utility>

#include "DriverProcess.h"

namespace abinder::driver {

ReceivedBuffer::ReceivedBuffer(std::shared_ptr<DriverProcess> process,
                               const binder_transaction_data& tr)
    : mProcess(std::move(process)),
      mData(reinterpret_cast<const uint8_t*>(static_cast<uintptr_t>(tr.data.ptr.buffer))),
      mSize(tr.data_size),
      mOffsets(reinterpret_cast<const binder_size_t*>(static_cast<uintptr_t>(tr.data.ptr.offsets))),
      mOffsetCount(tr.offsets_size / sizeof(binder_size_t)) {}

ReceivedBuffer::ReceivedBuffer(ReceivedBuffer&& other) noexcept
    : mProcess(std::move(other.mProcess)),
      mData(std::exchange(other.mData, nullptr)),
      mSize(std::exchange(other.mSize, 0)),
      mOffsets(std::exchange(other.mOffsets, nullptr)),
      mOffsetCount(std::exchange(other.mOffsetCount, 0)) {}

ReceivedBuffer& ReceivedBuffer::operator=(ReceivedBuffer&& other) noexcept {
    if (this != &other) {
        reset();
        mProcess = std::move(other.mProcess);
        mData = std::exchange(other.mData, nullptr);
        mSize = std::exchange(other.mSize, 0);
        mOffsets = std::exchange(other.mOffsets, nullptr);
        mOffsetCount = std::exchange(other.mOffsetCount, 0);
    }
    return *this;
}

void ReceivedBuffer::reset() {
    if (mProcess == nullptr) return;
    mProcess->freeBuffer(mData);
    release();
}

void ReceivedBuffer::release() {
    mProcess.reset();
    mData = nullptr;
    mSize = 0;
    mOffsets = nullptr;
    mOffsetCount = 0;
}

}  // namespace abinder::driver
