// ITpsCallback on both sides: the dispatcher behind BnTpsCallback and the BpTpsCallback proxy
// through which the service notifies its clients.

#include <aidl/vendor/tavix/tps/BnTpsCallback.h>
#include <aidl/vendor/tavix/tps/BpTpsCallback.h>
#include <gtest/gtest.h>

#include "LinkSeams.h"
#include "Mocks.h"
#include "ScriptedBinder.h"
#include "Wire.h"

namespace aidl::vendor::tavix::tps::test {
namespace {

using ::testing::_;
using ::testing::StrictMock;

class CallbackStubTest : public ::testing::Test {
protected:
    struct Outcome {
        binder_status_t result;
        std::vector<uint8_t> reply;
    };

    Outcome dispatch(transaction_code_t code, const Wire& args = Wire()) {
        ::ndk::ScopedAParcel request(AParcel_create());
        ::ndk::ScopedAParcel reply(AParcel_create());
        AParcel_unmarshal(request.get(), args.bytes().data(), args.bytes().size());
        const binder_status_t result = mOnTransact(mBinder.get(), code, request.get(), reply.get());
        return {result, parcelBytes(reply.get())};
    }

    std::shared_ptr<StrictMock<MockTpsCallback>> mCallback =
            ::ndk::SharedRefBase::make<StrictMock<MockTpsCallback>>();
    ::ndk::SpAIBinder mBinder = mCallback->asBinder();
    AIBinder_Class_onTransact mOnTransact = onTransactOf(AIBinder_getClass(mBinder.get()));
};

TEST_F(CallbackStubTest, UnknownCodesWriteNothing) {
    ASSERT_NE(mOnTransact, nullptr);
    for (transaction_code_t code : {0u, 4u, 16777213u}) {
        Outcome outcome = dispatch(code);
        EXPECT_EQ(outcome.result, STATUS_UNKNOWN_TRANSACTION) << code;
        EXPECT_TRUE(outcome.reply.empty()) << code;
    }
}

TEST_F(CallbackStubTest, EachCodeWritesItsHeaderAndResult) {
    EXPECT_CALL(*mCallback, onTavixPrismPlaybackStart(_)).WillOnce(ReturnOkWith<0>(true));
    EXPECT_CALL(*mCallback, onTavixPrismPlaybackStop(_)).WillOnce(ReturnOk());
    EXPECT_CALL(*mCallback, onTavixNotification("Callback_TavixLogoStop")).WillOnce(ReturnOk());

    Outcome start = dispatch(1);
    EXPECT_EQ(start.result, STATUS_OK);
    EXPECT_EQ(hex(start.reply), hex(Wire().ok().i32(1).bytes()));
    // The result is preset to false for a method that leaves it alone.
    Outcome stop = dispatch(2);
    EXPECT_EQ(hex(stop.reply), hex(Wire().ok().i32(0).bytes()));
    Outcome notification = dispatch(3, Wire().str("Callback_TavixLogoStop"));
    EXPECT_EQ(notification.result, STATUS_OK);
    EXPECT_EQ(hex(notification.reply), hex(Wire().ok().bytes()));
    EXPECT_EQ(hex(dispatch(16777215).reply), hex(Wire().ok().i32(1).bytes()));
    EXPECT_EQ(hex(dispatch(16777214).reply), hex(Wire().ok().str(ITpsCallback::hash).bytes()));
}

TEST_F(CallbackStubTest, FailuresWriteNoResult) {
    EXPECT_CALL(*mCallback, onTavixPrismPlaybackStart(_)).WillOnce([](bool* out) {
        *out = true;
        return ::ndk::ScopedAStatus::fromExceptionCode(EX_ILLEGAL_STATE);
    });
    Outcome start = dispatch(1);
    EXPECT_EQ(start.result, STATUS_OK);
    EXPECT_EQ(hex(start.reply), hex(Wire().exception(EX_ILLEGAL_STATE).bytes()));

    // A null or missing event string never reaches the method.
    Outcome nullEvent = dispatch(3, Wire().i32(-1));
    EXPECT_EQ(nullEvent.result, STATUS_UNEXPECTED_NULL);
    EXPECT_TRUE(nullEvent.reply.empty());
    Outcome noEvent = dispatch(3);
    EXPECT_EQ(noEvent.result, STATUS_UNEXPECTED_NULL);
    EXPECT_TRUE(noEvent.reply.empty());
}

class CallbackProxyTest : public ::testing::Test {
protected:
    ScriptedBinder::Handler mAnswer = [](transaction_code_t, const AParcel*, AParcel* reply) {
        return AParcel_writeInt32(reply, 0);
    };
    ScriptedBinder mRemote{ITpsCallback::descriptor,
                           [this](transaction_code_t code, const AParcel* in, AParcel* out) {
                               return mAnswer(code, in, out);
                           }};
    std::shared_ptr<ITpsCallback> mProxy = ITpsCallback::fromBinder(mRemote.binder());

