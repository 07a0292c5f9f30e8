#pragma once

#include <aidl/vendor/tavix/tps/BnTpsCallback.h>
#include <android/binder_status.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "FakeSensorReader.h"
#include "LogCapture.h"
#include "Tps.h"

namespace aidl::vendor::tavix::tps {

// Reads and sets the service's private state where no method reports it.
class TpsTestPeer {
public:
    explicit TpsTestPeer(Tps& tps) : mTps(tps) {}

    int32_t renderCount();
    bool renderPlaying();
    int32_t logoCount();
    bool logoPlaying();
    size_t callbackCount();
    int32_t sensorCount() { return mTps.mSensorProcessorCount; }
    bool sensorPlaying() { return mTps.mIsSensorPlaying; }
    bool filterEnabled() { return mTps.mEnableFilter; }
    bool hasReader();
    bool hasBrightnessNode();
    int32_t bluMode() { return mTps.mBluMode; }
    void setBluMode(int32_t mode) { mTps.mBluMode = mode; }
    int32_t mode();
    int32_t displayId();
    int32_t reportedBrightness();

private:
    Tps& mTps;
};

}  // namespace aidl::vendor::tavix::tps

namespace tps::test {

// A client living in the test process. Records every event; can be told to fail its calls, as a
// client whose process died does.
class RecordingCallback : public aidl::vendor::tavix::tps::BnTpsCallback {
public:
    explicit RecordingCallback(std::string name = "") : mName(std::move(name)) {}

    ndk::ScopedAStatus onTavixNotification(const std::string& event) override;
    ndk::ScopedAStatus onTavixPrismPlaybackStart(bool* handled) override;
    ndk::ScopedAStatus onTavixPrismPlaybackStop(bool* handled) override;

    std::vector<std::string> events() const;
    void failWith(binder_status_t status);
    // Runs inside each notification, e.g. to record into a shared journal.
    void setHook(std::function<void(const std::string& event)> hook);
    const std::string& name() const { return mName; }

private:
    const std::string mName;
    mutable std::mutex mLock;
    std::vector<std::string> mEvents;               // guarded by mLock
    binder_status_t mFailure = STATUS_OK;           // guarded by mLock
    std::function<void(const std::string&)> mHook;  // guarded by mLock
};

// A fresh service per test, with a private property store, a captured log and a reset fake
// sensor reader.
class TpsTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    // Builds the service now; tests that need properties in place first call it themselves.
    std::shared_ptr<aidl::vendor::tavix::tps::Tps> makeService();
    std::shared_ptr<RecordingCallback> addClient(const std::string& name = "");
    // Makes the next service read this configuration file text.
    void useConfig(const std::string& text);

    std::vector<float> status();
    std::string get(const std::string& keys);
    void set(const std::string& keyValuePairs);

    aidl::vendor::tavix::tps::TpsTestPeer peer() {
        return aidl::vendor::tavix::tps::TpsTestPeer(*mTps);
    }

    ScopedPropertyDir mProperties;
    LogCapture mLog;
    std::shared_ptr<aidl::vendor::tavix::tps::Tps> mTps;
    std::string mConfigDir;
};

// Lines of the service's own tag only.
inline constexpr char kTag[] = "TavixPrismAIDLService";

}  // namespace tps::test

#include <map>

namespace tps::test {

// A getParameters reply as a map: the service's pair order is unspecified.
inline std::map<std::string, std::string> pairsOf(const std::string& reply) {
    std::map<std::string, std::string> pairs;
    size_t start = 0;
    while (start < reply.size()) {
        size_t end = reply.find(';', start);
        if (end == std::string::npos) end = reply.size();
        std::string token = reply.substr(start, end - start);
        size_t eq = token.find('=');
        pairs[token.substr(0, eq)] = eq == std::string::npos ? "" : token.substr(eq + 1);
        start = end + 1;
    }
    return pairs;
}

}  // namespace tps::test
