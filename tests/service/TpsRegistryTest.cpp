#include <android/binder_status.h>

#include "ServiceTestSupport.h"

namespace tps::test {
namespace {

using Events = std::vector<std::string>;

TEST_F(TpsTest, ConstructionReadsTheModePropertyAsAtoiDoes) {
    struct Case {
        const char* stored;  // nullptr: property unset
        int32_t mode;
    };
    for (const Case& c : {Case{nullptr, 0}, Case{"2", 2}, Case{"3", 3}, Case{"abc", 0},
                          Case{"7x", 7}, Case{"-1", -1}}) {
        ScopedPropertyDir properties;
        if (c.stored != nullptr) properties.set("persist.vendor.tavixp.mode", c.stored);
        makeService();
        EXPECT_EQ(peer().mode(), c.mode) << (c.stored ? c.stored : "(unset)");
        EXPECT_EQ(status().at(2), static_cast<float>(c.mode));
    }
}

TEST_F(TpsTest, ConstructionTakesDisplaysAndBluModeFromTheConfiguration) {
    // No file: no display ids, BLU mode 0.
    std::vector<int32_t> ids = {42};
    ASSERT_TRUE(mTps->getDisplayIDs(&ids).isOk());
    EXPECT_TRUE(ids.empty());
    EXPECT_EQ(peer().bluMode(), 0);

    useConfig("BLUMode = 2\n[Display]\nDisplayID = 0\n[Display]\nDisplayID = 1\n");
    makeService();
    ASSERT_TRUE(mTps->getDisplayIDs(&ids).isOk());
    EXPECT_EQ(ids, (std::vector<int32_t>{0, 1}));
    EXPECT_EQ(peer().bluMode(), 2);

    // A file without display sections stands for the default display.
    useConfig("BLUMode = 1\n");
    makeService();
    ASSERT_TRUE(mTps->getDisplayIDs(&ids).isOk());
    EXPECT_EQ(ids, std::vector<int32_t>{0});
    EXPECT_EQ(peer().bluMode(), 1);
}

TEST_F(TpsTest, ConstructionAndDestructionLog) {
    mProperties.setLogLevel(3);
    mProperties.set("persist.vendor.tavixp.mode", "1");
    makeService();
    EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_INFO, kTag, "Tps()"));
    EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_VERBOSE, kTag, "Got the system property: 1 , ret: 1"));

    addClient();
    addClient();
    mLog.clear();
    mTps.reset();
    EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_INFO, kTag, "~Tps()"));
    EXPECT_TRUE(
            mLog.hasOnce(ANDROID_LOG_DEBUG, kTag, "[~Tps] clear callbacks from clients, size: 2"));

    // Without clients there is nothing to clear and no such line.
    makeService();
    mLog.clear();
    mTps.reset();
    EXPECT_TRUE(mLog.hasNoneContaining("clear callbacks"));
}

TEST_F(TpsTest, DestructionReleasesClientsAndAnOpenReader) {
    auto client = ndk::SharedRefBase::make<RecordingCallback>();
    std::weak_ptr<RecordingCallback> watcher = client;
    ASSERT_TRUE(mTps->registerCallback(client).isOk());
    client.reset();
    ASSERT_FALSE(watcher.expired()) << "the service holds its clients";

    ASSERT_TRUE(mTps->registerProcessor(true).isOk());
    mTps.reset();
    EXPECT_TRUE(watcher.expired());
    FakeReaderState reader = FakeReader::snapshot();
    EXPECT_EQ(reader.alive(), 0);
    EXPECT_EQ(reader.disableSensorCalls, 0) << "destruction drops the reader without disabling";
}

TEST_F(TpsTest, NullCallbackIsRefusedWithUnsupportedOperation) {
    mProperties.setLogLevel(3);
    ndk::ScopedAStatus result = mTps->registerCallback(nullptr);
    EXPECT_EQ(result.getExceptionCode(), EX_UNSUPPORTED_OPERATION);
    EXPECT_EQ(peer().callbackCount(), 0u);
    ASSERT_EQ(mLog.lines().size(), 1u) << mLog.dump();
    EXPECT_TRUE(mLog.has(ANDROID_LOG_VERBOSE, kTag, "Assigning callback"));
}

TEST_F(TpsTest, DuplicateRegistrationsAreEachNotified) {
    auto client = ndk::SharedRefBase::make<RecordingCallback>();
    ASSERT_TRUE(mTps->registerCallback(client).isOk());
    ASSERT_TRUE(mTps->registerCallback(client).isOk());
    EXPECT_EQ(peer().callbackCount(), 2u);

    mTps->onTavixRenderNotification(true);
    EXPECT_EQ(client->events(), (Events{"Callback_TavixRenderStart", "Callback_TavixRenderStart"}));
}

TEST_F(TpsTest, CatchUpTellsANewClientOfRunningSessionsLogoFirst) {
    // Nothing running: nothing to catch up on.
    auto early = addClient();
    EXPECT_TRUE(early->events().empty());

    mTps->onTavixLogoNotification(true);
    auto logoOnly = addClient();
    EXPECT_EQ(logoOnly->events(), Events{"Callback_TavixLogoStart"});

    mTps->onTavixRenderNotification(true);
    mProperties.setLogLevel(2);
    mLog.clear();
    auto both = addClient();
    EXPECT_EQ(both->events(), (Events{"Callback_TavixLogoStart", "Callback_TavixRenderStart"}));
    EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_DEBUG, kTag,
                             "[maybeNeedToRegisterProcessor] notify "
                             "tavixPrism_Callback_TavixLogoStart"));
    EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_DEBUG, kTag,
                             "[maybeNeedToRegisterProcessor] notify "
                             "tavixPrism_Callback_TavixRenderStart"));

    // After the last close neither count nor flag allows a catch-up.
    mTps->onTavixRenderNotification(false);
    mTps->onTavixLogoNotification(false);
    auto late = addClient();
    EXPECT_TRUE(late->events().empty());
}

TEST_F(TpsTest, CatchUpNeedsTheFlagAsWellAsTheCount) {
    // An unbalanced close leaves count 0 and flag false; a later open sets both again.
    mTps->onTavixRenderNotification(false);
    auto client = addClient();
    EXPECT_TRUE(client->events().empty());
    mTps->onTavixRenderNotification(true);
    auto next = addClient();
    EXPECT_EQ(next->events(), Events{"Callback_TavixRenderStart"});
}

TEST_F(TpsTest, FailedCatchUpKeepsTheClientAndLogsBothTexts) {
    mTps->onTavixLogoNotification(true);
    mTps->onTavixRenderNotification(true);

    auto failing = ndk::SharedRefBase::make<RecordingCallback>();
    failing->failWith(STATUS_DEAD_OBJECT);
    mLog.clear();
    EXPECT_TRUE(mTps->registerCallback(failing).isOk()) << "registration succeeds regardless";
    EXPECT_EQ(failing->events(), (Events{"Callback_TavixLogoStart", "Callback_TavixRenderStart"}));
    EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_ERROR, kTag, "onTavixPrismPlayback transaction fail"));
    EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_ERROR, kTag, "onTavixNotification transaction fail"));
    EXPECT_EQ(peer().callbackCount(), 1u);

    // The fan-out, unlike the catch-up, drops it.
    mTps->onTavixLogoNotification(false);
    EXPECT_EQ(peer().callbackCount(), 0u);
}

}  // namespace
}  // namespace tps::test
