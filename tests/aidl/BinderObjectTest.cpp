// How interface objects and binders map onto each other: fromBinder, asBinder, parceling,
// stability and the inherited dump.

#include <aidl/vendor/tavix/tps/BpTps.h>
#include <aidl/vendor/tavix/tps/BpTpsCallback.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "Mocks.h"
#include "ScriptedBinder.h"

namespace aidl::vendor::tavix::tps::test {
namespace {

using ::testing::NiceMock;

TEST(FromBinderTest, LocalObjectIsReturnedItself) {
    auto tps = ::ndk::SharedRefBase::make<NiceMock<MockTps>>();
    auto callback = ::ndk::SharedRefBase::make<NiceMock<MockTpsCallback>>();
    EXPECT_EQ(ITps::fromBinder(tps->asBinder()).get(), tps.get());
    EXPECT_EQ(ITpsCallback::fromBinder(callback->asBinder()).get(), callback.get());
    EXPECT_FALSE(tps->isRemote());
}

TEST(FromBinderTest, ForeignClassNeedsTheSameDescriptor) {
    auto noAnswer = [](transaction_code_t, const AParcel*, AParcel*) { return STATUS_OK; };
    ScriptedBinder sameTps(ITps::descriptor, noAnswer);
    ScriptedBinder sameCallback(ITpsCallback::descriptor, noAnswer);
    ScriptedBinder other("vendor.tavix.tps.ITpsCallbackX", noAnswer);

    std::shared_ptr<ITps> tps = ITps::fromBinder(sameTps.binder());
    EXPECT_NE(std::dynamic_pointer_cast<BpTps>(tps), nullptr);
    std::shared_ptr<ITpsCallback> callback = ITpsCallback::fromBinder(sameCallback.binder());
    EXPECT_NE(std::dynamic_pointer_cast<BpTpsCallback>(callback), nullptr);
    EXPECT_EQ(callback->asBinder().get(), sameCallback.binder().get());

    EXPECT_EQ(ITpsCallback::fromBinder(other.binder()), nullptr);
    EXPECT_EQ(ITpsCallback::fromBinder(sameTps.binder()), nullptr);
    auto service = ::ndk::SharedRefBase::make<NiceMock<MockTps>>();
    EXPECT_EQ(ITpsCallback::fromBinder(service->asBinder()), nullptr);
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

// The stability level follows the 24-byte object when a binder is parceled; 0x3f is VINTF.
int32_t stabilityOnTheWire(const ::ndk::SpAIBinder& binder) {
    ::ndk::ScopedAParcel parcel(AParcel_create());
    EXPECT_EQ(AParcel_writeStrongBinder(parcel.get(), binder.get()), STATUS_OK);
    int32_t stability = -1;
    AParcel_setDataPosition(parcel.get(), 24);
    EXPECT_EQ(AParcel_readInt32(parcel.get(), &stability), STATUS_OK);
    return stability;
}

TEST(StabilityTest, CreatedBindersAreVintfStable) {
    auto tps = ::ndk::SharedRefBase::make<NiceMock<MockTps>>();
    auto callback = ::ndk::SharedRefBase::make<NiceMock<MockTpsCallback>>();
    EXPECT_EQ(stabilityOnTheWire(tps->asBinder()), 0x3f);
    EXPECT_EQ(stabilityOnTheWire(callback->asBinder()), 0x3f);
}

TEST(DumpTest, InheritedDumpPrintsNothingAndSucceeds) {
    auto tps = ::ndk::SharedRefBase::make<NiceMock<MockTps>>();
    int fds[2];
    ASSERT_EQ(pipe2(fds, O_CLOEXEC | O_NONBLOCK), 0);
    ::ndk::ScopedFileDescriptor readEnd(fds[0]);
    ::ndk::ScopedFileDescriptor writeEnd(fds[1]);
    const char* args[] = {"--verbose"};

    EXPECT_EQ(AIBinder_dump(tps->asBinder().get(), writeEnd.get(), args, 1), STATUS_OK);
    EXPECT_EQ(tps->dump(writeEnd.get(), args, 1), STATUS_OK);
    writeEnd.set(-1);
    char byte;
    EXPECT_EQ(read(readEnd.get(), &byte, 1), 0);
}

}  // namespace
}  // namespace aidl::vendor::tavix::tps::test
