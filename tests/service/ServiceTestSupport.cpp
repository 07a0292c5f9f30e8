#include "ServiceTestSupport.h"

#include <stdlib.h>

#include <filesystem>
#include <fstream>

#include "FakeConfigPaths.h"

namespace tps::test {

using aidl::vendor::tavix::tps::Tps;

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
