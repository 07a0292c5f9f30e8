#include "MpFixture.h"

#include <android/binder_manager.h>
#include <stdlib.h>
#include <unistd.h>

#include <fstream>
#include <thread>

#include "MpRoles.h"
#include "driver/DriverProcess.h"

namespace mptest {

namespace {
pid_t gManagerPid = 0;
}  // namespace

std::unique_ptr<ChildProcess> spawnRole(const std::vector<std::string>& args) {
    // Built before the fork: the child of a threaded process should only exec.
    auto all = std::make_shared<std::vector<std::string>>();
    all->push_back("multiprocess_tests");
    all->push_back("--child");
    all->insert(all->end(), args.begin(), args.end());
    auto argv = std::make_shared<std::vector<char*>>();
    for (std::string& arg : *all) argv->push_back(arg.data());
    argv->push_back(nullptr);
    return std::make_unique<ChildProcess>([all, argv] {
        execv("/proc/self/exe", argv->data());
        return 127;
    });
}

const AIBinder_Class* orderClientClass() {
    static const AIBinder_Class* const clazz = defineClientClass(kOrderDescriptor);
    return clazz;
}

void ServiceManagerEnvironment::SetUp() {
    if (access(abinder::driver::DriverProcess::defaultDevicePath().c_str(), F_OK) != 0) return;
    char dir[] = "/tmp/mp-vintf.XXXXXX";
    ASSERT_NE(mkdtemp(dir), nullptr);
    mVintfDir = dir;
    std::ofstream(mVintfDir + "/tps.xml") << R"(<manifest version="1.0" type="device">
    <hal format="aidl">
        <name>vendor.tavix.tps</name>
        <version>1</version>
        <fqname>ITps/default</fqname>
    </hal>
</manifest>
)";
    const std::string vintfDir = mVintfDir;
    mManager = std::make_unique<ChildProcess>([vintfDir] {
        execl(SERVICEMANAGER_PATH, "servicemanager", "--vintf-dir", vintfDir.c_str(), nullptr);
        return 127;
    });
    gManagerPid = mManager->pid();
    // Ready once it answers. (Asking for a binder would leave a transient node in the manager
    // while the first test takes its baseline.)
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    bool ready = false;
    while (!(ready = AServiceManager_isDeclared("vendor.tavix.tps.ITps/default")) &&
           std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    ASSERT_TRUE(ready) << "servicemanager did not come up";
}

void ServiceManagerEnvironment::TearDown() {
    mManager.reset();
    if (!mVintfDir.empty()) {
        unlink((mVintfDir + "/tps.xml").c_str());
        rmdir(mVintfDir.c_str());
    }
}

pid_t ServiceManagerEnvironment::pid() {
    return gManagerPid;
}

void MultiProcessTest::SetUp() {
    if (gManagerPid == 0) GTEST_SKIP() << "no binder device; run through tools/vm/run-in-vm";
    mBaseline = binderProcState(getpid());
    mManagerBaseline = binderProcState(gManagerPid);
}

std::shared_ptr<aidl::vendor::tavix::tps::ITps> MultiProcessTest::startServer(
        const std::string& maxThreads, bool joinOnly) {
    mChildren.push_back(spawnRole({"tps-server", maxThreads, joinOnly ? "1" : "0"}));
    return aidl::vendor::tavix::tps::ITps::fromBinder(
            ndk::SpAIBinder(AServiceManager_waitForService(kTpsName)));
}

ndk::SpAIBinder MultiProcessTest::orderBinder() {
    ndk::SpAIBinder order(AServiceManager_waitForService(kOrderName));
    if (order.get() != nullptr) AIBinder_associateClass(order.get(), orderClientClass());
    return order;
}

void MultiProcessTest::TearDown() {
    if (IsSkipped()) return;
    ProcState state;
    for (auto& child : mChildren) {
        if (!child->running()) continue;
        EXPECT_TRUE(waitForProcState(
                child->pid(), [](const ProcState& s) { return s.buffers == 0; }, &state))
                << "a helper process still holds " << state.buffers << " buffers";
    }
    mChildren.clear();
    EXPECT_TRUE(waitForProcState(
            getpid(),
            [&](const ProcState& s) {
                return s.buffers == 0 && s.refs == mBaseline.refs && s.nodes == mBaseline.nodes;
            },
            &state))
            << "this process holds " << state.buffers << " buffers, " << state.refs << " refs and "
            << state.nodes << " nodes; before the test " << mBaseline.refs << " refs and "
            << mBaseline.nodes << " nodes";
    EXPECT_TRUE(waitForProcState(
            gManagerPid,
            [&](const ProcState& s) {
                return s.buffers == 0 && s.refs == mManagerBaseline.refs &&
                       s.nodes == mManagerBaseline.nodes;
            },
            &state))
            << "the service manager holds " << state.buffers << " buffers, " << state.refs
            << " refs and " << state.nodes << " nodes; before the test " << mManagerBaseline.refs
            << " refs and " << mManagerBaseline.nodes << " nodes";
}

}  // namespace mptest
