#include "ServiceTestSupport.h"

#include <stdlib.h>

#include <filesystem>
#include <fstream>

#include "FakeConfigPaths.h"

namespace aidl::vendor::tavix::tps {

int32_t TpsTestPeer::renderCount() {
    std::lock_guard<std::mutex> lock(mTps.mCallbackLock);
    return mTps.mRenderProcessorCount;
}

bool TpsTestPeer::renderPlaying() {
    std::lock_guard<std::mutex> lock(mTps.mCallbackLock);
    return mTps.mIsRenderPlaying;
}

int32_t TpsTestPeer::logoCount() {
    std::lock_guard<std::mutex> lock(mTps.mCallbackLock);
    return mTps.mLogoProcessorCount;
}

bool TpsTestPeer::logoPlaying() {
    std::lock_guard<std::mutex> lock(mTps.mCallbackLock);
    return mTps.mIsLogoPlaying;
}

size_t TpsTestPeer::callbackCount() {
    std::lock_guard<std::mutex> lock(mTps.mCallbackLock);
    return mTps.mCallbacks.size();
}

bool TpsTestPeer::hasReader() {
    std::lock_guard<std::mutex> lock(mTps.mSensorLock);
    return mTps.mSensorReader != nullptr;
}

bool TpsTestPeer::hasBrightnessNode() {
    std::lock_guard<std::mutex> lock(mTps.mSensorLock);
    return mTps.mHasBrightnessNode;
}

int32_t TpsTestPeer::mode() {
    std::shared_lock<std::shared_mutex> lock(mTps.mStatusLock);
    return mTps.mStatus.mMode;
}

int32_t TpsTestPeer::displayId() {
    std::shared_lock<std::shared_mutex> lock(mTps.mStatusLock);
    return mTps.mStatus.mDisplayId;
}

int32_t TpsTestPeer::reportedBrightness() {
    std::shared_lock<std::shared_mutex> lock(mTps.mStatusLock);
    return mTps.mStatus.mReportedBrightness;
}

}  // namespace aidl::vendor::tavix::tps

namespace tps::test {

using aidl::vendor::tavix::tps::Tps;

ndk::ScopedAStatus RecordingCallback::onTavixNotification(const std::string& event) {
    std::function<void(const std::string&)> hook;
    binder_status_t failure;
    {
        std::lock_guard<std::mutex> lock(mLock);
        mEvents.push_back(event);
        hook = mHook;
        failure = mFailure;
    }
    if (hook) hook(event);
    if (failure != STATUS_OK) return ndk::ScopedAStatus::fromStatus(failure);
    return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus RecordingCallback::onTavixPrismPlaybackStart(bool* handled) {
    ADD_FAILURE() << "the service never calls onTavixPrismPlaybackStart";
    *handled = false;
    return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus RecordingCallback::onTavixPrismPlaybackStop(bool* handled) {
    ADD_FAILURE() << "the service never calls onTavixPrismPlaybackStop";
    *handled = false;
    return ndk::ScopedAStatus::ok();
}

std::vector<std::string> RecordingCallback::events() const {
    std::lock_guard<std::mutex> lock(mLock);
    return mEvents;
}

void RecordingCallback::failWith(binder_status_t status) {
    std::lock_guard<std::mutex> lock(mLock);
    mFailure = status;
}

void RecordingCallback::setHook(std::function<void(const std::string&)> hook) {
    std::lock_guard<std::mutex> lock(mLock);
    mHook = std::move(hook);
}

void TpsTest::SetUp() {
    FakeReader::reset();
    setConfigPath("/nonexistent/tavix_prism.cfg");
    makeService();
    mLog.clear();
}

void TpsTest::TearDown() {
    mTps.reset();
    setConfigPath("/nonexistent/tavix_prism.cfg");
    if (!mConfigDir.empty()) std::filesystem::remove_all(mConfigDir);
}

void TpsTest::useConfig(const std::string& text) {
    if (mConfigDir.empty()) {
        std::string pattern = (std::filesystem::temp_directory_path() / "tps-cfg-XXXXXX").string();
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        mConfigDir = pattern;
    }
    const std::string path = mConfigDir + "/tavix_prism_clstc.cfg";
    std::ofstream(path) << text;
    setConfigPath(path);
}

std::shared_ptr<Tps> TpsTest::makeService() {
    mTps.reset();
    mTps = ndk::SharedRefBase::make<Tps>();
    return mTps;
}

std::shared_ptr<RecordingCallback> TpsTest::addClient(const std::string& name) {
    auto client = ndk::SharedRefBase::make<RecordingCallback>(name);
    EXPECT_TRUE(mTps->registerCallback(client).isOk());
    return client;
}

std::vector<float> TpsTest::status() {
    std::vector<float> values;
    EXPECT_TRUE(mTps->getTavixPrismStatus(&values).isOk());
    return values;
}

std::string TpsTest::get(const std::string& keys) {
    std::string reply = "unchanged";
    EXPECT_TRUE(mTps->getParameters(keys, &reply).isOk());
    return reply;
}

void TpsTest::set(const std::string& keyValuePairs) {
    EXPECT_TRUE(mTps->setParameters(keyValuePairs).isOk());
}

}  // namespace tps::test
