// Global operator new/delete replaced by counting ones; only this benchmark binary links them.

#include "AllocationCounter.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace tps::bench {
namespace {
std::atomic<uint64_t> gAllocations{0};

void* allocate(std::size_t size, std::size_t alignment) {
    gAllocations.fetch_add(1, std::memory_order_relaxed);
    if (size == 0) size = 1;
    void* p =
            alignment > alignof(std::max_align_t)
                    ? std::aligned_alloc(alignment, (size + alignment - 1) / alignment * alignment)
                    : std::malloc(size);
    return p;
}
}  // namespace

uint64_t allocationCount() {
    return gAllocations.load(std::memory_order_relaxed);
}

}  // namespace tps::bench

using tps::bench::allocate;

void* operator new(std::size_t size) {
    if (void* p = allocate(size, 0)) return p;
    throw std::bad_alloc();
}
void* operator new[](std::size_t size) {
    if (void* p = allocate(size, 0)) return p;
    throw std::bad_alloc();
}
void* operator new(std::size_t size, std::align_val_t alignment) {
    if (void* p = allocate(size, static_cast<std::size_t>(alignment))) return p;
    throw std::bad_alloc();
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
    if (void* p = allocate(size, static_cast<std::size_t>(alignment))) return p;
    throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return allocate(size, 0);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return allocate(size, 0);
}
void operator delete(void* p) noexcept {
    std::free(p);
}
void operator delete[](void* p) noexcept {
    std::free(p);
}
void operator delete(void* p, std::size_t) noexcept {
    std::free(p);
}
void operator delete[](void* p, std::size_t) noexcept {
    std::free(p);
}
void operator delete(void* p, std::align_val_t) noexcept {
    std::free(p);
}
void operator delete[](void* p, std::align_val_t) noexcept {
    std::free(p);
}
void operator delete(void* p, std::size_t, std::align_val_t) noexcept {
    std::free(p);
}
void operator delete[](void* p, std::size_t, std::align_val_t) noexcept {
    std::free(p);
}
