#pragma once

#include <cstdint>

namespace filterlab {

// The filters' monotonic clock in this tool: time only moves when the replay says so.
void setSimulatedTimeNs(int64_t ns);

}  // namespace filterlab
