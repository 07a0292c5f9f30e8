#include "ServiceTestSupport.h"

namespace tps::test {
namespace {

class TpsLoggingTest : public TpsTest {};

TEST_F(TpsLoggingTest, LevelPropertyIsReadForEveryMessage) {
    auto client = ndk::SharedRefBase::make<RecordingCallback>();
    client->failWith(STATUS_DEAD_OBJECT);

    struct Case {
        int level;
        bool verbose, debug, info;
    };
    for (const Case& c : {Case{0, false, false, false}, Case{1, false, false, true},
                          Case{2, false, true, true}, Case{3, true, true, true}}) {
        SCOPED_TRACE(c.level);
        mProperties.setLogLevel(c.level);
        ASSERT_TRUE(mTps->registerCallback(client).isOk());
        mLog.clear();
        // One call writing a line at each level.
        set("register_SDRDPUProcessor=1");
        EXPECT_EQ(mLog.count(ANDROID_LOG_VERBOSE, kTag,
                             "[onTavixRenderNotification] enable: 1, mRenderProcessorCount: 1, "
                             "mIsRenderPlaying: 0, callbackCount: 1"),
                  c.verbose ? 1u : 0u);
        EXPECT_EQ(mLog.count(ANDROID_LOG_DEBUG, kTag, "setParameters: register_SDRDPUProcessor=1"),
                  c.debug ? 1u : 0u);
        EXPECT_EQ(mLog.count(ANDROID_LOG_INFO, kTag,
                             "[onTavixRenderNotification] notify "
                             "tavixPrism_Callback_TavixRenderStart, size: 1"),
                  c.info ? 1u : 0u);
        EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_ERROR, kTag,
                                 "onTavixNotification tavixPrism_Callback_TavixRenderStart "
                                 "transaction fail"))
                << "errors are written at every level";
        ASSERT_TRUE(mTps->setParameters("Unregister_SDRDPUProcessor").isOk());
    }
}

TEST_F(TpsLoggingTest, DefaultLevelIsTwo) {
    // No level property at all: DEBUG and INFO are written, VERBOSE is not.
    set("pqMode=1");
    EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_DEBUG, kTag, "setParameters: pqMode=1"));
    EXPECT_TRUE(mLog.hasNoneContaining("Set Property"));
}

}  // namespace
}  // namespace tps::test
