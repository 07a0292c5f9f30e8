// Local binder objects: lifetime, class association, transactions and the rules the NDK
// enforces on them.
#include <android/binder_ibinder.h>
#include <android/binder_ibinder_platform.h>
#include <android/binder_parcel_utils.h>
#include <android/binder_shell.h>
#include <android/binder_stability.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "WireBytes.h"

using namespace wire;

namespace {

// User data recording what the binder saw.
struct Recorder {
    int created = 0;
    int destroyed = 0;
    std::vector<transaction_code_t> codes;
    binder_status_t result = STATUS_OK;
    std::vector<std::string> dumpArgs;
};

void* recorderCreate(void* args) {
    static_cast<Recorder*>(args)->created++;
    return args;
}
void recorderDestroy(void* userData) {
    static_cast<Recorder*>(userData)->destroyed++;
}
binder_status_t recorderTransact(AIBinder* binder, transaction_code_t code, const AParcel* in,
                                 AParcel* out) {
    Recorder* recorder = static_cast<Recorder*>(AIBinder_getUserData(binder));
    recorder->codes.push_back(code);
    int32_t value = 0;
    if (AParcel_readInt32(in, &value) == STATUS_OK) AParcel_writeInt32(out, value + 1);
    return recorder->result;
}
binder_status_t recorderDump(AIBinder* binder, int, const char** args, uint32_t numArgs) {
    Recorder* recorder = static_cast<Recorder*>(AIBinder_getUserData(binder));
    for (uint32_t i = 0; i < numArgs; i++) recorder->dumpArgs.push_back(args[i]);
    return STATUS_OK;
}

AIBinder_Class* defineRecorderClass(const char* descriptor) {
    return AIBinder_Class_define(descriptor, recorderCreate, recorderDestroy, recorderTransact);
}

AIBinder_Class* thingClass() {
    static AIBinder_Class* clazz = [] {
        AIBinder_Class* c = defineRecorderClass("test.IThing");
        AIBinder_Class_setOnDump(c, recorderDump);
        return c;
    }();
    return clazz;
}

// Same descriptor, different class object.
AIBinder_Class* thingTwinClass() {
    static AIBinder_Class* clazz = defineRecorderClass("test.IThing");
    return clazz;
}

AIBinder_Class* headerlessClass() {
    static AIBinder_Class* clazz = [] {
        AIBinder_Class* c = defineRecorderClass("test.IRaw");
        AIBinder_Class_disableInterfaceTokenHeader(c);
        return c;
    }();
    return clazz;
}

TEST(BinderClassTest, DefineNeedsEveryCallback) {
    EXPECT_EQ(AIBinder_Class_define(nullptr, recorderCreate, recorderDestroy, recorderTransact),
              nullptr);
    EXPECT_EQ(AIBinder_Class_define("x", nullptr, recorderDestroy, recorderTransact), nullptr);
    EXPECT_EQ(AIBinder_Class_define("x", recorderCreate, nullptr, recorderTransact), nullptr);
    EXPECT_EQ(AIBinder_Class_define("x", recorderCreate, recorderDestroy, nullptr), nullptr);
    EXPECT_STREQ(AIBinder_Class_getDescriptor(thingClass()), "test.IThing");
    EXPECT_EQ(AIBinder_new(nullptr, nullptr), nullptr);
}

TEST(BinderLifecycleTest, UserDataLivesUntilTheLastStrongReference) {
    Recorder recorder;
    AIBinder* binder = AIBinder_new(thingClass(), &recorder);
    EXPECT_EQ(recorder.created, 1);
    EXPECT_EQ(AIBinder_getUserData(binder), &recorder);
    EXPECT_EQ(AIBinder_getClass(binder), thingClass());
    EXPECT_EQ(AIBinder_debugGetRefCount(binder), 1);

    AIBinder_Weak* weak = AIBinder_Weak_new(binder);
    AIBinder_Weak* clone = AIBinder_Weak_clone(weak);
    AIBinder* promoted = AIBinder_Weak_promote(weak);
    EXPECT_EQ(promoted, binder);
    EXPECT_EQ(AIBinder_debugGetRefCount(binder), 2);

    AIBinder_decStrong(promoted);
    AIBinder_decStrong(binder);
    EXPECT_EQ(recorder.destroyed, 1);
    // The weak references outlive the object and no longer promote.
    EXPECT_EQ(AIBinder_Weak_promote(weak), nullptr);
    EXPECT_EQ(AIBinder_Weak_promote(clone), nullptr);
    AIBinder_Weak_delete(weak);
    AIBinder_Weak_delete(clone);
    EXPECT_EQ(recorder.destroyed, 1);
}

TEST(BinderLifecycleTest, NullArgumentsAreHarmless) {
    EXPECT_EQ(AIBinder_debugGetRefCount(nullptr), -1);
    AIBinder_incStrong(nullptr);
    AIBinder_decStrong(nullptr);
    EXPECT_EQ(AIBinder_Weak_new(nullptr), nullptr);
    EXPECT_EQ(AIBinder_Weak_promote(nullptr), nullptr);
    EXPECT_EQ(AIBinder_Weak_clone(nullptr), nullptr);
    AIBinder_Weak_delete(nullptr);
    EXPECT_EQ(AIBinder_getUserData(nullptr), nullptr);
    EXPECT_EQ(AIBinder_getClass(nullptr), nullptr);
    EXPECT_FALSE(AIBinder_isRemote(nullptr));
    EXPECT_FALSE(AIBinder_isAlive(nullptr));
    EXPECT_EQ(AIBinder_ping(nullptr), STATUS_UNEXPECTED_NULL);
    EXPECT_FALSE(AIBinder_associateClass(nullptr, thingClass()));
}

TEST(BinderLifecycleTest, WeakOrderingIsConsistentWithIdentity) {
    Recorder r1, r2;
    ndk::SpAIBinder a(AIBinder_new(thingClass(), &r1));
    ndk::SpAIBinder b(AIBinder_new(thingClass(), &r2));
    ndk::ScopedAIBinder_Weak wa(AIBinder_Weak_new(a.get()));
    ndk::ScopedAIBinder_Weak wa2(AIBinder_Weak_new(a.get()));
    ndk::ScopedAIBinder_Weak wb(AIBinder_Weak_new(b.get()));
    EXPECT_FALSE(AIBinder_Weak_lt(wa.get(), wa2.get()));
    EXPECT_FALSE(AIBinder_Weak_lt(wa2.get(), wa.get()));
    EXPECT_NE(AIBinder_Weak_lt(wa.get(), wb.get()), AIBinder_Weak_lt(wb.get(), wa.get()));
    EXPECT_EQ(AIBinder_lt(a.get(), b.get()), AIBinder_Weak_lt(wa.get(), wb.get()));
}

TEST(BinderAssociateTest, LocalBindersKeepTheirOwnClassObject) {
    Recorder recorder;
    ndk::SpAIBinder binder(AIBinder_new(thingClass(), &recorder));
    EXPECT_TRUE(AIBinder_associateClass(binder.get(), thingClass()));
    EXPECT_FALSE(AIBinder_associateClass(binder.get(), thingTwinClass()))
            << "same descriptor but another class object";
    EXPECT_FALSE(AIBinder_associateClass(binder.get(), headerlessClass()));
    EXPECT_FALSE(AIBinder_associateClass(binder.get(), nullptr));
    EXPECT_EQ(AIBinder_getClass(binder.get()), thingClass());
}

class BinderTransactTest : public ::testing::Test {
protected:
    Recorder recorder;
    ndk::SpAIBinder binder{AIBinder_new(thingClass(), &recorder)};

