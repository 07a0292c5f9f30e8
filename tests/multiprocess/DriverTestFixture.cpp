#include "DriverTestFixture.h"

#include <unistd.h>

namespace drivertest {

void DriverTest::SetUp() {
    if (access(DriverProcess::defaultDevicePath().c_str(), F_OK) != 0) {
        GTEST_SKIP() << "no " << DriverProcess::defaultDevicePath()
                     << "; run through tools/vm/run-in-vm";
    }
}

void DriverTest::startServer(ServerOptions options) {
    options.ready = &mReady;
    mServer = std::make_unique<ChildProcess>([options] { return runTestServer(options); });
    ASSERT_TRUE(mReady.await()) << "the test server did not start";
}

void DriverTest::openClient() {
    mProcess = DriverProcess::open(&mHandler);
    ASSERT_NE(mProcess, nullptr);
}

binder_status_t DriverTest::call(uint32_t code, const RawParcel& data, ReceivedBuffer* reply,
                                 uint32_t flags) {
    return thread().transact(0, code, data.buffer(), flags, reply);
}

void DriverTest::TearDown() {
    if (IsSkipped()) return;
    ProcState state;
    if (mProcess != nullptr) {
        EXPECT_TRUE(waitForProcState(
                getpid(),
                [](const ProcState& s) { return s.buffers == 0 && s.refs == 0 && s.nodes == 0; },
                &state))
                << "this process still holds " << state.buffers << " buffers, " << state.refs
                << " references and " << state.nodes << " nodes";
    }
    if (mServer != nullptr && mServer->running()) {
        // Still running: it must not hold buffers or references once the calls are over.
        EXPECT_TRUE(waitForProcState(
                mServer->pid(), [](const ProcState& s) { return s.buffers == 0 && s.refs == 0; },
                &state))
                << "the server still holds " << state.buffers << " buffers and " << state.refs
                << " references";
    }
    if (mProcess != nullptr) {
        mProcess->shutdown();
        mProcess.reset();
        EXPECT_TRUE(waitForProcGone(getpid()));
    }
    mServer.reset();
}

}  // namespace drivertest
