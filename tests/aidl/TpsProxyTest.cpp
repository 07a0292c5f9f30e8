// BpTps: the requests it sends, how it reads replies, and the round trip through the real stub.

#include <aidl/vendor/tavix/tps/BpTps.h>
#include <gtest/gtest.h>

#include "LinkSeams.h"
#include "Mocks.h"
#include "ScriptedBinder.h"
#include "Wire.h"

namespace aidl::vendor::tavix::tps::test {
namespace {

using ::testing::_;
using ::testing::ElementsAre;
using ::testing::StrictMock;

constexpr binder_flags_t kVendorFlag = 0x10000000;

binder_status_t answer(AParcel* reply, const Wire& wire) {
    return AParcel_unmarshal(reply, wire.bytes().data(), wire.bytes().size());
}

class TpsProxyTest : public ::testing::Test {
protected:
    // What the other side does with each request; by default an OK header and nothing more.
    ScriptedBinder::Handler mAnswer = [](transaction_code_t, const AParcel*, AParcel* reply) {
        return answer(reply, Wire().ok());
    };
    ScriptedBinder mRemote{ITps::descriptor,
                           [this](transaction_code_t code, const AParcel* in, AParcel* out) {
                               return mAnswer(code, in, out);
                           }};
    std::shared_ptr<ITps> mProxy = ITps::fromBinder(mRemote.binder());
};

TEST_F(TpsProxyTest, RequestsAreTheTokenThenTheArgumentsWithTheVendorFlag) {
    ASSERT_NE(mProxy, nullptr);
    std::vector<float> floats;
    std::vector<int32_t> ids;
    std::string text;
    int32_t version = 0;
    struct Case {
        transaction_code_t code;
        std::function<void(ITps&)> call;
        Wire args;
    };
    const Case cases[] = {
            {1, [&](ITps& p) { p.getTavixPrismStatus(&floats); }, Wire()},
            // A null binder object: type BINDER, flags, binder 0, cookie 0, then stability 0.
            {2, [](ITps& p) { p.registerCallback(nullptr); },
             Wire().i32(0x73622a85).i32(0x13).i64(0).i64(0).i32(0)},
            {3, [](ITps& p) { p.registerProcessor(true); }, Wire().i32(1)},
            {3, [](ITps& p) { p.registerProcessor(false); }, Wire().i32(0)},
            {4, [](ITps& p) { p.unregisterProcessor(); }, Wire()},
            {5, [](ITps& p) { p.updateParams(7, -1); }, Wire().i64(7).i64(-1)},
            {6, [](ITps& p) { p.updateDisplayIDs({}); }, Wire().i32(0)},
            {6,
             [](ITps& p) {
                 p.updateDisplayIDs({3, 4});
             },
             Wire().i32(2).i32(3).i32(4)},
            {7, [&](ITps& p) { p.getDisplayIDs(&ids); }, Wire()},
            {8, [](ITps& p) { p.setParameters("a=1"); }, Wire().str("a=1")},
            {8, [](ITps& p) { p.setParameters(""); }, Wire().i32(0).i32(0)},
            {9, [&](ITps& p) { p.getParameters("all", &text); }, Wire().str("all")},
            {16777215, [&](ITps& p) { p.getInterfaceVersion(&version); }, Wire()},
            {16777214, [&](ITps& p) { p.getInterfaceHash(&text); }, Wire()},
    };
    for (const Case& c : cases) {
        takeTransactions();
        c.call(*mProxy);
        std::vector<ScriptedBinder::Request> requests = mRemote.requests();
        ASSERT_FALSE(requests.empty());
        EXPECT_EQ(requests.back().code, c.code);
        Wire expected = Wire().token("vendor.tavix.tps.ITps");
        expected.append(c.args);
        EXPECT_EQ(hex(requests.back().bytes), hex(expected.bytes())) << "code " << c.code;
        std::vector<TransactRecord> transacts = takeTransactions();
        ASSERT_EQ(transacts.size(), 1u);
        EXPECT_EQ(transacts[0].flags, kVendorFlag) << "code " << c.code;
    }
}

TEST_F(TpsProxyTest, ResultsAreReadAfterAnOkHeader) {
    mAnswer = [](transaction_code_t code, const AParcel*, AParcel* reply) -> binder_status_t {
        switch (code) {
            case 1:
                return answer(reply, Wire().ok().i32(3).f32(1.5f).f32(-2.0f).f32(255.0f));
            case 7:
                return answer(reply, Wire().ok().i32(0));
            case 9:
                return answer(reply, Wire().ok().str("pqMode=2"));
        }
        return STATUS_UNKNOWN_TRANSACTION;
    };
    std::vector<float> floats;
    ASSERT_TRUE(mProxy->getTavixPrismStatus(&floats).isOk());
    EXPECT_THAT(floats, ElementsAre(1.5f, -2.0f, 255.0f));

    std::vector<int32_t> ids = {9};
    ASSERT_TRUE(mProxy->getDisplayIDs(&ids).isOk());
    EXPECT_TRUE(ids.empty());

    std::string text;
    ASSERT_TRUE(mProxy->getParameters("pqMode", &text).isOk());
    EXPECT_EQ(text, "pqMode=2");
}

TEST_F(TpsProxyTest, ErrorStatusIsReturnedAsItCameAndTheResultIsLeftAlone) {
    mAnswer = [](transaction_code_t, const AParcel*, AParcel* reply) {
        // The string after the header must not be read.
        return answer(reply, Wire().exception(EX_SERVICE_SPECIFIC, "busy").i32(42).str("x"));
    };
    std::string text = "preset";
    ::ndk::ScopedAStatus status = mProxy->getParameters("all", &text);
    EXPECT_EQ(status.getExceptionCode(), EX_SERVICE_SPECIFIC);
    EXPECT_EQ(status.getServiceSpecificError(), 42);
    EXPECT_STREQ(status.getMessage(), "busy");
    EXPECT_EQ(text, "preset");
}

TEST_F(TpsProxyTest, TransportAndReadFailuresBecomeTheStatus) {
    struct Case {
        const char* what;
        ScriptedBinder::Handler handler;
        binder_status_t expected;
    };
    const Case cases[] = {
            {"dead peer",
             [](transaction_code_t, const AParcel*, AParcel*) { return STATUS_DEAD_OBJECT; },
             STATUS_DEAD_OBJECT},
            {"unknown code, no default",
             [](transaction_code_t, const AParcel*, AParcel*) {
                 return STATUS_UNKNOWN_TRANSACTION;
             },
             STATUS_UNKNOWN_TRANSACTION},
            {"empty reply", [](transaction_code_t, const AParcel*, AParcel*) { return STATUS_OK; },
             STATUS_NOT_ENOUGH_DATA},
            {"array missing",
             [](transaction_code_t, const AParcel*, AParcel* reply) {
                 return answer(reply, Wire().ok());
             },
             STATUS_NOT_ENOUGH_DATA},
            {"null array",
             [](transaction_code_t, const AParcel*, AParcel* reply) {
                 return answer(reply, Wire().ok().i32(-1));
             },
             STATUS_UNEXPECTED_NULL},
    };
    for (const Case& c : cases) {
        mAnswer = c.handler;
        std::vector<int32_t> ids = {5};
        ::ndk::ScopedAStatus status = mProxy->getDisplayIDs(&ids);
        EXPECT_EQ(status.getExceptionCode(), EX_TRANSACTION_FAILED) << c.what;
        EXPECT_EQ(status.getStatus(), c.expected) << c.what;
    }
}

TEST_F(TpsProxyTest, UnknownTransactionFallsBackToTheDefaultImplementation) {
    auto fallback = ::ndk::SharedRefBase::make<StrictMock<MockTps>>();
    EXPECT_CALL(*fallback, getParameters("all", _))
            .WillOnce(ReturnOkWith<1>(std::string("from default")));
    EXPECT_CALL(*fallback, updateParams(1, 2)).WillOnce(ReturnOk());
    mAnswer = [](transaction_code_t, const AParcel*, AParcel*) {
        return STATUS_UNKNOWN_TRANSACTION;
    };
    EXPECT_EQ(mProxy->unregisterProcessor().getStatus(), STATUS_UNKNOWN_TRANSACTION);

    ASSERT_TRUE(ITps::setDefaultImpl(fallback));
    std::string text;
    EXPECT_TRUE(mProxy->getParameters("all", &text).isOk());
    EXPECT_EQ(text, "from default");
    EXPECT_TRUE(mProxy->updateParams(1, 2).isOk());

    // Any other failure is not the default implementation's business.
    mAnswer = [](transaction_code_t, const AParcel*, AParcel*) { return STATUS_DEAD_OBJECT; };
    EXPECT_EQ(mProxy->unregisterProcessor().getStatus(), STATUS_DEAD_OBJECT);

    EXPECT_FALSE(ITps::setDefaultImpl(nullptr));
}

TEST(TpsRoundTripTest, ProxyAndStubAgreeOnEveryMethod) {
    auto tps = ::ndk::SharedRefBase::make<StrictMock<MockTps>>();
    auto callback = ::ndk::SharedRefBase::make<StrictMock<MockTpsCallback>>();
    // A proxy over the service's own binder takes the whole parcel path in-process.
    auto proxy = ::ndk::SharedRefBase::make<BpTps>(tps->asBinder());

    EXPECT_CALL(*tps, getTavixPrismStatus(_))
            .WillOnce(ReturnOkWith<0>(std::vector<float>{10.0f, 0.0f, 2.0f, 1.0f, 55.5f}));
    EXPECT_CALL(*tps, registerCallback(_)).WillOnce([&](const std::shared_ptr<ITpsCallback>& in) {
        EXPECT_EQ(in.get(), callback.get());
        return ::ndk::ScopedAStatus::ok();
    });
    EXPECT_CALL(*tps, registerProcessor(true)).WillOnce(ReturnOk());
    EXPECT_CALL(*tps, unregisterProcessor()).WillOnce(ReturnOk());
    EXPECT_CALL(*tps, updateParams(2, 1)).WillOnce(ReturnOk());
    EXPECT_CALL(*tps, updateDisplayIDs(ElementsAre(1, 0))).WillOnce(ReturnOk());
    EXPECT_CALL(*tps, getDisplayIDs(_)).WillOnce(ReturnOkWith<0>(std::vector<int32_t>{1, 0}));
    EXPECT_CALL(*tps, setParameters("brightness=128;pqMode=1")).WillOnce(ReturnOk());
    EXPECT_CALL(*tps, getParameters("pqMode", _))
            .WillOnce(ReturnOkWith<1>(std::string("pqMode=1")));

    std::vector<float> floats;
    EXPECT_TRUE(proxy->getTavixPrismStatus(&floats).isOk());
    EXPECT_THAT(floats, ElementsAre(10.0f, 0.0f, 2.0f, 1.0f, 55.5f));
    EXPECT_TRUE(proxy->registerCallback(callback).isOk());
    EXPECT_TRUE(proxy->registerProcessor(true).isOk());
    EXPECT_TRUE(proxy->unregisterProcessor().isOk());
    EXPECT_TRUE(proxy->updateParams(2, 1).isOk());
    EXPECT_TRUE(proxy->updateDisplayIDs({1, 0}).isOk());
    std::vector<int32_t> ids;
    EXPECT_TRUE(proxy->getDisplayIDs(&ids).isOk());
    EXPECT_THAT(ids, ElementsAre(1, 0));
    EXPECT_TRUE(proxy->setParameters("brightness=128;pqMode=1").isOk());
    std::string text;
    EXPECT_TRUE(proxy->getParameters("pqMode", &text).isOk());
    EXPECT_EQ(text, "pqMode=1");
    int32_t version = 0;
    EXPECT_TRUE(proxy->getInterfaceVersion(&version).isOk());
    EXPECT_EQ(version, 1);
    EXPECT_TRUE(proxy->getInterfaceHash(&text).isOk());
    EXPECT_EQ(text, ITps::hash);
}

}  // namespace
}  // namespace aidl::vendor::tavix::tps::test
