// How interface objects and binders map onto each other: fromBinder, asBinder, parceling and
// stability.

#include <aidl/vendor/tavix/tps/BpTps.h>
#include <aidl/vendor/tavix/tps/BpTpsCallback.h>
#include <gtest/gtest.h>

#include "Mocks.h"
#include "ScriptedProxy.h"

namespace aidl::vendor::tavix::tps::test {
namespace {

using ::testing::NiceMock;

TEST(FromBinderTest, LocalObjectItselfOrAProxyOfTheSameDescriptorOnly) {
    auto tps = ::ndk::SharedRefBase::make<NiceMock<MockTps>>();
    auto callback = ::ndk::SharedRefBase::make<NiceMock<MockTpsCallback>>();
    EXPECT_EQ(ITps::fromBinder(tps->asBinder()).get(), tps.get());
    EXPECT_EQ(ITpsCallback::fromBinder(callback->asBinder()).get(), callback.get());
    EXPECT_FALSE(tps->isRemote());

    auto noAnswer = [](transaction_code_t, const AParcel*, AParcel*) { return STATUS_OK; };
    RecordingBinder sameTps(ITps::descriptor, noAnswer);
    RecordingBinder sameCallback(ITpsCallback::descriptor, noAnswer);
    RecordingBinder other("vendor.tavix.tps.ITpsCallbackX", noAnswer);
    EXPECT_NE(std::dynamic_pointer_cast<BpTps>(ITps::fromBinder(sameTps.binder())), nullptr);
    std::shared_ptr<ITpsCallback> proxy = ITpsCallback::fromBinder(sameCallback.binder());
    EXPECT_NE(std::dynamic_pointer_cast<BpTpsCallback>(proxy), nullptr);
    EXPECT_EQ(proxy->asBinder().get(), sameCallback.binder().get());

    EXPECT_EQ(ITpsCallback::fromBinder(other.binder()), nullptr);
    EXPECT_EQ(ITpsCallback::fromBinder(sameTps.binder()), nullptr);
    EXPECT_EQ(ITpsCallback::fromBinder(tps->asBinder()), nullptr);
    EXPECT_EQ(ITpsCallback::fromBinder(::ndk::SpAIBinder()), nullptr);
    EXPECT_EQ(ITps::fromBinder(::ndk::SpAIBinder()), nullptr);
}

TEST(AsBinderTest, OneBinderWhileHeldAFreshOneAfterwards) {
    auto tps = ::ndk::SharedRefBase::make<NiceMock<MockTps>>();
    const long ownersAlone = tps.use_count();
    ::ndk::SpAIBinder first = tps->asBinder();
    EXPECT_EQ(tps->asBinder().get(), first.get());
    // The binder's user data keeps the implementation alive.
    EXPECT_EQ(tps.use_count(), ownersAlone + 1);

    ::ndk::ScopedAIBinder_Weak firstWeak(AIBinder_Weak_new(first.get()));
    first = ::ndk::SpAIBinder();
    EXPECT_EQ(tps.use_count(), ownersAlone);
    EXPECT_EQ(firstWeak.promote().get(), nullptr);

    ::ndk::SpAIBinder second = tps->asBinder();
    ASSERT_NE(second.get(), nullptr);
    EXPECT_EQ(firstWeak.promote().get(), nullptr);
    EXPECT_EQ(ITps::fromBinder(second).get(), tps.get());
}

TEST(StabilityTest, CreatedBindersAreVintfStable) {
    auto tps = ::ndk::SharedRefBase::make<NiceMock<MockTps>>();
    auto callback = ::ndk::SharedRefBase::make<NiceMock<MockTpsCallback>>();
    for (const ::ndk::SpAIBinder& binder : {tps->asBinder(), callback->asBinder()}) {
        // The stability level follows the 24-byte object; 0x3f is VINTF.
        ::ndk::ScopedAParcel parcel(AParcel_create());
        ASSERT_EQ(AParcel_writeStrongBinder(parcel.get(), binder.get()), STATUS_OK);
        int32_t stability = -1;
        AParcel_setDataPosition(parcel.get(), 24);
        EXPECT_EQ(AParcel_readInt32(parcel.get(), &stability), STATUS_OK);
        EXPECT_EQ(stability, 0x3f);
    }
}

}  // namespace
}  // namespace aidl::vendor::tavix::tps::test
