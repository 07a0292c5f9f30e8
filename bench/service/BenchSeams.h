#pragma once

#include <cstdint>
#include <string>

namespace tps::bench {

// Link-time stand-ins for the platform pieces the service touches, so the benchmark measures the
// service's own work: a light sensor that answers a fixed lux without locking or allocating, a
// brightness node table in a private temporary folder, one configuration file, and a monotonic
// clock that moves only when read.

// Creates the private folder with the brightness nodes; removed by removeBenchFolder().
void createBenchFolder();
void removeBenchFolder();
const std::string& brightnessNodePath();

// Makes the next service read a configuration with this backlight-unit mode.
void useBluMode(int mode);

// Each read of the monotonic clock advances it by this much (0: frozen).
void setClockStepNs(int64_t stepNs);

}  // namespace tps::bench