    AParcel* prepared(int32_t value) {
        AParcel* in = nullptr;
        EXPECT_EQ(AIBinder_prepareTransaction(binder.get(), &in), STATUS_OK);
        AParcel_writeInt32(in, value);
        return in;
    }
};

TEST_F(BinderTransactTest, RunsTheHandlerAndHandsBackTheReply) {
    AParcel* in = prepared(41);
    AParcel* out = nullptr;
    ASSERT_EQ(AIBinder_transact(binder.get(), 7, &in, &out, 0), STATUS_OK);
    ndk::ScopedAParcel reply(out);
    EXPECT_EQ(in, nullptr);
    int32_t value = 0;
    ASSERT_EQ(AParcel_readInt32(out, &value), STATUS_OK);
    EXPECT_EQ(value, 42);
    EXPECT_EQ(recorder.codes, std::vector<transaction_code_t>{7});
}

TEST_F(BinderTransactTest, OnewayAndVendorFlagsStillRunLocallyOnThisThread) {
    AParcel* in = prepared(1);
    AParcel* out = nullptr;
    ASSERT_EQ(AIBinder_transact(binder.get(), 3, &in, &out,
                                FLAG_ONEWAY | FLAG_CLEAR_BUF | FLAG_PRIVATE_VENDOR),
              STATUS_OK);
    ndk::ScopedAParcel reply(out);
    EXPECT_EQ(recorder.codes, std::vector<transaction_code_t>{3});
}

TEST_F(BinderTransactTest, HandlerErrorsDropTheReply) {
    recorder.result = STATUS_BAD_VALUE;
    AParcel* in = prepared(1);
    AParcel* out = nullptr;
    EXPECT_EQ(AIBinder_transact(binder.get(), 1, &in, &out, 0), STATUS_BAD_VALUE);
    EXPECT_EQ(out, nullptr);
    // Statuses outside the public list are pruned.
    recorder.result = -12345;
    in = prepared(1);
    EXPECT_EQ(AIBinder_transact(binder.get(), 1, &in, &out, 0), STATUS_UNKNOWN_ERROR);
}

TEST_F(BinderTransactTest, RequestIsConsumedEvenWhenRefused) {
    AParcel* out = nullptr;
    EXPECT_EQ(AIBinder_transact(binder.get(), 1, nullptr, &out, 0), STATUS_UNEXPECTED_NULL);

    struct Case {
        transaction_code_t code;
        binder_flags_t flags;
        bool nullOut;
        binder_status_t expected;
    };
    const Case cases[] = {
            {0, 0, false, STATUS_UNKNOWN_TRANSACTION},
            {0x01000000, 0, false, STATUS_UNKNOWN_TRANSACTION},
            {0x5F504E47 /* ping */, 0, false, STATUS_UNKNOWN_TRANSACTION},
            {1, 0x02, false, STATUS_BAD_VALUE},
            {1, 0x04, false, STATUS_BAD_VALUE},
            {1, 0, true, STATUS_UNEXPECTED_NULL},
    };
    for (const Case& c : cases) {
        AParcel* in = prepared(1);
        binder_status_t status =
                AIBinder_transact(binder.get(), c.code, &in, c.nullOut ? nullptr : &out, c.flags);
        EXPECT_EQ(status, c.expected) << "code " << c.code << " flags " << c.flags;
        EXPECT_EQ(in, nullptr) << "request leaked for code " << c.code;
    }
    EXPECT_TRUE(recorder.codes.empty());

    AParcel* in = nullptr;
    EXPECT_EQ(AIBinder_transact(nullptr, 1, &in, &out, 0), STATUS_UNEXPECTED_NULL);
}

TEST_F(BinderTransactTest, RequestMustBePreparedForTheSameBinder) {
    Recorder other;
    ndk::SpAIBinder otherBinder(AIBinder_new(thingClass(), &other));
    AParcel* in = prepared(1);
    AParcel* out = nullptr;
    EXPECT_EQ(AIBinder_transact(otherBinder.get(), 1, &in, &out, 0), STATUS_BAD_VALUE);
    in = AParcel_create();
    EXPECT_EQ(AIBinder_transact(binder.get(), 1, &in, &out, 0), STATUS_BAD_VALUE);
    EXPECT_TRUE(recorder.codes.empty());
    EXPECT_TRUE(other.codes.empty());
}

TEST_F(BinderTransactTest, TokenMismatchIsRefusedBeforeTheHandler) {
    const Bytes otherDescriptor = words({0x80000000, 0xffffffff, 0x53595354, 1, 0x00000078});
    const Bytes vendorHeader =
            words({0x80000000, 0xffffffff, 0x564e4452, 11}) +
            words({0x00650074, 0x00740073, 0x0049002e, 0x00680054, 0x006e0069, 0x00000067});
    for (const Bytes& token : {otherDescriptor, vendorHeader, Bytes{}}) {
        AParcel* in = nullptr;
        ASSERT_EQ(AIBinder_prepareTransaction(binder.get(), &in), STATUS_OK);
        AParcel_unmarshal(in, token.data(), token.size());
        AParcel* out = nullptr;
        EXPECT_EQ(AIBinder_transact(binder.get(), 1, &in, &out, 0), STATUS_BAD_TYPE) << hex(token);
        EXPECT_EQ(out, nullptr);
    }
    EXPECT_TRUE(recorder.codes.empty());
}

TEST(BinderTokenTest, HeaderlessClassesWriteAndCheckNoToken) {
    Recorder recorder;
    ndk::SpAIBinder binder(AIBinder_new(headerlessClass(), &recorder));
    AParcel* in = nullptr;
    ASSERT_EQ(AIBinder_prepareTransaction(binder.get(), &in), STATUS_OK);
    EXPECT_EQ(AParcel_getDataSize(in), 0);
    AParcel* out = nullptr;
    ASSERT_EQ(AIBinder_transact(binder.get(), 1, &in, &out, 0), STATUS_OK);
    AParcel_delete(out);
    EXPECT_EQ(recorder.codes.size(), 1u);
    EXPECT_EQ(AIBinder_prepareTransaction(nullptr, &in), STATUS_UNEXPECTED_NULL);
}

TEST(BinderStabilityDeathTest, MarkingIsFinalOnceParceled) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    Recorder recorder;
    ndk::SpAIBinder binder(AIBinder_new(thingClass(), &recorder));
    AIBinder_markVintfStability(binder.get());
    AIBinder_markVintfStability(binder.get());  // same level again is fine
    EXPECT_DEATH(AIBinder_markVendorStability(binder.get()), "");

