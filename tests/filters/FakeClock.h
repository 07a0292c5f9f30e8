#pragma once

#include <cstdint>

namespace tps::test {

// The monotonic clock seen by the filters in this test binary; starts at 0.
void setFakeClockNs(int64_t ns);
void advanceFakeClockMs(int64_t ms);

}  // namespace tps::test
