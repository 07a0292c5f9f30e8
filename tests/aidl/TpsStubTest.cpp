// The ITps dispatcher, driven with hand-made request parcels through its on-transact hook.

#include <aidl/vendor/tavix/tps/BnTps.h>
#include <gtest/gtest.h>

#include "LinkSeams.h"
#include "Mocks.h"
#include "Wire.h"

namespace aidl::vendor::tavix::tps::test {
namespace {

using ::testing::_;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::IsNull;
using ::testing::StrictMock;

class TpsStubTest : public ::testing::Test {
protected:
    struct Outcome {
        binder_status_t result;
        std::vector<uint8_t> reply;
    };

    // The request holds only what writeArgs puts in: the library checks and skips the interface
    // token before the hook runs.
    template <typename WriteArgs>
    Outcome dispatch(transaction_code_t code, WriteArgs writeArgs) {
        ::ndk::ScopedAParcel request(AParcel_create());
        ::ndk::ScopedAParcel reply(AParcel_create());
        writeArgs(request.get());
        AParcel_setDataPosition(request.get(), 0);
        const binder_status_t result = mOnTransact(mBinder.get(), code, request.get(), reply.get());
        return {result, parcelBytes(reply.get())};
    }

    Outcome dispatch(transaction_code_t code) {
        return dispatch(code, [](AParcel*) {});
    }

