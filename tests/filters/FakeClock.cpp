#include "FakeClock.h"

#include <atomic>

#include "MonotonicClock.h"

namespace tps::test {

namespace {
std::atomic<int64_t> gNowNs{0};
}

void setFakeClockNs(int64_t ns) {
    gNowNs.store(ns);
}

void advanceFakeClockMs(int64_t ms) {
    gNowNs.fetch_add(ms * 1000000);
}

}  // namespace tps::test

namespace tapr {

timespec monotonicNow() {
    int64_t ns = tps::test::gNowNs.load();
    return timespec{static_cast<time_t>(ns / 1000000000), static_cast<long>(ns % 1000000000)};
}

}  // namespace tapr
