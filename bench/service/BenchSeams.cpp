#include "BenchSeams.h"

#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "ConfigPaths.h"
#include "MonotonicClock.h"
#include "SensorNodes.h"
#include "TPLightSensorManagerAIDL.h"

namespace tps::bench {
namespace {

const std::string& benchFolder() {
    static const std::string folder = std::filesystem::temp_directory_path().string() +
                                      "/tps-bench-" + std::to_string(getpid());
    return folder;
}

char gConfigPath[4096] = "/nonexistent/tavix_prism.cfg";
std::atomic<int64_t> gNowNs{1000000000};
std::atomic<int64_t> gStepNs{0};

}  // namespace

const std::string& brightnessNodePath() {
    static const std::string path = benchFolder() + "/brightness";
    return path;
}

void createBenchFolder() {
    std::filesystem::create_directories(benchFolder());
    std::ofstream(brightnessNodePath()) << "512\n";
    std::ofstream(benchFolder() + "/max_brightness") << "1023\n";
}

void removeBenchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(benchFolder(), ignored);
}

void useBluMode(int mode) {
    const std::string path = benchFolder() + "/tavix_prism.cfg";
    std::ofstream(path) << "BLUMode = " << mode << "\n";
    strncpy(gConfigPath, path.c_str(), sizeof(gConfigPath) - 1);
}

void setClockStepNs(int64_t stepNs) {
    gStepNs.store(stepNs);
}

}  // namespace tps::bench

namespace tps {
extern const char* const kConfigPaths[] = {bench::gConfigPath};
extern const size_t kConfigPathCount = 1;
}  // namespace tps

namespace tapr {

timespec monotonicNow() {
    using tps::bench::gNowNs;
    using tps::bench::gStepNs;
    const int64_t ns =
            gNowNs.fetch_add(gStepNs.load(std::memory_order_relaxed), std::memory_order_relaxed);
    return timespec{static_cast<time_t>(ns / 1000000000), static_cast<long>(ns % 1000000000)};
}

}  // namespace tapr

namespace tavixPrism {

const std::vector<BrightnessNodeGroup> kBrightnessNodeGroups = {
        {{tps::bench::brightnessNodePath()},
         {tps::bench::brightnessNodePath().substr(
                  0, tps::bench::brightnessNodePath().size() - strlen("brightness")) +
          "max_brightness"}},
};

namespace {
// What the sensor event thread last stored; the real manager also hands it over atomically.
std::atomic<float> gLux{250.5f};
}  // namespace

TPLightSensorManager::TPLightSensorManager() : mImpl(nullptr) {}
TPLightSensorManager::~TPLightSensorManager() = default;
int32_t TPLightSensorManager::createLightSensor() {
    return 0;
}
int32_t TPLightSensorManager::createEventQueue() {
    return 0;
}
int32_t TPLightSensorManager::enableSensor() {
    return 0;
}
int32_t TPLightSensorManager::disableSensor() {
    return 0;
}
void TPLightSensorManager::destroyEventQueue() {}
float TPLightSensorManager::getCurAmbinetLux() {
    return gLux.load(std::memory_order_relaxed);
}

}  // namespace tavixPrism
