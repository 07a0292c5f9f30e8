#include <aidl/vendor/tavix/tps/ITps.h>
#include <android/binder_manager.h>

#include <future>
#include <string>
#include <vector>

#include "MpFixture.h"
#include "MpRoles.h"

namespace mptest {
namespace {

using aidl::vendor::tavix::tps::ITps;

using ServiceLifecycleTest = MultiProcessTest;

TEST_F(ServiceLifecycleTest, ManagerChecksNamesAndVintfDeclarations) {
    auto undeclared = spawnRole({"tps-undeclared"});
    EXPECT_EQ(undeclared->wait(), -EX_ILLEGAL_ARGUMENT);

    // Refused before anything is stored, so a local binder leaves nothing behind.
    ndk::SpAIBinder local(AIBinder_new(defineClientClass("tps.test.INamed"), nullptr));
    for (const std::string& bad : {std::string(), std::string("bad name"), std::string(128, 'a'),
                                   std::string("caf\xc3\xa9")}) {
        EXPECT_EQ(AServiceManager_addService(local.get(), bad.c_str()), EX_ILLEGAL_ARGUMENT)
                << "[" << bad << "]";
    }
    EXPECT_EQ(AServiceManager_checkService("tps.test.absent"), nullptr);

    EXPECT_TRUE(AServiceManager_isDeclared(kTpsName));
    EXPECT_FALSE(AServiceManager_isDeclared(kUndeclaredTpsName));
    std::vector<std::string> instances;
    AServiceManager_forEachDeclaredInstance(
            ITps::descriptor, &instances, [](const char* instance, void* context) {
                static_cast<std::vector<std::string>*>(context)->push_back(instance);
            });
    EXPECT_EQ(instances, std::vector<std::string>{"default"});
}

TEST_F(ServiceLifecycleTest, WaitForServiceReturnsOnceAddedAndDeadWaitersAreForgotten) {
    // A client waiting for the name dies: its registration must go (the fixture checks the
    // manager's references).
    const ProcState before = binderProcState(ServiceManagerEnvironment::pid());
    auto doomed = spawnRole({"callback-client", "exit"});
    EXPECT_TRUE(waitForProcState(ServiceManagerEnvironment::pid(),
                                 [&](const ProcState& s) { return s.refs > before.refs; }));
    doomed->kill();
    EXPECT_EQ(doomed->wait(), 128 + SIGKILL);

    auto waiting = std::async(std::launch::async, [] {
        return ndk::SpAIBinder(AServiceManager_waitForService(kTpsName));
    });
    mChildren.push_back(spawnRole({"tps-server", "3", "0"}));
    std::shared_ptr<ITps> tps = ITps::fromBinder(waiting.get());
    ASSERT_NE(tps, nullptr);
    int32_t version = 0;
    EXPECT_TRUE(tps->getInterfaceVersion(&version).isOk());
}

}  // namespace
}  // namespace mptest