    // Strict: any call the test does not expect fails it.
    std::shared_ptr<StrictMock<MockTps>> mTps = ::ndk::SharedRefBase::make<StrictMock<MockTps>>();
    ::ndk::SpAIBinder mBinder = mTps->asBinder();
    AIBinder_Class_onTransact mOnTransact = onTransactOf(AIBinder_getClass(mBinder.get()));
};

TEST_F(TpsStubTest, CodesOutsideTheTableAreUnknownAndWriteNothing) {
    ASSERT_NE(mOnTransact, nullptr);
    for (transaction_code_t code : {0u, 10u, 16777213u, 16777216u}) {
        Outcome outcome = dispatch(code, [](AParcel* in) { AParcel_writeInt32(in, 1); });
        EXPECT_EQ(outcome.result, STATUS_UNKNOWN_TRANSACTION) << code;
        EXPECT_TRUE(outcome.reply.empty()) << code;
    }
}

TEST_F(TpsStubTest, VersionAndHashAreAnsweredWithoutTheImplementation) {
    Outcome version = dispatch(16777215);
    EXPECT_EQ(version.result, STATUS_OK);
    EXPECT_EQ(hex(version.reply), hex(Wire().ok().i32(1).bytes()));

    Outcome hash = dispatch(16777214);
    EXPECT_EQ(hash.result, STATUS_OK);
    EXPECT_EQ(hex(hash.reply), hex(Wire().ok().str(ITps::hash).bytes()));
    EXPECT_EQ(ITps::hash.size(), 40u);
    EXPECT_EQ(ITps::hash.find_first_not_of("0123456789abcdef"), std::string::npos) << ITps::hash;
}

TEST_F(TpsStubTest, ArgumentsArriveInParcelOrder) {
    EXPECT_CALL(*mTps, registerCallback(IsNull())).WillOnce(ReturnOk());
    EXPECT_CALL(*mTps, registerProcessor(true)).WillOnce(ReturnOk());
    EXPECT_CALL(*mTps, registerProcessor(false)).WillOnce(ReturnOk());
    EXPECT_CALL(*mTps, unregisterProcessor()).WillOnce(ReturnOk());
    EXPECT_CALL(*mTps, updateParams(-5, int64_t{1} << 40)).WillOnce(ReturnOk());
    EXPECT_CALL(*mTps, updateDisplayIDs(IsEmpty())).WillOnce(ReturnOk());
    EXPECT_CALL(*mTps, updateDisplayIDs(ElementsAre(0, 1, 7))).WillOnce(ReturnOk());
    EXPECT_CALL(*mTps, setParameters("brightness=128;pqMode=1")).WillOnce(ReturnOk());
    EXPECT_CALL(*mTps, setParameters("")).WillOnce(ReturnOk());

    const std::vector<uint8_t> okOnly = Wire().ok().bytes();
    auto expectOkOnly = [&](const Outcome& outcome) {
        EXPECT_EQ(outcome.result, STATUS_OK);
        EXPECT_EQ(hex(outcome.reply), hex(okOnly));
    };
    expectOkOnly(dispatch(2, [](AParcel* in) { AParcel_writeStrongBinder(in, nullptr); }));
    expectOkOnly(dispatch(3, [](AParcel* in) { AParcel_writeInt32(in, 2); }));
    expectOkOnly(dispatch(3, [](AParcel* in) { AParcel_writeInt32(in, 0); }));
    expectOkOnly(dispatch(4));
    expectOkOnly(dispatch(5, [](AParcel* in) {
        AParcel_writeInt64(in, -5);
        AParcel_writeInt64(in, int64_t{1} << 40);
    }));
    expectOkOnly(dispatch(6, [](AParcel* in) { AParcel_writeInt32Array(in, nullptr, 0); }));
    expectOkOnly(dispatch(6, [](AParcel* in) {
        const int32_t ids[] = {0, 1, 7};
        AParcel_writeInt32Array(in, ids, 3);
    }));
    expectOkOnly(dispatch(
            8, [](AParcel* in) { AParcel_writeString(in, "brightness=128;pqMode=1", 23); }));
    expectOkOnly(dispatch(8, [](AParcel* in) { AParcel_writeString(in, "", 0); }));
}

TEST_F(TpsStubTest, ResultsFollowAnOkStatusHeader) {
    const std::vector<float> status = {128.0f, 0.0f, 1.0f, 0.0f, 312.5f, 1080.0f, 2400.0f};
    EXPECT_CALL(*mTps, getTavixPrismStatus(_)).WillOnce(ReturnOkWith<0>(status));
    EXPECT_CALL(*mTps, getDisplayIDs(_)).WillOnce(ReturnOkWith<0>(std::vector<int32_t>{0, 1}));
    EXPECT_CALL(*mTps, getParameters("pqMode", _))
            .WillOnce(ReturnOkWith<1>(std::string("pqMode=1")));

    Outcome floats = dispatch(1);
    EXPECT_EQ(floats.result, STATUS_OK);
    Wire expected;
    expected.ok().i32(7);
    for (float value : status) expected.f32(value);
    EXPECT_EQ(hex(floats.reply), hex(expected.bytes()));

    Outcome ids = dispatch(7);
    EXPECT_EQ(ids.result, STATUS_OK);
    EXPECT_EQ(hex(ids.reply), hex(Wire().ok().i32(2).i32(0).i32(1).bytes()));

    Outcome text = dispatch(9, [](AParcel* in) { AParcel_writeString(in, "pqMode", 6); });
    EXPECT_EQ(text.result, STATUS_OK);
    EXPECT_EQ(hex(text.reply), hex(Wire().ok().str("pqMode=1").bytes()));
}

TEST_F(TpsStubTest, ReadFailuresEndTheCallBeforeTheMethodWithNothingWritten) {
    struct Case {
        const char* what;
        transaction_code_t code;
        std::function<void(AParcel*)> writeArgs;
        binder_status_t expected;
    };
    const Case cases[] = {
            {"boolean missing", 3, [](AParcel*) {}, STATUS_NOT_ENOUGH_DATA},
            {"second long missing", 5, [](AParcel* in) { AParcel_writeInt64(in, 1); },
             STATUS_NOT_ENOUGH_DATA},
            {"null array", 6, [](AParcel* in) { AParcel_writeInt32(in, -1); },
             STATUS_UNEXPECTED_NULL},
            {"negative array length", 6, [](AParcel* in) { AParcel_writeInt32(in, -2); },
             STATUS_BAD_VALUE},
            {"array longer than the parcel", 6,
             [](AParcel* in) {
                 AParcel_writeInt32(in, 3);
                 AParcel_writeInt32(in, 0);
             },
             STATUS_NO_MEMORY},
            {"null string", 8, [](AParcel* in) { AParcel_writeInt32(in, -1); },
             STATUS_UNEXPECTED_NULL},
            // A truncated string reads as a null one.
            {"string missing", 9, [](AParcel*) {}, STATUS_UNEXPECTED_NULL},
    };
    for (const Case& c : cases) {
        Outcome outcome = dispatch(c.code, c.writeArgs);
        EXPECT_EQ(outcome.result, c.expected) << c.what;
        EXPECT_TRUE(outcome.reply.empty()) << c.what;
    }
    // Whatever a broken binder object reads as, it is a failure and the method is not called.
    Outcome binder = dispatch(2, [](AParcel* in) { AParcel_writeInt32(in, 7); });
    EXPECT_NE(binder.result, STATUS_OK);
    EXPECT_TRUE(binder.reply.empty());
}

TEST_F(TpsStubTest, ErrorStatusTravelsInTheHeaderWithoutTheResult) {
    EXPECT_CALL(*mTps, getParameters("all", _)).WillOnce([](auto&&, std::string* out) {
        *out = "filled anyway";
        return ::ndk::ScopedAStatus::fromServiceSpecificError(42);
    });
    EXPECT_CALL(*mTps, getTavixPrismStatus(_)).WillOnce([](std::vector<float>* out) {
        *out = {1.0f};
        return ::ndk::ScopedAStatus::fromExceptionCodeWithMessage(EX_ILLEGAL_STATE, "abc");
    });
    EXPECT_CALL(*mTps, registerCallback(IsNull())).WillOnce([](auto&&) {
        return ::ndk::ScopedAStatus::fromExceptionCode(EX_UNSUPPORTED_OPERATION);
    });

    Outcome text = dispatch(9, [](AParcel* in) { AParcel_writeString(in, "all", 3); });
    EXPECT_EQ(text.result, STATUS_OK);
    EXPECT_EQ(hex(text.reply), hex(Wire().exception(EX_SERVICE_SPECIFIC).i32(42).bytes()));

    Outcome floats = dispatch(1);
    EXPECT_EQ(floats.result, STATUS_OK);
    EXPECT_EQ(hex(floats.reply), hex(Wire().exception(EX_ILLEGAL_STATE, "abc").bytes()));

    Outcome callback = dispatch(2, [](AParcel* in) { AParcel_writeStrongBinder(in, nullptr); });
    EXPECT_EQ(callback.result, STATUS_OK);
    EXPECT_EQ(hex(callback.reply), hex(Wire().exception(EX_UNSUPPORTED_OPERATION).bytes()));
}

TEST_F(TpsStubTest, TransactionFailedStatusFailsTheWholeTransaction) {
    // Such a status has no header form: the header write refuses it and the transaction fails.
    EXPECT_CALL(*mTps, unregisterProcessor()).WillOnce([] {
        return ::ndk::ScopedAStatus::fromStatus(STATUS_DEAD_OBJECT);
    });
    Outcome outcome = dispatch(4);
    EXPECT_EQ(outcome.result, STATUS_DEAD_OBJECT);
    EXPECT_TRUE(outcome.reply.empty());
}

TEST_F(TpsStubTest, CallbackBinderOfThisProcessArrivesAsTheObjectItself) {
    auto callback = ::ndk::SharedRefBase::make<StrictMock<MockTpsCallback>>();
    ::ndk::SpAIBinder callbackBinder = callback->asBinder();
    std::shared_ptr<ITpsCallback> received;
    EXPECT_CALL(*mTps, registerCallback(_)).WillOnce([&](const auto& in) {
        received = in;
        return ::ndk::ScopedAStatus::ok();
    });
    Outcome outcome =
            dispatch(2, [&](AParcel* in) { AParcel_writeStrongBinder(in, callbackBinder.get()); });
    EXPECT_EQ(outcome.result, STATUS_OK);
    EXPECT_EQ(received.get(), callback.get());
}

}  // namespace
}  // namespace aidl::vendor::tavix::tps::test
