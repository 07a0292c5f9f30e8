#include <android/binder_manager.h>

#include "MpFixture.h"
#include "MpRoles.h"

namespace mptest {
namespace {

using aidl::vendor::tavix::tps::ITps;

using ProcessDeathTest = MultiProcessTest;

TEST_F(ProcessDeathTest, ServerSeesAClientThatDiedBetweenCalls) {
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

TEST_F(ProcessDeathTest, ServerSeesAClientThatDiedDuringItsCall) {
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

TEST_F(ProcessDeathTest, ClientSeesTheServerDieInsideACall) {
    std::shared_ptr<ITps> tps = startServer();
    ASSERT_NE(tps, nullptr);
    ndk::SpAIBinder order = orderBinder();
    std::atomic<int> deaths{0};
    ndk::ScopedAIBinder_DeathRecipient recipient(AIBinder_DeathRecipient_new(
            [](void* cookie) { ++*static_cast<std::atomic<int>*>(cookie); }));
    ASSERT_EQ(AIBinder_linkToDeath(tps->asBinder().get(), recipient.get(), &deaths), STATUS_OK);

    EXPECT_EQ(tps->setParameters("exit").getStatus(), STATUS_DEAD_OBJECT);
    EXPECT_EQ(mChildren.back()->wait(), 0);
    EXPECT_TRUE(eventually([&] { return deaths > 0; }));
    EXPECT_EQ(tps->setParameters("again").getStatus(), STATUS_DEAD_OBJECT);
    EXPECT_EQ(transact(order.get(), kOrderRecord, FLAG_ONEWAY,
                       [](AParcel* in) { AParcel_writeInt32(in, 0); }),
              STATUS_DEAD_OBJECT);
    EXPECT_EQ(deaths, 1);
    EXPECT_TRUE(eventually([] {
        return ndk::SpAIBinder(AServiceManager_checkService(kTpsName)).get() == nullptr;
    })) << "the manager still hands out a dead service";
}

}  // namespace
}  // namespace mptest
