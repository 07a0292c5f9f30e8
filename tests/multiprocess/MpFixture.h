#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "MpTestUtil.h"

namespace mptest {

// Starts this test binary again as a helper process running a role of MpRoles.h.
std::unique_ptr<ChildProcess> spawnRole(const std::vector<std::string>& args);
// The class this process talks to IOrder binders through.
const AIBinder_Class* orderClientClass();

// The service manager every test of the binary shares, started with a VINTF fragment that
// declares kTpsName only.
class ServiceManagerEnvironment : public ::testing::Environment {
public:
    void SetUp() override;
    void TearDown() override;
    static pid_t pid();

private:
    std::unique_ptr<ChildProcess> mManager;
    std::string mVintfDir;
};

// Checks that the test leaves nothing behind in the driver: helper processes still running hold
// no buffers, and once they are gone this process and the service manager hold what they held
// before (no buffers at all).
class MultiProcessTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    // Starts the ITps fake (MpRoles.h) and connects to it.
    std::shared_ptr<aidl::vendor::tavix::tps::ITps> startServer(const std::string& maxThreads = "3",
                                                                bool joinOnly = false);
    // The fake's IOrder binder, ready for transact().
    static ndk::SpAIBinder orderBinder();

    std::vector<std::unique_ptr<ChildProcess>> mChildren;

private:
    ProcState mBaseline;
    ProcState mManagerBaseline;
};

}  // namespace mptest
