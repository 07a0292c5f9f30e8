// Local binder objects: lifetime, class association, transactions and the rules the NDK
// enforces on them.
#include <android/binder_ibinder.h>
#include <android/binder_ibinder_platform.h>
#include <android/binder_parcel_utils.h>
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
    int destroyed = 0;
    std::vector<transaction_code_t> codes;
    binder_status_t result = STATUS_OK;
};

void* recorderCreate(void* args) {
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
AIBinder_Class* thingClass() {
    static AIBinder_Class* clazz =
            AIBinder_Class_define("test.IThing", recorderCreate, recorderDestroy, recorderTransact);
    return clazz;
}

TEST(BinderLifecycleTest, UserDataLivesUntilTheLastStrongReference) {
    Recorder recorder;
    AIBinder* binder = AIBinder_new(thingClass(), &recorder);
    EXPECT_EQ(AIBinder_getUserData(binder), &recorder);

    AIBinder_Weak* weak = AIBinder_Weak_new(binder);
    AIBinder* promoted = AIBinder_Weak_promote(weak);
    EXPECT_EQ(promoted, binder);
    EXPECT_EQ(AIBinder_debugGetRefCount(binder), 2);

    AIBinder_decStrong(promoted);
    AIBinder_decStrong(binder);
    EXPECT_EQ(recorder.destroyed, 1);
    // The weak references outlive the object and no longer promote.
    EXPECT_EQ(AIBinder_Weak_promote(weak), nullptr);
    AIBinder_Weak_delete(weak);
    EXPECT_EQ(recorder.destroyed, 1);
}

TEST(BinderLifecycleTest, LocalBindersKeepTheirOwnClassObject) {
    Recorder recorder;
    ndk::SpAIBinder binder(AIBinder_new(thingClass(), &recorder));
    EXPECT_TRUE(AIBinder_associateClass(binder.get(), thingClass()));
    static AIBinder_Class* twin = plainClass("test.IThing");  // classes live as long as the process
    EXPECT_FALSE(AIBinder_associateClass(binder.get(), twin))
            << "same descriptor but another class object";
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

TEST_F(BinderTransactTest, RunsTheHandlerOnThisThreadAndHandsBackTheReply) {
    AParcel* in = prepared(41);
    AParcel* out = nullptr;
    ASSERT_EQ(AIBinder_transact(binder.get(), 7, &in, &out,
                                FLAG_ONEWAY | FLAG_CLEAR_BUF | FLAG_PRIVATE_VENDOR),
              STATUS_OK);
    ndk::ScopedAParcel reply(out);
    EXPECT_EQ(in, nullptr);
    int32_t value = 0;
    ASSERT_EQ(AParcel_readInt32(out, &value), STATUS_OK);
    EXPECT_EQ(value, 42);
    EXPECT_EQ(recorder.codes, std::vector<transaction_code_t>{7});

    // Handler errors drop the reply; statuses outside the public list are pruned.
    using Results = std::pair<binder_status_t, binder_status_t>;
    for (auto [result, expected] :
         {Results{STATUS_BAD_VALUE, STATUS_BAD_VALUE}, Results{-12345, STATUS_UNKNOWN_ERROR}}) {
        recorder.result = result;
        in = prepared(1);
        out = nullptr;
        EXPECT_EQ(AIBinder_transact(binder.get(), 1, &in, &out, 0), expected);
        EXPECT_EQ(out, nullptr);
    }
}

TEST_F(BinderTransactTest, RefusedRequestsAreConsumedWithoutReachingTheHandler) {
    Recorder other;
    ndk::SpAIBinder otherBinder(AIBinder_new(thingClass(), &other));
    AParcel* out = nullptr;
    EXPECT_EQ(AIBinder_transact(binder.get(), 1, nullptr, &out, 0), STATUS_UNEXPECTED_NULL);
    const Bytes none;
    const Bytes otherDescriptor = words({0x80000000, 0xffffffff, 0x53595354, 1, 0x00000078});
    const Bytes vendorHeader =
            words({0x80000000, 0xffffffff, 0x564e4452, 11}) +
            words({0x00650074, 0x00740073, 0x0049002e, 0x00680054, 0x006e0069, 0x00000067});
    struct Case {
        const char* what;
        AIBinder* target;
        transaction_code_t code;
        binder_flags_t flags;
        binder_status_t expected;
        const Bytes* token = nullptr;  // replaces the prepared request
    };
    const Case cases[] = {
            {"code 0", binder.get(), 0, 0, STATUS_UNKNOWN_TRANSACTION},
            {"past the user range", binder.get(), 0x01000000, 0, STATUS_UNKNOWN_TRANSACTION},
            {"unknown flag", binder.get(), 1, 0x02, STATUS_BAD_VALUE},
            {"prepared for another binder", otherBinder.get(), 1, 0, STATUS_BAD_VALUE},
            {"other descriptor", binder.get(), 1, 0, STATUS_BAD_TYPE, &otherDescriptor},
            {"vendor header", binder.get(), 1, 0, STATUS_BAD_TYPE, &vendorHeader},
            {"no token", binder.get(), 1, 0, STATUS_BAD_TYPE, &none},
    };
    for (const Case& c : cases) {
        AParcel* in = prepared(1);
        if (c.token != nullptr) AParcel_unmarshal(in, c.token->data(), c.token->size());
        EXPECT_EQ(AIBinder_transact(c.target, c.code, &in, &out, c.flags), c.expected) << c.what;
        EXPECT_EQ(in, nullptr) << "request leaked: " << c.what;
        EXPECT_EQ(out, nullptr) << c.what;
    }
    AParcel* in = prepared(1);
    EXPECT_EQ(AIBinder_transact(binder.get(), 1, &in, nullptr, 0), STATUS_UNEXPECTED_NULL);
    EXPECT_EQ(in, nullptr) << "request leaked without a reply slot";
    AParcel* unprepared = AParcel_create();
    EXPECT_EQ(AIBinder_transact(binder.get(), 1, &unprepared, &out, 0), STATUS_BAD_VALUE);
    EXPECT_TRUE(recorder.codes.empty());
    EXPECT_TRUE(other.codes.empty());
}

TEST(BinderStabilityDeathTest, MarkingIsFinalAndPoliciesAreFixedOnceParceled) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    Recorder recorder;
    ndk::SpAIBinder binder(AIBinder_new(thingClass(), &recorder));
    AIBinder_markVintfStability(binder.get());
    AIBinder_markVintfStability(binder.get());  // same level again is fine
    EXPECT_DEATH(AIBinder_markVendorStability(binder.get()), "");
    EXPECT_DEATH(AIBinder_setMinSchedulerPolicy(binder.get(), SCHED_FIFO, 0), "");
    ndk::ScopedAParcel p(AParcel_create());
    ASSERT_EQ(AParcel_writeStrongBinder(p.get(), binder.get()), STATUS_OK);
    EXPECT_DEATH(AIBinder_setMinSchedulerPolicy(binder.get(), SCHED_FIFO, 98), "");
}

int gUnlinked = 0;
void onDied(void*) {}
void onUnlinked(void* cookie) {
    gUnlinked += *static_cast<int*>(cookie);
}

TEST(BinderMiscTest, LocalBindersAnswerQueriesButCannotBeLinked) {
    Recorder recorder;
    ndk::SpAIBinder binder(AIBinder_new(thingClass(), &recorder));
    EXPECT_EQ(AIBinder_ping(binder.get()), STATUS_OK);
    EXPECT_FALSE(AIBinder_isRemote(binder.get()));
    EXPECT_EQ(AIBinder_getCallingPid(), getpid());

    ndk::ScopedAIBinder_DeathRecipient recipient(AIBinder_DeathRecipient_new(onDied));
    AIBinder_DeathRecipient_setOnUnlinked(recipient.get(), onUnlinked);
    int cookie = 1;
    gUnlinked = 0;
    EXPECT_EQ(AIBinder_linkToDeath(binder.get(), recipient.get(), &cookie),
              STATUS_INVALID_OPERATION);
    EXPECT_EQ(gUnlinked, 1) << "a failed link is still unlinked exactly once";
    EXPECT_EQ(AIBinder_unlinkToDeath(binder.get(), recipient.get(), &cookie),
              STATUS_NAME_NOT_FOUND);
}

}  // namespace