    ndk::SpAIBinder parceled(AIBinder_new(thingClass(), &recorder));
    ndk::ScopedAParcel p(AParcel_create());
    ASSERT_EQ(AParcel_writeStrongBinder(p.get(), parceled.get()), STATUS_OK);
    EXPECT_DEATH(AIBinder_markVintfStability(parceled.get()), "");
    EXPECT_DEATH(AIBinder_setMinSchedulerPolicy(parceled.get(), SCHED_FIFO, 98), "");
    EXPECT_DEATH(AIBinder_setInheritRt(parceled.get(), true), "");
    // Vendor code marks its compilation unit as vendor.
    ndk::SpAIBinder vendor(AIBinder_new(thingClass(), &recorder));
    AIBinder_markCompilationUnitStability(vendor.get());
    EXPECT_DEATH(AIBinder_markSystemStability(vendor.get()), "");
    EXPECT_EQ(FLAG_PRIVATE_LOCAL, FLAG_PRIVATE_VENDOR);
}

TEST(BinderStabilityDeathTest, SchedulerPolicyValuesAreChecked) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    Recorder recorder;
    ndk::SpAIBinder binder(AIBinder_new(thingClass(), &recorder));
    EXPECT_DEATH(AIBinder_setMinSchedulerPolicy(binder.get(), SCHED_OTHER, 20), "");
    EXPECT_DEATH(AIBinder_setMinSchedulerPolicy(binder.get(), SCHED_FIFO, 0), "");
    EXPECT_DEATH(AIBinder_setMinSchedulerPolicy(binder.get(), SCHED_RR, 100), "");
    EXPECT_DEATH(AIBinder_setMinSchedulerPolicy(binder.get(), SCHED_BATCH, 0), "");
    AIBinder_setMinSchedulerPolicy(binder.get(), SCHED_OTHER, -20);
}

