// BpTps and BpTpsCallback: the requests they send and how they read replies.

#include <aidl/vendor/tavix/tps/BpTps.h>
#include <aidl/vendor/tavix/tps/BpTpsCallback.h>
#include <gtest/gtest.h>

#include "LinkSeams.h"
#include "Mocks.h"
#include "ScriptedProxy.h"

namespace aidl::vendor::tavix::tps::test {
namespace {

using ::testing::_;
using ::testing::ElementsAre;
using ::testing::StrictMock;

class TpsProxyTest : public ::testing::Test, protected ScriptedProxy<ITps> {
protected:
    ScriptedProxy<ITpsCallback> mCallback;
};

TEST_F(TpsProxyTest, RequestsAreTheTokenThenTheArgumentsWithTheVendorFlag) {
    ASSERT_NE(mProxy, nullptr);
    ASSERT_NE(mCallback.mProxy, nullptr);
    ITps& tps = *mProxy;
    ITpsCallback& client = *mCallback.mProxy;
    std::vector<float> floats;
    std::vector<int32_t> ids;
    std::string text;
    int32_t version = 0;
    bool played = false;
    struct Case {
        transaction_code_t code;
        std::function<void()> call;
        Wire args;
        bool toClient = false;
    };
    const Case cases[] = {
            {1, [&] { tps.getTavixPrismStatus(&floats); }, Wire()},
            // A null binder object: type BINDER, flags, binder 0, cookie 0, then stability 0.
            {2, [&] { tps.registerCallback(nullptr); },
             Wire().i32(0x73622a85).i32(0x13).i64(0).i64(0).i32(0)},
            {3, [&] { tps.registerProcessor(true); }, Wire().i32(1)},
            {3, [&] { tps.registerProcessor(false); }, Wire().i32(0)},
            {4, [&] { tps.unregisterProcessor(); }, Wire()},
            {5, [&] { tps.updateParams(7, -1); }, Wire().i64(7).i64(-1)},
            {6, [&] { tps.updateDisplayIDs({}); }, Wire().i32(0)},
            {6,
             [&] {
                 tps.updateDisplayIDs({3, 4});
             },
             Wire().i32(2).i32(3).i32(4)},
            {7, [&] { tps.getDisplayIDs(&ids); }, Wire()},
            {8, [&] { tps.setParameters("a=1"); }, Wire().str("a=1")},
            {8, [&] { tps.setParameters(""); }, Wire().i32(0).i32(0)},
            {9, [&] { tps.getParameters("all", &text); }, Wire().str("all")},
            {16777215, [&] { tps.getInterfaceVersion(&version); }, Wire()},
            {16777214, [&] { tps.getInterfaceHash(&text); }, Wire()},
            {1, [&] { client.onTavixPrismPlaybackStart(&played); }, Wire(), true},
            {2, [&] { client.onTavixPrismPlaybackStop(&played); }, Wire(), true},
            {3, [&] { client.onTavixNotification("Callback_TavixRenderStart"); },
             Wire().str("Callback_TavixRenderStart"), true},
            {16777215, [&] { client.getInterfaceVersion(&version); }, Wire(), true},
            {16777214, [&] { client.getInterfaceHash(&text); }, Wire(), true},
    };
    for (const Case& c : cases) {
        takeTransactions();
        c.call();
        const RecordingBinder& remote = c.toClient ? mCallback.mRemote : mRemote;
        std::vector<RecordingBinder::Request> requests = remote.requests();
        ASSERT_FALSE(requests.empty());
        EXPECT_EQ(requests.back().code, c.code);
        const Wire expected =
                Wire().token(c.toClient ? "vendor.tavix.tps.ITpsCallback" : "vendor.tavix.tps.ITps")
                        .append(c.args);
        EXPECT_EQ(hex(requests.back().bytes), hex(expected.bytes())) << "code " << c.code;
        std::vector<TransactRecord> transacts = takeTransactions();
        ASSERT_EQ(transacts.size(), 1u);
        EXPECT_EQ(transacts[0].flags, 0x10000000u) << "code " << c.code;
    }
}

TEST_F(TpsProxyTest, ResultsAreReadOnlyAfterAnOkHeader) {
    std::vector<float> floats;
    answerWith(Wire().ok().i32(3).f32(1.5f).f32(-2.0f).f32(255.0f));
    ASSERT_TRUE(mProxy->getTavixPrismStatus(&floats).isOk());
    EXPECT_THAT(floats, ElementsAre(1.5f, -2.0f, 255.0f));

    std::vector<int32_t> ids = {9};
    answerWith(Wire().ok().i32(0));
    ASSERT_TRUE(mProxy->getDisplayIDs(&ids).isOk());
    EXPECT_TRUE(ids.empty());

    std::string text;
    answerWith(Wire().ok().str("pqMode=2"));
    ASSERT_TRUE(mProxy->getParameters("pqMode", &text).isOk());
    EXPECT_EQ(text, "pqMode=2");

    // An error status comes back as it came; the string after the header is not read.
    answerWith(Wire().exception(EX_SERVICE_SPECIFIC, "busy").i32(42).str("x"));
    ::ndk::ScopedAStatus status = mProxy->getParameters("all", &text);
    EXPECT_EQ(status.getExceptionCode(), EX_SERVICE_SPECIFIC);
    EXPECT_EQ(status.getServiceSpecificError(), 42);
    EXPECT_STREQ(status.getMessage(), "busy");
    EXPECT_EQ(text, "pqMode=2");

    bool played = false;
    mCallback.answerWith(Wire().ok().i32(5));  // any non-zero int is true
    EXPECT_TRUE(mCallback.mProxy->onTavixPrismPlaybackStart(&played).isOk());
    EXPECT_TRUE(played);
    mCallback.answerWith(Wire().exception(EX_SERVICE_SPECIFIC).i32(3).i32(0));
    EXPECT_EQ(mCallback.mProxy->onTavixPrismPlaybackStop(&played).getServiceSpecificError(), 3);
    EXPECT_TRUE(played);
    mCallback.answerWith(Wire().ok().i32(0));
    EXPECT_TRUE(mCallback.mProxy->onTavixPrismPlaybackStop(&played).isOk());
    EXPECT_FALSE(played);
}

TEST_F(TpsProxyTest, TransportAndReadFailuresBecomeTheStatus) {
    struct Case {
        const char* what;
        Wire reply;
        binder_status_t transport;
        binder_status_t expected;
    };
    const Case cases[] = {
            {"dead peer", Wire(), STATUS_DEAD_OBJECT, STATUS_DEAD_OBJECT},
            {"unknown code, no default", Wire(), STATUS_UNKNOWN_TRANSACTION,
             STATUS_UNKNOWN_TRANSACTION},
            {"empty reply", Wire(), STATUS_OK, STATUS_NOT_ENOUGH_DATA},
            {"result missing", Wire().ok(), STATUS_OK, STATUS_NOT_ENOUGH_DATA},
            {"null array", Wire().ok().i32(-1), STATUS_OK, STATUS_UNEXPECTED_NULL},
    };
    for (const Case& c : cases) {
        answerWith(c.reply, c.transport);
        mCallback.answerWith(c.reply, c.transport);
        std::vector<int32_t> ids = {5};
        ::ndk::ScopedAStatus status = mProxy->getDisplayIDs(&ids);
        EXPECT_EQ(status.getExceptionCode(), EX_TRANSACTION_FAILED) << c.what;
        EXPECT_EQ(status.getStatus(), c.expected) << c.what;
        if (c.expected == STATUS_UNEXPECTED_NULL) continue;  // a boolean cannot be null
        bool played = false;
        EXPECT_EQ(mCallback.mProxy->onTavixPrismPlaybackStart(&played).getStatus(), c.expected)
                << c.what;
    }
}

TEST_F(TpsProxyTest, UnknownTransactionFallsBackToTheDefaultImplementation) {
    auto fallback = ::ndk::SharedRefBase::make<StrictMock<MockTps>>();
    EXPECT_CALL(*fallback, getParameters("all", _))
            .WillOnce(ReturnOkWith<1>(std::string("from default")));
    ASSERT_TRUE(ITps::setDefaultImpl(fallback));
    failWith(STATUS_UNKNOWN_TRANSACTION);
    std::string text;
    EXPECT_TRUE(mProxy->getParameters("all", &text).isOk());
    EXPECT_EQ(text, "from default");

    // Any other failure is not the default implementation's business.
    failWith(STATUS_DEAD_OBJECT);
    EXPECT_EQ(mProxy->getParameters("all", &text).getStatus(), STATUS_DEAD_OBJECT);
    EXPECT_FALSE(ITps::setDefaultImpl(nullptr));
}

}  // namespace
}  // namespace aidl::vendor::tavix::tps::test
