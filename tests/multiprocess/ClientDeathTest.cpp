#include <aidl/vendor/tavix/tps/ITps.h>
#include <android/binder_manager.h>

#include "MpFixture.h"
#include "MpRoles.h"
#include "MpTestUtil.h"

namespace mptest {
namespace {

using aidl::vendor::tavix::tps::ITps;

class ClientDeathTest : public MultiProcessTest {
protected:
    std::shared_ptr<ITps> startServer() {
        mChildren.push_back(spawnRole({"tps-server", "3", "0"}));
        return ITps::fromBinder(ndk::SpAIBinder(AServiceManager_waitForService(kTpsName)));
    }
};

TEST_F(ClientDeathTest, ServerSeesAClientThatDiedBetweenCalls) {
    std::shared_ptr<ITps> tps = startServer();
    ASSERT_NE(tps, nullptr);
    auto client = spawnRole({"callback-client", "exit"});
    ASSERT_EQ(client->wait(), 0);

    auto values = waitForReport(tps, [](const auto& r) { return r.at("deaths") != "0"; });
    EXPECT_EQ(values["deaths"], "1");
    std::string status;
    ASSERT_TRUE(tps->getParameters("callback", &status).isOk());
    EXPECT_EQ(status, std::to_string(STATUS_DEAD_OBJECT));
    EXPECT_EQ(report(tps)["deaths"], "1") << "the death recipient fired more than once";
}

TEST_F(ClientDeathTest, ServerSeesAClientThatDiedDuringItsCall) {
    std::shared_ptr<ITps> tps = startServer();
    ASSERT_NE(tps, nullptr);
    auto client = spawnRole({"callback-client", "hold"});
    auto values = waitForReport(tps, [](const auto& r) { return r.at("holding") == "1"; });
    ASSERT_EQ(values["holding"], "1");
    client->kill();
    EXPECT_EQ(client->wait(), 128 + SIGKILL);

    values = waitForReport(tps, [](const auto& r) { return r.at("callStatus") != "1"; });
    EXPECT_EQ(values["callStatus"], std::to_string(STATUS_DEAD_OBJECT));
    EXPECT_EQ(values["deaths"], "1");
}

}  // namespace
}  // namespace mptest