int gUnlinked = 0;
void onDied(void*) {}
void onUnlinked(void* cookie) {
    gUnlinked += *static_cast<int*>(cookie);
}

TEST(BinderDeathTest, LocalBindersCannotBeLinked) {
    Recorder recorder;
    ndk::SpAIBinder binder(AIBinder_new(thingClass(), &recorder));
    ndk::ScopedAIBinder_DeathRecipient recipient(AIBinder_DeathRecipient_new(onDied));
    AIBinder_DeathRecipient_setOnUnlinked(recipient.get(), onUnlinked);
    int cookie = 1;
    gUnlinked = 0;
    EXPECT_EQ(AIBinder_linkToDeath(binder.get(), recipient.get(), &cookie),
              STATUS_INVALID_OPERATION);
    EXPECT_EQ(gUnlinked, 1) << "a failed link is still unlinked exactly once";
    EXPECT_EQ(AIBinder_unlinkToDeath(binder.get(), recipient.get(), &cookie),
              STATUS_NAME_NOT_FOUND);
    EXPECT_EQ(AIBinder_linkToDeath(nullptr, recipient.get(), &cookie), STATUS_UNEXPECTED_NULL);
    EXPECT_EQ(AIBinder_linkToDeath(binder.get(), nullptr, &cookie), STATUS_UNEXPECTED_NULL);
    EXPECT_EQ(AIBinder_DeathRecipient_new(nullptr), nullptr);
}

TEST(BinderMiscTest, LocalQueries) {
    Recorder recorder;
    ndk::SpAIBinder binder(AIBinder_new(thingClass(), &recorder));
    EXPECT_EQ(AIBinder_ping(binder.get()), STATUS_OK);
    EXPECT_FALSE(AIBinder_isRemote(binder.get()));
    EXPECT_TRUE(AIBinder_isAlive(binder.get()));
    EXPECT_EQ(AIBinder_getCallingPid(), getpid());
    EXPECT_EQ(AIBinder_getCallingUid(), getuid());
    EXPECT_FALSE(AIBinder_isHandlingTransaction());

    const char* args[] = {"-a", "b"};
    EXPECT_EQ(AIBinder_dump(binder.get(), 1, args, 2), STATUS_OK);
    EXPECT_EQ(recorder.dumpArgs, (std::vector<std::string>{"-a", "b"}));
    Recorder raw;
    ndk::SpAIBinder noDump(AIBinder_new(headerlessClass(), &raw));
    EXPECT_EQ(AIBinder_dump(noDump.get(), 1, nullptr, 0), STATUS_OK);

    AIBinder* ext = nullptr;
    ASSERT_EQ(AIBinder_getExtension(binder.get(), &ext), STATUS_OK);
    EXPECT_EQ(ext, nullptr);
    ASSERT_EQ(AIBinder_setExtension(binder.get(), noDump.get()), STATUS_OK);
    ASSERT_EQ(AIBinder_getExtension(binder.get(), &ext), STATUS_OK);
    EXPECT_EQ(ext, noDump.get());
    AIBinder_decStrong(ext);
}

}  // namespace
