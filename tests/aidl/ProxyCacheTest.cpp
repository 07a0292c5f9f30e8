// The version and hash caches that both proxies keep, checked on both.

#include <aidl/vendor/tavix/tps/BpTps.h>
#include <aidl/vendor/tavix/tps/BpTpsCallback.h>
#include <gtest/gtest.h>

#include "ScriptedBinder.h"
#include "Wire.h"

namespace aidl::vendor::tavix::tps::test {
namespace {

constexpr transaction_code_t kVersionCode = 16777215;
constexpr transaction_code_t kHashCode = 16777214;

template <typename Interface>
class ProxyCacheTest : public ::testing::Test {
protected:
    ScriptedBinder::Handler mAnswer;
    ScriptedBinder mRemote{Interface::descriptor,
                           [this](transaction_code_t code, const AParcel* in, AParcel* out) {
                               return mAnswer(code, in, out);
                           }};
    std::shared_ptr<Interface> mProxy = Interface::fromBinder(mRemote.binder());

    void answerWith(const Wire& wire) {
        mAnswer = [wire](transaction_code_t, const AParcel*, AParcel* reply) {
            return AParcel_unmarshal(reply, wire.bytes().data(), wire.bytes().size());
        };
    }
    void failWith(binder_status_t status) {
        mAnswer = [status](transaction_code_t, const AParcel*, AParcel*) { return status; };
    }
};

using Interfaces = ::testing::Types<ITps, ITpsCallback>;
TYPED_TEST_SUITE(ProxyCacheTest, Interfaces);

TYPED_TEST(ProxyCacheTest, VersionIsAskedUntilOneAnswerSucceedsThenNeverAgain) {
    int32_t version = 77;
    this->failWith(STATUS_DEAD_OBJECT);
    EXPECT_EQ(this->mProxy->getInterfaceVersion(&version).getStatus(), STATUS_DEAD_OBJECT);
    this->answerWith(Wire().exception(EX_ILLEGAL_STATE));
    EXPECT_EQ(this->mProxy->getInterfaceVersion(&version).getExceptionCode(), EX_ILLEGAL_STATE);
    this->answerWith(Wire().ok());  // the int is missing
    EXPECT_FALSE(this->mProxy->getInterfaceVersion(&version).isOk());
    EXPECT_EQ(this->mRemote.countOf(kVersionCode), 3u);

    this->answerWith(Wire().ok().i32(1));
    EXPECT_TRUE(this->mProxy->getInterfaceVersion(&version).isOk());
    EXPECT_EQ(version, 1);
    this->failWith(STATUS_DEAD_OBJECT);
    version = 0;
    EXPECT_TRUE(this->mProxy->getInterfaceVersion(&version).isOk());
    EXPECT_EQ(version, 1);
    EXPECT_EQ(this->mRemote.countOf(kVersionCode), 4u);
}

TYPED_TEST(ProxyCacheTest, HashIsAskedUntilOneAnswerSucceedsThenNeverAgain) {
    std::string hash;
    this->failWith(STATUS_DEAD_OBJECT);
    EXPECT_EQ(this->mProxy->getInterfaceHash(&hash).getStatus(), STATUS_DEAD_OBJECT);
    // "-1" is the cache's own "not asked yet", so such an answer is asked for again.
    this->answerWith(Wire().ok().str("-1"));
    EXPECT_TRUE(this->mProxy->getInterfaceHash(&hash).isOk());
    EXPECT_EQ(hash, "-1");
    EXPECT_TRUE(this->mProxy->getInterfaceHash(&hash).isOk());
    EXPECT_EQ(this->mRemote.countOf(kHashCode), 3u);

    this->answerWith(Wire().ok().str(TypeParam::hash));
    EXPECT_TRUE(this->mProxy->getInterfaceHash(&hash).isOk());
    this->failWith(STATUS_DEAD_OBJECT);
    hash.clear();
    EXPECT_TRUE(this->mProxy->getInterfaceHash(&hash).isOk());
    EXPECT_EQ(hash, TypeParam::hash);
    EXPECT_EQ(this->mRemote.countOf(kHashCode), 4u);
}

}  // namespace
}  // namespace aidl::vendor::tavix::tps::test
