#pragma once

#include <gtest/gtest.h>

#include <memory>

#include "DriverTestServer.h"
#include "DriverTestSupport.h"

namespace drivertest {

// A test server child as context manager and this process's own binder process, plus the checks
// that nothing stays behind in the driver.
class DriverTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    // Forks the server; every other fork must happen before openClient().
    void startServer(ServerOptions options);
    void openClient();

    // Calls the server (handle 0).
    binder_status_t call(uint32_t code, const RawParcel& data, ReceivedBuffer* reply,
                         uint32_t flags = 0);
    DriverThread& thread() { return mProcess->thread(); }

    RecordingHandler mHandler;
    std::shared_ptr<DriverProcess> mProcess;
    std::unique_ptr<ChildProcess> mServer;
    Pipe mReady;
};

}  // namespace drivertest
