#pragma once

#include <aidl/vendor/tavix/tps/ITps.h>
#include <aidl/vendor/tavix/tps/ITpsCallback.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "service_Harness.h"

namespace sysbench {

struct Options {
    bool quick = false;
};

// The real service process beside servicemanager, sensord (lux fed through a pipe) and client
// processes, on the binder driver. Each figure is printed beside a baseline measured in the same
// boot, with their ratio.
class SystemBench {
public:
    SystemBench(std::string self, Options options);
    ~SystemBench();
    SystemBench(const SystemBench&) = delete;
    SystemBench& operator=(const SystemBench&) = delete;

    int run();

private:
    using ITps = aidl::vendor::tavix::tps::ITps;
    using ITpsCallback = aidl::vendor::tavix::tps::ITpsCallback;

    bool startSystem();
    bool openSensorSession();
    bool memoryFigure();
    bool fanOutFigure();
    bool luxFigure();

    // `callbacks` callbacks spread over at most 8 client processes (8 x 8 for 64).
    bool startClients(int callbacks);
    // Kills every client process, then fans out until the service has dropped them all.
    bool killClients();
    std::vector<std::shared_ptr<ITpsCallback>> clientCallbacks() const;
    // registerProcessor + unregisterProcessor: four fan-outs; returns nanoseconds.
    int64_t fanOutPair();
    bool feedLux(float lux);
    bool waitForLux(float lux);

    struct Client {
        std::unique_ptr<svcmp::Process> process;
        int callbacks = 0;
    };

    const std::string mSelf;
    const Options mOptions;
    std::string mDir;
    std::unique_ptr<svcmp::Process> mManager;
    std::unique_ptr<svcmp::Process> mSensord;
    int mLuxPipe = -1;  // sensord's standard input; owned
    std::unique_ptr<svcmp::Process> mService;
    std::vector<Client> mClients;
    std::shared_ptr<ITps> mTps;
};

}  // namespace sysbench
