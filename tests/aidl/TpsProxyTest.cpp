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

    std::string lastRequestHex() {
        std::vector<ScriptedBinder::Request> requests = mRemote.requests();
        return requests.empty() ? "<none>" : hex(requests.back().bytes);
    }

    transaction_code_t lastCode() {
        std::vector<ScriptedBinder::Request> requests = mRemote.requests();
        return requests.empty() ? 0 : requests.back().code;
    }

    static std::string expect(const Wire& wire) { return hex(wire.bytes()); }
};

TEST_F(TpsProxyTest, RequestsAreTheTokenThenTheArguments) {
    ASSERT_NE(mProxy, nullptr);
    const Wire token = Wire().token("vendor.tavix.tps.ITps");
    auto withToken = [&] { return Wire(token); };
    std::vector<float> floats;
    std::vector<int32_t> ids;
    std::string text;
    int32_t version = 0;

    mProxy->getTavixPrismStatus(&floats);
    EXPECT_EQ(lastCode(), 1u);
    EXPECT_EQ(lastRequestHex(), expect(token));

    mProxy->registerProcessor(true);
    EXPECT_EQ(lastCode(), 3u);
    EXPECT_EQ(lastRequestHex(), expect(withToken().i32(1)));
    mProxy->registerProcessor(false);
    EXPECT_EQ(lastRequestHex(), expect(withToken().i32(0)));

    mProxy->unregisterProcessor();
    EXPECT_EQ(lastCode(), 4u);
    EXPECT_EQ(lastRequestHex(), expect(token));

    mProxy->updateParams(7, -1);
    EXPECT_EQ(lastCode(), 5u);
    EXPECT_EQ(lastRequestHex(), expect(withToken().i64(7).i64(-1)));

    mProxy->updateDisplayIDs({});
    EXPECT_EQ(lastCode(), 6u);
    EXPECT_EQ(lastRequestHex(), expect(withToken().i32(0)));
    mProxy->updateDisplayIDs({3, 4});
    EXPECT_EQ(lastRequestHex(), expect(withToken().i32(2).i32(3).i32(4)));

    mProxy->getDisplayIDs(&ids);
    EXPECT_EQ(lastCode(), 7u);
    EXPECT_EQ(lastRequestHex(), expect(token));

    mProxy->setParameters("a=1");
    EXPECT_EQ(lastCode(), 8u);
    EXPECT_EQ(lastRequestHex(), expect(withToken().str("a=1")));
    mProxy->setParameters("");
    EXPECT_EQ(lastRequestHex(), expect(withToken().i32(0).i32(0)));

    mProxy->getParameters("all", &text);
    EXPECT_EQ(lastCode(), 9u);
    EXPECT_EQ(lastRequestHex(), expect(withToken().str("all")));

    mProxy->getInterfaceVersion(&version);
    EXPECT_EQ(lastCode(), 16777215u);
    EXPECT_EQ(lastRequestHex(), expect(token));

    mProxy->getInterfaceHash(&text);
    EXPECT_EQ(lastCode(), 16777214u);
    EXPECT_EQ(lastRequestHex(), expect(token));
}

TEST_F(TpsProxyTest, NullCallbackIsSentAsANullBinderObject) {
    EXPECT_TRUE(mProxy->registerCallback(nullptr).isOk());
    EXPECT_EQ(lastCode(), 2u);
    // flat_binder_object {type BINDER, flags, binder 0, cookie 0}, then stability 0.
    Wire expected = Wire().token("vendor.tavix.tps.ITps").i32(0x73622a85).i32(0x13).i64(0).i64(0);
    EXPECT_EQ(lastRequestHex(), expect(expected.i32(0)));
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
    ASSERT_TRUE(ITps::setDefaultImpl(fallback));

    mAnswer = [](transaction_code_t, const AParcel*, AParcel*) {
        return STATUS_UNKNOWN_TRANSACTION;
    };
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

    takeTransactions();
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

    std::vector<TransactRecord> transacts = takeTransactions();
    EXPECT_EQ(transacts.size(), 11u);
    for (const TransactRecord& record : transacts) {
        EXPECT_EQ(record.flags, kVendorFlag) << "code " << record.code;
    }
}

}  // namespace
}  // namespace aidl::vendor::tavix::tps::test
