#include "SimulatedClock.h"

#include "MonotonicClock.h"

namespace filterlab {

namespace {
int64_t gNowNs = 0;  // single-threaded tool
}

void setSimulatedTimeNs(int64_t ns) {
    gNowNs = ns;
}

}  // namespace filterlab

namespace tapr {

timespec monotonicNow() {
    int64_t ns = filterlab::gNowNs;
    int64_t sec = ns / 1000000000;
    int64_t rem = ns % 1000000000;
    if (rem < 0) {  // keep tv_nsec in [0, 1e9) for times before the origin
        rem += 1000000000;
        --sec;
    }
    return timespec{static_cast<time_t>(sec), static_cast<long>(rem)};
}

}  // namespace tapr
