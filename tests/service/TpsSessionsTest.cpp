#include <android/binder_status.h>

#include <cstdio>

#include "ServiceTestSupport.h"

namespace tps::test {
namespace {

using aidl::vendor::tavix::tps::Tps;
using aidl::vendor::tavix::tps::TpsTestPeer;
using Events = std::vector<std::string>;

// The render and logo sessions follow one scheme with their own texts.
struct SessionKind {
    const char* name;  // the function named in the log lines
    void (Tps::*notify)(bool);
    int32_t (TpsTestPeer::*count)();
    const char *start, *stop, *openLine, *closeLine, *startSkip, *startNotify, *stopSkip,
            *stopNotify;
};

const SessionKind kSessionKinds[] = {
        {"onTavixRenderNotification", &Tps::onTavixRenderNotification, &TpsTestPeer::renderCount,
         "Callback_TavixRenderStart", "Callback_TavixRenderStop",
         "[onTavixRenderNotification] enable: 1, mRenderProcessorCount: %d, mIsRenderPlaying: %d, "
         "callbackCount: 1",
         "[onTavixRenderNotification] enable: 0, mRenderProcessorCount: %d, isRenderPlaying: %d, "
         "callbackCount: 1",
         "skip due to has already notified tavixPrism_Callback_TavixRenderStart",
         "[onTavixRenderNotification] notify tavixPrism_Callback_TavixRenderStart, size: 1",
         "skip due to has already notified tavixPrism_Callback_RenderStop",
         "[onTavixRenderNotification] notify tavixPrism_Callback_RenderStop, size: 1"},
        {"onTavixLogoNotification", &Tps::onTavixLogoNotification, &TpsTestPeer::logoCount,
         "Callback_TavixLogoStart", "Callback_TavixLogoStop",
         "[onTavixLogoNotification] enable: 1, mLogoProcessorCount: %d, isLogoPlaying: %d, "
         "callbackCount: 1",
         "[onTavixLogoNotification] enable: 0, mLogoProcessorCount: %d, isLogoPlaying: %d, "
         "callbackCount: 1",
         "skip due to has already notified tavixPrism_Callback_TavixLogoStart",
         "[onTavixLogoNotification] notify tavixPrism_Callback_TavixLogoStart, size: 1",
         "skip due to has already notified tavixPrism_Callback_LogoStop",
         "[onTavixLogoNotification] notify tavixPrism_Callback_LogoStop, size: 1"},
};

std::string format(const char* pattern, int count, int playing) {
    char text[256];
    snprintf(text, sizeof(text), pattern, count, playing);
    return text;
}

TEST_F(TpsTest, SessionsNotifyOnlyFirstStartAndLastStop) {
    mProperties.setLogLevel(3);
    for (const SessionKind& kind : kSessionKinds) {
        SCOPED_TRACE(kind.name);
        makeService();
        auto open = [&] { (mTps.get()->*kind.notify)(true); };
        auto close = [&] { (mTps.get()->*kind.notify)(false); };
        auto count = [&] {
            TpsTestPeer peer(*mTps);
            return (peer.*kind.count)();
        };
        auto client = addClient();
        mLog.clear();

        // An unbalanced close prints -1, stays at 0 and sends nothing.
        close();
        EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_VERBOSE, kTag, format(kind.closeLine, -1, 0)));
        EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_INFO, kTag, kind.stopSkip));
        EXPECT_EQ(count(), 0);

        open();
        open();
        EXPECT_EQ(client->events(), Events{kind.start});
        EXPECT_EQ(count(), 2);
        EXPECT_EQ(peer().renderCount() + peer().logoCount(), 2) << "the other kind never moves";
        EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_VERBOSE, kTag, format(kind.openLine, 1, 0)));
        EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_VERBOSE, kTag, format(kind.openLine, 2, 1)));
        EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_INFO, kTag, kind.startNotify));
        EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_INFO, kTag, kind.startSkip));

        mLog.clear();
        close();
        EXPECT_EQ(client->events(), Events{kind.start}) << "one holder remains";
        EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_VERBOSE, kTag, format(kind.closeLine, 1, 1)));
        EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_INFO, kTag, kind.stopSkip));
        close();
        EXPECT_EQ(client->events(), (Events{kind.start, kind.stop}));
        EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_INFO, kTag, kind.stopNotify));
        EXPECT_EQ(count(), 0);

        // A start without clients still sets the flag: a later client catches up, once.
        makeService();
        open();
        auto late = addClient();
        open();
        EXPECT_EQ(late->events(), Events{kind.start});
    }
}

