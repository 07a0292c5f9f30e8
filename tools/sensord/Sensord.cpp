#define LOG_TAG "sensord"

#include "Sensord.h"

#include <aidl/android/frameworks/sensorservice/ISensorManager.h>
#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <android/log.h>

#include <cstdio>

#include "LineLuxSource.h"
#include "LuxTrace.h"
#include "SensorCatalog.h"

namespace sensord {

using ::aidl::android::frameworks::sensorservice::ISensorManager;

namespace {

constexpr uint32_t kBinderThreads = 4;

void reportInputError(const std::string& message) {
    fprintf(stderr, "sensord: %s\n", message.c_str());
    __android_log_print(ANDROID_LOG_WARN, LOG_TAG, "%s", message.c_str());
}

}  // namespace

std::unique_ptr<Sensord> Sensord::create(const SensordOptions& options, int inputFd,
                                         std::string* error) {
    std::unique_ptr<Sensord> sensord(new Sensord());

    std::vector<SimSensorManager::SensorInfo>& sensors = sensord->mSensors;
    if (options.lightSensor) sensors.push_back(SensorCatalog::defaultLightSensor(1));
    if (!options.sensorListFile.empty() &&
        !SensorCatalog::loadList(options.sensorListFile, static_cast<int32_t>(sensors.size()) + 1,
                                 &sensors, error)) {
        return nullptr;
    }
    for (const std::string& spec : options.sensorSpecs) {
        SimSensorManager::SensorInfo sensor;
        std::string problem;
        const int32_t handle = static_cast<int32_t>(sensors.size()) + 1;
        if (!SensorCatalog::parseSpec(spec, handle, &sensor, &problem)) {
            *error = "--sensor: " + problem;
            return nullptr;
        }
        sensors.push_back(std::move(sensor));
    }

    switch (options.source) {
        case SensordOptions::Source::kConstant:
            sensord->mSource = std::make_shared<ConstantLuxSource>(options.constantLux);
            break;
        case SensordOptions::Source::kTrace:
            sensord->mSource = LuxTrace::load(options.traceFile, options.loop, error);
            if (!sensord->mSource) return nullptr;
            break;
        case SensordOptions::Source::kStdin:
            sensord->mSource = std::make_shared<LineLuxSource>(inputFd, "stdin", reportInputError);
            break;
    }

    const SimSensorManager::ListMode listMode = options.failList ? SimSensorManager::ListMode::kFail
                                                : options.emptyList
                                                        ? SimSensorManager::ListMode::kEmpty
                                                        : SimSensorManager::ListMode::kNormal;
    auto dispatcher = std::make_shared<EventDispatcher>(sensord->mSource, options.additionalInfo);
    sensord->mService =
            ::ndk::SharedRefBase::make<SimSensorManager>(sensors, listMode, std::move(dispatcher));
    return sensord;
}

std::string Sensord::instanceName() {
    return std::string(ISensorManager::descriptor) + "/default";
}

binder_exception_t Sensord::registerService() const {
    return AServiceManager_addService(mService->asBinder().get(), instanceName().c_str());
}

int runSensord(const std::vector<std::string>& args) {
    const ParsedOptions parsed = parseSensordOptions(args);
    if (!parsed.ok) {
        fprintf(stderr, "sensord: %s\n(see sensord --help)\n", parsed.error.c_str());
        return kUsageExitStatus;
    }
    if (parsed.options.help) {
        fputs(sensordUsage().c_str(), stdout);
        return 0;
    }

    std::string error;
    std::unique_ptr<Sensord> sensord = Sensord::create(parsed.options, /*inputFd=*/0, &error);
    if (!sensord) {
        fprintf(stderr, "sensord: %s\n", error.c_str());
        return kUsageExitStatus;
    }

    ABinderProcess_setThreadPoolMaxThreadCount(kBinderThreads);
    ABinderProcess_startThreadPool();
    const binder_exception_t registered = sensord->registerService();
    if (registered != EX_NONE) {
        fprintf(stderr, "sensord: cannot register %s (exception %d)\n",
                Sensord::instanceName().c_str(), registered);
        return 1;
    }
    __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "serving %s with %zu sensor(s)",
                        Sensord::instanceName().c_str(), sensord->sensors().size());
    ABinderProcess_joinThreadPool();
    return 1;
}

}  // namespace sensord
