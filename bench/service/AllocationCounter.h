#pragma once

#include <cstdint>

namespace tps::bench {

// Heap allocations made through the global operator new in this process so far.
uint64_t allocationCount();

}  // namespace tps::bench