TEST_F(TpsTest, FailingClientsAreDroppedAndTheOthersKeepTheirOrder) {
    std::vector<std::string> journal;
    std::mutex journalLock;
    std::vector<std::shared_ptr<RecordingCallback>> clients;
    for (const char* name : {"first", "second", "third", "fourth"}) {
        auto client = ndk::SharedRefBase::make<RecordingCallback>(name);
        client->setHook([&journal, &journalLock, name](const std::string& event) {
            std::lock_guard<std::mutex> lock(journalLock);
            journal.push_back(std::string(name) + ":" + event);
        });
        ASSERT_TRUE(mTps->registerCallback(client).isOk());
        clients.push_back(client);
    }
    clients[1]->failWith(STATUS_DEAD_OBJECT);
    clients[2]->failWith(STATUS_FAILED_TRANSACTION);

    mTps->onTavixRenderNotification(true);
    EXPECT_EQ(journal,
              (Events{"first:Callback_TavixRenderStart", "second:Callback_TavixRenderStart",
                      "third:Callback_TavixRenderStart", "fourth:Callback_TavixRenderStart"}))
            << "a failure does not stop the fan-out";
    EXPECT_EQ(mLog.count(ANDROID_LOG_ERROR, kTag,
                         "onTavixNotification tavixPrism_Callback_TavixRenderStart transaction "
                         "fail"),
              2u);
    EXPECT_EQ(peer().callbackCount(), 2u);

    journal.clear();
    mTps->onTavixRenderNotification(false);
    EXPECT_EQ(journal,
              (Events{"first:Callback_TavixRenderStop", "fourth:Callback_TavixRenderStop"}));

    // A dropped client must register again to be heard; it then comes last.
    clients[1]->failWith(STATUS_OK);
    ASSERT_TRUE(mTps->registerCallback(clients[1]).isOk());
    journal.clear();
    mTps->onTavixLogoNotification(true);
    EXPECT_EQ(journal, (Events{"first:Callback_TavixLogoStart", "fourth:Callback_TavixLogoStart",
                               "second:Callback_TavixLogoStart"}));
}

TEST_F(TpsTest, SensorSessionOwnsTheReaderWhileOpen) {
    mProperties.setLogLevel(3);
    mTps->enableSensorReader(true, false);
    FakeReaderState reader = FakeReader::snapshot();
    EXPECT_EQ(reader.constructed, 1);
    EXPECT_EQ(reader.enableSensorCalls, 1);
    EXPECT_EQ(reader.checkedDisplays, std::vector<int>{0});
    EXPECT_TRUE(peer().hasBrightnessNode());
    EXPECT_TRUE(peer().sensorPlaying());
    EXPECT_FALSE(peer().filterEnabled());
    EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_VERBOSE, kTag,
                             "[enableSensorReader] enable: 1, mSensorProcessorCount: 1, "
                             "mIsSensorPlaying: 0, enableFilter: 0"));

    // A second open only overwrites the filter switch.
    mTps->enableSensorReader(true, true);
    EXPECT_EQ(FakeReader::snapshot().constructed, 1);
    EXPECT_TRUE(peer().filterEnabled());
    EXPECT_EQ(peer().sensorCount(), 2);

    mLog.clear();
    mTps->enableSensorReader(false, false);
    EXPECT_TRUE(peer().hasReader());
    EXPECT_TRUE(peer().filterEnabled()) << "a close leaves the filter switch alone";
    EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_VERBOSE, kTag,
                             "[enableSensorReader] enable: 0, mSensorProcessorCount: 1, "
                             "mIsSensorPlaying: 1"));

    mTps->enableSensorReader(false, true);
    reader = FakeReader::snapshot();
    EXPECT_EQ(reader.disableSensorCalls, 1);
    EXPECT_EQ(reader.alive(), 0);
    EXPECT_FALSE(peer().hasReader());
    EXPECT_FALSE(peer().sensorPlaying());

    // An unbalanced close prints -1 and stays at 0; the next open makes a fresh reader.
    mLog.clear();
    mTps->enableSensorReader(false, true);
    EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_VERBOSE, kTag,
                             "[enableSensorReader] enable: 0, mSensorProcessorCount: -1, "
                             "mIsSensorPlaying: 0"));
    EXPECT_EQ(peer().sensorCount(), 0);
    mTps->enableSensorReader(true, true);
    EXPECT_EQ(FakeReader::snapshot().constructed, 2);
    EXPECT_EQ(peer().sensorCount(), 1);
}

TEST_F(TpsTest, NewReaderChecksTheCurrentDisplay) {
    set("displayID=1");
    EXPECT_TRUE(FakeReader::snapshot().checkedDisplays.empty()) << "no reader yet";
    FakeReader::update([](FakeReaderState& s) { s.nodeCheckResult = false; });
    mTps->enableSensorReader(true, true);
    EXPECT_EQ(FakeReader::snapshot().checkedDisplays, std::vector<int>{1});
    EXPECT_FALSE(peer().hasBrightnessNode());
}

