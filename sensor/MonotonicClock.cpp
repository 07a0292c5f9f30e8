#include "MonotonicClock.h"

namespace tapr {

timespec monotonicNow() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now;
}

}  // namespace tapr
