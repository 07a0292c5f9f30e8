#pragma once

#include <time.h>

namespace tapr {

// The filters' only time source. MonotonicClock.cpp reads the system's monotonic clock; host tests
// and tools link a clock they drive themselves instead.
timespec monotonicNow();

}  // namespace tapr