TEST_F(TpsTest, RegisterProcessorDrivesAllThreeSessions) {
    auto client = addClient();
    ASSERT_TRUE(mTps->registerProcessor(false).isOk());
    EXPECT_EQ(client->events(), (Events{"Callback_TavixRenderStart", "Callback_TavixLogoStart"}));
    EXPECT_EQ(peer().sensorCount(), 1);
    EXPECT_FALSE(peer().filterEnabled());

    ASSERT_TRUE(mTps->unregisterProcessor().isOk());
    EXPECT_EQ(client->events(), (Events{"Callback_TavixRenderStart", "Callback_TavixLogoStart",
                                        "Callback_TavixRenderStop", "Callback_TavixLogoStop"}));
    EXPECT_FALSE(peer().hasReader());

    // With nothing registered it changes nothing and sends nothing.
    ASSERT_TRUE(mTps->unregisterProcessor().isOk());
    EXPECT_EQ(client->events().size(), 4u);
    EXPECT_EQ(peer().renderCount(), 0);
    EXPECT_EQ(peer().logoCount(), 0);
    EXPECT_EQ(peer().sensorCount(), 0);
}

struct ProcessorKey {
    const char* key;
    bool render;
    bool logo;
};

TEST_F(TpsTest, ProcessorKeysOpenAndCloseTheirSessions) {
    const ProcessorKey keys[] = {
            {"TPDPUProcessor", true, true},       {"TPC2Processor", false, true},
            {"SDRDPUProcessor", true, false},     {"SDRC2Processor", false, false},
            {"TPPreviewProcessor", false, false},
    };
    for (const ProcessorKey& k : keys) {
        SCOPED_TRACE(k.key);
        makeService();
        FakeReader::reset();
        auto client = addClient();

        set(std::string("register_") + k.key + "=1");
        EXPECT_EQ(peer().renderCount(), k.render ? 1 : 0);
        EXPECT_EQ(peer().logoCount(), k.logo ? 1 : 0);
        EXPECT_EQ(peer().sensorCount(), 1);
        EXPECT_TRUE(peer().filterEnabled());
        Events opened;
        if (k.render) opened.push_back("Callback_TavixRenderStart");
        if (k.logo) opened.push_back("Callback_TavixLogoStart");
        EXPECT_EQ(client->events(), opened);

        // The value is the filter switch of the sensor session.
        set(std::string("register_") + k.key + "=0");
        EXPECT_FALSE(peer().filterEnabled());
        EXPECT_EQ(peer().sensorCount(), 2);

        // The Unregister key acts whatever its value, also without one.
        set(std::string("Unregister_") + k.key);
        set(std::string("Unregister_") + k.key + "=whatever");
        EXPECT_EQ(peer().renderCount(), 0);
        EXPECT_EQ(peer().logoCount(), 0);
        EXPECT_EQ(peer().sensorCount(), 0);
        EXPECT_FALSE(peer().hasReader());
        Events closed = opened;
        if (k.render) closed.push_back("Callback_TavixRenderStop");
        if (k.logo) closed.push_back("Callback_TavixLogoStop");
        EXPECT_EQ(client->events(), closed);

        // A register key without an integer value does nothing.
        set(std::string("register_") + k.key);
        set(std::string("register_") + k.key + "=yes");
        EXPECT_EQ(peer().sensorCount(), 0);
        EXPECT_EQ(client->events(), closed);
    }
}

TEST_F(TpsTest, RegisterRunsBeforeUnregisterInOneString) {
    auto client = addClient();
    set("Unregister_SDRDPUProcessor;register_SDRDPUProcessor=1");
    EXPECT_EQ(client->events(), (Events{"Callback_TavixRenderStart", "Callback_TavixRenderStop"}));
    EXPECT_EQ(peer().sensorCount(), 0);
    EXPECT_EQ(FakeReader::snapshot().constructed, 1);
    EXPECT_FALSE(peer().hasReader());
}

TEST_F(TpsTest, LaterOpenSwitchesFilteringOnForTheRunningReader) {
    set("register_TPPreviewProcessor=0");
    EXPECT_FALSE(peer().filterEnabled());
    set("register_SDRC2Processor=1");
    EXPECT_TRUE(peer().filterEnabled());
    EXPECT_EQ(FakeReader::snapshot().constructed, 1);
    status();
    EXPECT_EQ(FakeReader::snapshot().ambientLuxFiltered, std::vector<bool>{true});
}

}  // namespace
}  // namespace tps::test
