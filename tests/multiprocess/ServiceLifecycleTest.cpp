#include <aidl/vendor/tavix/tps/ITps.h>
#include <android/binder_manager.h>

#include <future>
#include <string>
#include <vector>

#include "MpFixture.h"
#include "MpRoles.h"
#include "MpTestUtil.h"

namespace mptest {
namespace {

using aidl::vendor::tavix::tps::ITps;

using ServiceLifecycleTest = MultiProcessTest;

TEST_F(ServiceLifecycleTest, ManagerChecksNamesAndVintfDeclarations) {
    auto undeclared = spawnRole({"tps-undeclared"});
    EXPECT_EQ(undeclared->wait(), -EX_ILLEGAL_ARGUMENT);

    // Refused before anything is stored, so a local binder leaves nothing behind.
    const AIBinder_Class* clazz = defineClientClass("tps.test.INamed");
    ndk::SpAIBinder local(AIBinder_new(clazz, nullptr));
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

TEST_F(ServiceLifecycleTest, WaitForServiceReturnsOnceTheServiceIsAdded) {
    auto waiting = std::async(std::launch::async, [] {
        return ndk::SpAIBinder(AServiceManager_waitForService(kTpsName));
    });
    mChildren.push_back(spawnRole({"tps-server", "3", "0"}));
    ndk::SpAIBinder binder = waiting.get();
    ASSERT_NE(binder.get(), nullptr);
    std::shared_ptr<ITps> tps = ITps::fromBinder(binder);
    int32_t version = 0;
    EXPECT_TRUE(tps->getInterfaceVersion(&version).isOk());
}

TEST_F(ServiceLifecycleTest, ManagerForgetsWhatDeadProcessesRegistered) {
    mChildren.push_back(spawnRole({"tps-server", "3", "0"}));
    ndk::SpAIBinder binder(AServiceManager_waitForService(kTpsName));
    ASSERT_NE(binder.get(), nullptr);
    binder = ndk::SpAIBinder();
    mChildren.back()->kill();
    EXPECT_EQ(mChildren.back()->wait(), 128 + SIGKILL);

    const auto deadline = std::chrono::steady_clock::now() + drivertest::kPatience;
    AIBinder* stale = nullptr;
    while ((stale = AServiceManager_checkService(kTpsName)) != nullptr &&
           std::chrono::steady_clock::now() < deadline) {
        AIBinder_decStrong(stale);
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    EXPECT_EQ(stale, nullptr) << "the manager still hands out a dead service";

    // A client waiting for a name dies: its registration must go too (the fixture checks the
    // manager's references).
    const drivertest::ProcState before =
            drivertest::binderProcState(ServiceManagerEnvironment::pid());
    auto waiter = spawnRole({"callback-client", "exit"});
    EXPECT_TRUE(drivertest::waitForProcState(
            ServiceManagerEnvironment::pid(),
            [&](const drivertest::ProcState& s) { return s.refs > before.refs; }));
    waiter->kill();
    EXPECT_EQ(waiter->wait(), 128 + SIGKILL);
}

}  // namespace
}  // namespace mptest
