// Global operator new/delete replaced by counting ones for this test binary. They live in their own
// file so the compiler never inlines the free() of a pointer it saw come from operator new.

#include "AllocationCounter.h"

#include <cstdlib>
#include <new>

namespace {
thread_local size_t tAllocations = 0;
}  // namespace

size_t threadAllocations() {
    return tAllocations;
}

void* operator new(size_t size) {
    ++tAllocations;
    if (void* p = malloc(size == 0 ? 1 : size)) return p;
    throw std::bad_alloc();
}
void operator delete(void* p) noexcept {
    free(p);
}
void operator delete(void* p, size_t) noexcept {
    free(p);
}
