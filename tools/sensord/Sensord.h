#pragma once

#include <android/binder_status.h>

#include <memory>
#include <string>
#include <vector>

#include "EventDispatcher.h"
#include "SensordOptions.h"
#include "SimSensorManager.h"

namespace sensord {

// The simulator assembled from its options: sensor list, event source, dispatcher and service.
class Sensord {
public:
    // Reads the trace and sensor list files. --stdin reads lux lines from inputFd (taking it
    // over). On an input error returns null and sets *error ("file:line: problem").
    static std::unique_ptr<Sensord> create(const SensordOptions& options, int inputFd,
                                           std::string* error);

    // "android.frameworks.sensorservice.ISensorManager/default"
    static std::string instanceName();

    // Publishes the service with the service manager.
    binder_exception_t registerService() const;

    const std::shared_ptr<SimSensorManager>& service() const { return mService; }
    const std::shared_ptr<LuxSource>& source() const { return mSource; }
    const std::vector<SimSensorManager::SensorInfo>& sensors() const { return mSensors; }

private:
    Sensord() = default;

    std::vector<SimSensorManager::SensorInfo> mSensors;
    std::shared_ptr<LuxSource> mSource;
    std::shared_ptr<SimSensorManager> mService;
};

// The whole program: arguments, assembly, registration, then serving on the binder thread pool.
// Returns the exit status (it only returns on errors).
int runSensord(const std::vector<std::string>& args);

}  // namespace sensord
