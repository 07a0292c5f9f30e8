// The ITps and ITpsCallback dispatchers, driven with hand-made request parcels through its
// on-transact hook.

#include <aidl/vendor/tavix/tps/BnTps.h>
#include <aidl/vendor/tavix/tps/BnTpsCallback.h>
#include <gtest/gtest.h>

#include "LinkSeams.h"
#include "Mocks.h"

namespace aidl::vendor::tavix::tps::test {
namespace {

using ::testing::_;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::IsNull;
using ::testing::StrictMock;

class TpsStubTest : public ::testing::Test {
protected:
    template <typename Args>
    Outcome dispatch(transaction_code_t code, const Args& args) {
        return test::dispatch(mBinder.get(), code, args);
    }
    Outcome dispatch(transaction_code_t code) { return dispatch(code, Wire()); }

    // Strict: any call the test does not expect fails it.
    std::shared_ptr<StrictMock<MockTps>> mTps = ::ndk::SharedRefBase::make<StrictMock<MockTps>>();
    ::ndk::SpAIBinder mBinder = mTps->asBinder();
};

TEST_F(TpsStubTest, CodesOutsideTheTableAreUnknownAndWriteNothing) {
    for (transaction_code_t code : {0u, 10u, 16777213u, 16777216u}) {
        Outcome outcome = dispatch(code, Wire().i32(1));
        EXPECT_EQ(outcome.result, STATUS_UNKNOWN_TRANSACTION) << code;
        EXPECT_TRUE(outcome.reply.empty()) << code;
    }
}

TEST_F(TpsStubTest, EachCodeReadsItsArgumentsAndWritesItsHeaderAndResult) {
    const std::vector<float> status = {128.0f, 0.0f, 1.0f, 0.0f, 312.5f, 1080.0f, 2400.0f};
    EXPECT_CALL(*mTps, getTavixPrismStatus(_)).WillOnce(ReturnOkWith<0>(status));
    EXPECT_CALL(*mTps, registerProcessor(true)).WillOnce(ReturnOk());
    EXPECT_CALL(*mTps, registerProcessor(false)).WillOnce(ReturnOk());
    EXPECT_CALL(*mTps, unregisterProcessor()).WillOnce(ReturnOk());
    EXPECT_CALL(*mTps, updateParams(-5, int64_t{1} << 40)).WillOnce(ReturnOk());
    EXPECT_CALL(*mTps, updateDisplayIDs(IsEmpty())).WillOnce(ReturnOk());
    EXPECT_CALL(*mTps, updateDisplayIDs(ElementsAre(0, 1, 7))).WillOnce(ReturnOk());
    EXPECT_CALL(*mTps, getDisplayIDs(_)).WillOnce(ReturnOkWith<0>(std::vector<int32_t>{0, 1}));
    EXPECT_CALL(*mTps, setParameters("brightness=128;pqMode=1")).WillOnce(ReturnOk());
    EXPECT_CALL(*mTps, setParameters("")).WillOnce(ReturnOk());
    EXPECT_CALL(*mTps, getParameters("pqMode", _))
            .WillOnce(ReturnOkWith<1>(std::string("pqMode=1")));

    Wire floats = Wire().ok().i32(7);
    for (float value : status) floats.f32(value);
    struct Case {
        transaction_code_t code;
        Wire args;
        Wire reply;
    };
    const Case cases[] = {
            {1, Wire(), floats},
            {3, Wire().i32(2), Wire().ok()},
            {3, Wire().i32(0), Wire().ok()},
            {4, Wire(), Wire().ok()},
            {5, Wire().i64(-5).i64(int64_t{1} << 40), Wire().ok()},
            {6, Wire().i32(0), Wire().ok()},
            {6, Wire().i32(3).i32(0).i32(1).i32(7), Wire().ok()},
            {7, Wire(), Wire().ok().i32(2).i32(0).i32(1)},
            {8, Wire().str("brightness=128;pqMode=1"), Wire().ok()},
            {8, Wire().str(""), Wire().ok()},
            {9, Wire().str("pqMode"), Wire().ok().str("pqMode=1")},
            // Version and hash are answered without the implementation.
            {16777215, Wire(), Wire().ok().i32(1)},
            {16777214, Wire(), Wire().ok().str(ITps::hash)},
    };
    for (const Case& c : cases) {
        Outcome outcome = dispatch(c.code, c.args);
        EXPECT_EQ(outcome.result, STATUS_OK) << "code " << c.code;
        EXPECT_EQ(hex(outcome.reply), hex(c.reply.bytes())) << "code " << c.code;
    }
}

TEST_F(TpsStubTest, ReadFailuresEndTheCallBeforeTheMethodWithNothingWritten) {
    struct Case {
        const char* what;
        transaction_code_t code;
        Wire args;
        binder_status_t expected;
    };
    const Case cases[] = {
            {"boolean missing", 3, Wire(), STATUS_NOT_ENOUGH_DATA},
            {"second long missing", 5, Wire().i64(1), STATUS_NOT_ENOUGH_DATA},
            {"null array", 6, Wire().i32(-1), STATUS_UNEXPECTED_NULL},
            {"array longer than the parcel", 6, Wire().i32(3).i32(0), STATUS_NO_MEMORY},
            {"null string", 8, Wire().i32(-1), STATUS_UNEXPECTED_NULL},
            // A truncated string reads as a null one.
            {"string missing", 9, Wire(), STATUS_UNEXPECTED_NULL},
    };
    for (const Case& c : cases) {
        Outcome outcome = dispatch(c.code, c.args);
        EXPECT_EQ(outcome.result, c.expected) << c.what;
        EXPECT_TRUE(outcome.reply.empty()) << c.what;
    }
    // Whatever a broken binder object reads as, it is a failure and the method is not called.
    Outcome binder = dispatch(2, Wire().i32(7));
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
    // A transaction-failed status has no header form: the header write refuses it and the
    // transaction fails.
    EXPECT_CALL(*mTps, unregisterProcessor()).WillOnce([] {
        return ::ndk::ScopedAStatus::fromStatus(STATUS_DEAD_OBJECT);
    });

    Outcome text = dispatch(9, Wire().str("all"));
    EXPECT_EQ(text.result, STATUS_OK);
    EXPECT_EQ(hex(text.reply), hex(Wire().exception(EX_SERVICE_SPECIFIC).i32(42).bytes()));
    Outcome floats = dispatch(1);
    EXPECT_EQ(floats.result, STATUS_OK);
    EXPECT_EQ(hex(floats.reply), hex(Wire().exception(EX_ILLEGAL_STATE, "abc").bytes()));
    Outcome failed = dispatch(4);
    EXPECT_EQ(failed.result, STATUS_DEAD_OBJECT);
    EXPECT_TRUE(failed.reply.empty());
}

TEST_F(TpsStubTest, CallbackArrivesAsNullOrAsTheObjectOfThisProcess) {
    auto callback = ::ndk::SharedRefBase::make<StrictMock<MockTpsCallback>>();
    ::ndk::SpAIBinder callbackBinder = callback->asBinder();
    std::shared_ptr<ITpsCallback> received;
    EXPECT_CALL(*mTps, registerCallback(IsNull())).WillOnce([](auto&&) {
        return ::ndk::ScopedAStatus::fromExceptionCode(EX_UNSUPPORTED_OPERATION);
    });
    EXPECT_CALL(*mTps, registerCallback(::testing::NotNull())).WillOnce([&](const auto& in) {
        received = in;
        return ::ndk::ScopedAStatus::ok();
    });

    Outcome null = dispatch(2, [](AParcel* in) { AParcel_writeStrongBinder(in, nullptr); });
    EXPECT_EQ(null.result, STATUS_OK);
    EXPECT_EQ(hex(null.reply), hex(Wire().exception(EX_UNSUPPORTED_OPERATION).bytes()));
    Outcome object =
            dispatch(2, [&](AParcel* in) { AParcel_writeStrongBinder(in, callbackBinder.get()); });
    EXPECT_EQ(hex(object.reply), hex(Wire().ok().bytes()));
    EXPECT_EQ(received.get(), callback.get());
}

TEST(CallbackStubTest, EachCodeWritesItsHeaderAndResultOrNothingOnFailure) {
    auto callback = ::ndk::SharedRefBase::make<StrictMock<MockTpsCallback>>();
    EXPECT_CALL(*callback, onTavixPrismPlaybackStart(_))
            .WillOnce(ReturnOkWith<0>(true))
            .WillOnce([](bool* out) {
                *out = true;
                return ::ndk::ScopedAStatus::fromExceptionCode(EX_ILLEGAL_STATE);
            });
    EXPECT_CALL(*callback, onTavixPrismPlaybackStop(_)).WillOnce(ReturnOk());
    EXPECT_CALL(*callback, onTavixNotification("Callback_TavixLogoStop")).WillOnce(ReturnOk());
    struct Case {
        transaction_code_t code;
        Wire args;
        binder_status_t result;
        Wire reply;
    };
    const Case cases[] = {
            {1, Wire(), STATUS_OK, Wire().ok().i32(1)},
            {1, Wire(), STATUS_OK, Wire().exception(EX_ILLEGAL_STATE)},
            // The result is preset to false for a method that leaves it alone.
            {2, Wire(), STATUS_OK, Wire().ok().i32(0)},
            {3, Wire().str("Callback_TavixLogoStop"), STATUS_OK, Wire().ok()},
            // A null or missing event string never reaches the method.
            {3, Wire().i32(-1), STATUS_UNEXPECTED_NULL, Wire()},
            {3, Wire(), STATUS_UNEXPECTED_NULL, Wire()},
            {16777215, Wire(), STATUS_OK, Wire().ok().i32(1)},
            {16777214, Wire(), STATUS_OK, Wire().ok().str(ITpsCallback::hash)},
            {0, Wire(), STATUS_UNKNOWN_TRANSACTION, Wire()},
            {4, Wire(), STATUS_UNKNOWN_TRANSACTION, Wire()},
    };
    for (const Case& c : cases) {
        Outcome outcome = dispatch(callback->asBinder().get(), c.code, c.args);
        EXPECT_EQ(outcome.result, c.result) << "code " << c.code;
        EXPECT_EQ(hex(outcome.reply), hex(c.reply.bytes())) << "code " << c.code;
    }
}

}  // namespace
}  // namespace aidl::vendor::tavix::tps::test