    void answerWith(const Wire& wire) {
        mAnswer = [wire](transaction_code_t, const AParcel*, AParcel* reply) {
            return AParcel_unmarshal(reply, wire.bytes().data(), wire.bytes().size());
        };
    }
};

TEST_F(CallbackProxyTest, RequestsAndFlagsOfEveryMethod) {
    ASSERT_NE(mProxy, nullptr);
    bool played = false;
    int32_t version = 0;
    std::string hash;
    takeTransactions();
    mProxy->onTavixPrismPlaybackStart(&played);
    mProxy->onTavixPrismPlaybackStop(&played);
    mProxy->onTavixNotification("Callback_TavixRenderStart");
    mProxy->getInterfaceVersion(&version);
    mProxy->getInterfaceHash(&hash);

    const Wire token = Wire().token("vendor.tavix.tps.ITpsCallback");
    std::vector<ScriptedBinder::Request> requests = mRemote.requests();
    ASSERT_EQ(requests.size(), 5u);
    const transaction_code_t codes[] = {1, 2, 3, 16777215, 16777214};
    for (size_t i = 0; i < 5; ++i) {
        EXPECT_EQ(requests[i].code, codes[i]);
        const Wire expected = i == 2 ? Wire(token).str("Callback_TavixRenderStart") : token;
        EXPECT_EQ(hex(requests[i].bytes), hex(expected.bytes())) << "code " << codes[i];
    }
    std::vector<TransactRecord> transacts = takeTransactions();
    ASSERT_EQ(transacts.size(), 5u);
    for (const TransactRecord& record : transacts) {
        EXPECT_EQ(record.flags, 0x10000000u) << "code " << record.code;
    }
}

TEST_F(CallbackProxyTest, PlaybackAnswerIsReadOnlyAfterAnOkHeader) {
    bool played = false;
    answerWith(Wire().ok().i32(5));  // any non-zero int is true
    EXPECT_TRUE(mProxy->onTavixPrismPlaybackStart(&played).isOk());
    EXPECT_TRUE(played);
    answerWith(Wire().ok().i32(0));
    EXPECT_TRUE(mProxy->onTavixPrismPlaybackStop(&played).isOk());
    EXPECT_FALSE(played);

    played = true;
    answerWith(Wire().exception(EX_SERVICE_SPECIFIC).i32(3).i32(0));
    ::ndk::ScopedAStatus status = mProxy->onTavixPrismPlaybackStop(&played);
    EXPECT_EQ(status.getServiceSpecificError(), 3);
    EXPECT_TRUE(played);

    answerWith(Wire().ok());
    EXPECT_EQ(mProxy->onTavixPrismPlaybackStart(&played).getStatus(), STATUS_NOT_ENOUGH_DATA);
}

TEST_F(CallbackProxyTest, OutdatedClientFailsTheCallUnlessADefaultIsSet) {
    mAnswer = [](transaction_code_t, const AParcel*, AParcel*) {
        return STATUS_UNKNOWN_TRANSACTION;
    };
    EXPECT_EQ(mProxy->onTavixNotification("Callback_TavixLogoStart").getStatus(),
              STATUS_UNKNOWN_TRANSACTION);

    auto fallback = ::ndk::SharedRefBase::make<StrictMock<MockTpsCallback>>();
    EXPECT_CALL(*fallback, onTavixNotification("Callback_TavixLogoStart")).WillOnce(ReturnOk());
    EXPECT_CALL(*fallback, onTavixPrismPlaybackStart(_)).WillOnce(ReturnOkWith<0>(true));
    ASSERT_TRUE(ITpsCallback::setDefaultImpl(fallback));
    EXPECT_TRUE(mProxy->onTavixNotification("Callback_TavixLogoStart").isOk());
    bool played = false;
    EXPECT_TRUE(mProxy->onTavixPrismPlaybackStart(&played).isOk());
    EXPECT_TRUE(played);
    // A dead client is not an outdated one.
    mAnswer = [](transaction_code_t, const AParcel*, AParcel*) { return STATUS_DEAD_OBJECT; };
    EXPECT_EQ(mProxy->onTavixNotification("Callback_TavixLogoStart").getStatus(),
              STATUS_DEAD_OBJECT);
    EXPECT_FALSE(ITpsCallback::setDefaultImpl(nullptr));
}

TEST(CallbackRoundTripTest, ProxyOverTheClientsBinderReachesTheClient) {
    auto client = ::ndk::SharedRefBase::make<StrictMock<MockTpsCallback>>();
    auto proxy = ::ndk::SharedRefBase::make<BpTpsCallback>(client->asBinder());
    EXPECT_CALL(*client, onTavixNotification("Callback_TavixRenderStop")).WillOnce(ReturnOk());
    EXPECT_CALL(*client, onTavixPrismPlaybackStart(_)).WillOnce(ReturnOkWith<0>(true));

    EXPECT_TRUE(proxy->onTavixNotification("Callback_TavixRenderStop").isOk());
    bool played = false;
    EXPECT_TRUE(proxy->onTavixPrismPlaybackStart(&played).isOk());
    EXPECT_TRUE(played);
    std::string hash;
    EXPECT_TRUE(proxy->getInterfaceHash(&hash).isOk());
    EXPECT_EQ(hash, ITpsCallback::hash);
}

}  // namespace
}  // namespace aidl::vendor::tavix::tps::test
