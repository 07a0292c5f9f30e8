// The version and hash caches that both proxies keep, checked on both.

#include <aidl/vendor/tavix/tps/BpTps.h>
#include <aidl/vendor/tavix/tps/BpTpsCallback.h>
#include <gtest/gtest.h>

#include "ScriptedProxy.h"

namespace aidl::vendor::tavix::tps::test {
namespace {

template <typename Interface>
class ProxyCacheTest : public ::testing::Test, protected ScriptedProxy<Interface> {};

using Interfaces = ::testing::Types<ITps, ITpsCallback>;
TYPED_TEST_SUITE(ProxyCacheTest, Interfaces);

TYPED_TEST(ProxyCacheTest, AskedUntilOneAnswerSucceedsThenNeverAgain) {
    constexpr transaction_code_t kVersionCode = 16777215;
    constexpr transaction_code_t kHashCode = 16777214;
    auto& proxy = *this->mProxy;
    int32_t version = 77;
    std::string hash;
    this->failWith(STATUS_DEAD_OBJECT);
    EXPECT_EQ(proxy.getInterfaceVersion(&version).getStatus(), STATUS_DEAD_OBJECT);
    EXPECT_EQ(proxy.getInterfaceHash(&hash).getStatus(), STATUS_DEAD_OBJECT);
    this->answerWith(Wire().exception(EX_ILLEGAL_STATE));
    EXPECT_EQ(proxy.getInterfaceVersion(&version).getExceptionCode(), EX_ILLEGAL_STATE);
    this->answerWith(Wire().ok());  // the int is missing
    EXPECT_FALSE(proxy.getInterfaceVersion(&version).isOk());
    // "-1" is the cache's own "not asked yet", so such an answer is asked for again.
    this->answerWith(Wire().ok().str("-1"));
    EXPECT_TRUE(proxy.getInterfaceHash(&hash).isOk());
    EXPECT_EQ(hash, "-1");
    EXPECT_TRUE(proxy.getInterfaceHash(&hash).isOk());
    EXPECT_EQ(this->mRemote.countOf(kVersionCode), 3u);
    EXPECT_EQ(this->mRemote.countOf(kHashCode), 3u);

    this->answerWith(Wire().ok().i32(1));
    EXPECT_TRUE(proxy.getInterfaceVersion(&version).isOk());
    this->answerWith(Wire().ok().str(TypeParam::hash));
    EXPECT_TRUE(proxy.getInterfaceHash(&hash).isOk());
    this->failWith(STATUS_DEAD_OBJECT);
    version = 0;
    hash.clear();
    EXPECT_TRUE(proxy.getInterfaceVersion(&version).isOk());
    EXPECT_TRUE(proxy.getInterfaceHash(&hash).isOk());
    EXPECT_EQ(version, 1);
    EXPECT_EQ(hash, TypeParam::hash);
    EXPECT_EQ(this->mRemote.countOf(kVersionCode), 4u);
    EXPECT_EQ(this->mRemote.countOf(kHashCode), 4u);
}

}  // namespace
}  // namespace aidl::vendor::tavix::tps::test
