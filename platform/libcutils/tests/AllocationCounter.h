#pragma once

#include <cstddef>

// Heap allocations made by the calling thread through the global operator new so far.
size_t threadAllocations();
