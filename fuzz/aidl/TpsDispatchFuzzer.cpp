#include <aidl/vendor/tavix/tps/BnTpsCallback.h>
#include <android/binder_parcel_utils.h>
#include <fuzzer/FuzzedDataProvider.h>
#include <sys/system_properties.h>

#include <memory>
#include <string>
#include <vector>

#include "FuzzEnvironment.h"
#include "Tps.h"
#include "TpsConstants.h"
#include "reader_FakeLightSensorManager.h"

namespace {

using aidl::vendor::tavix::tps::BnTpsCallback;
using aidl::vendor::tavix::tps::ITps;
using aidl::vendor::tavix::tps::kModeProperty;
using aidl::vendor::tavix::tps::Tps;

// A client in this process; it answers every notification as the input says.
class FuzzCallback : public BnTpsCallback {
public:
    explicit FuzzCallback(FuzzedDataProvider& provider) : mProvider(provider) {}
    ndk::ScopedAStatus onTavixPrismPlaybackStart(bool* started) override {
        *started = mProvider.ConsumeBool();
        return answer();
    }
    ndk::ScopedAStatus onTavixPrismPlaybackStop(bool* stopped) override {
        *stopped = mProvider.ConsumeBool();
        return answer();
    }
    ndk::ScopedAStatus onTavixNotification(const std::string&) override { return answer(); }

private:
    ndk::ScopedAStatus answer() {
        if (mProvider.ConsumeBool()) return ndk::ScopedAStatus::ok();
        return ndk::ScopedAStatus::fromStatus(mProvider.ConsumeIntegral<int32_t>());
    }
    FuzzedDataProvider& mProvider;
};

uint32_t pickCode(FuzzedDataProvider& provider) {
    if (provider.ConsumeBool()) return provider.ConsumeIntegral<uint32_t>();
    const uint32_t known[] = {
            ITps::TRANSACTION_getTavixPrismStatus, ITps::TRANSACTION_getParameters,
            ITps::TRANSACTION_getInterfaceVersion, ITps::TRANSACTION_getInterfaceHash};
    if (provider.ConsumeBool()) return provider.PickValueInArray(known);
    return ITps::TRANSACTION_getTavixPrismStatus + provider.ConsumeIntegralInRange<uint32_t>(0, 9);
}

void writeArgument(FuzzedDataProvider& provider, AParcel* in) {
    switch (provider.ConsumeIntegralInRange<int>(0, 7)) {
        case 0:
            (void)AParcel_writeInt32(in, provider.ConsumeIntegral<int32_t>());
            break;
        case 1:
            (void)AParcel_writeInt64(in, provider.ConsumeIntegral<int64_t>());
            break;
        case 2:
            (void)AParcel_writeBool(in, provider.ConsumeBool());
            break;
        case 3:
            (void)ndk::AParcel_writeString(in, provider.ConsumeRandomLengthString(256));
            break;
        case 4:
            (void)AParcel_writeString(in, nullptr, -1);
            break;
        case 5: {
            std::vector<int32_t> ids(provider.ConsumeIntegralInRange<size_t>(0, 16));
            for (int32_t& id : ids) id = provider.ConsumeIntegral<int32_t>();
            (void)ndk::AParcel_writeVector(in, ids);
            break;
        }
        case 6: {
            auto callback = ndk::SharedRefBase::make<FuzzCallback>(provider);
            (void)AParcel_writeStrongBinder(in, callback->asBinder().get());
            break;
        }
        default:
            (void)AParcel_writeStrongBinder(in, nullptr);
            break;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    tps::fuzz::setUpEnvironment();
    // The mode persisted by one input must not reach the next one's constructor.
    (void)__system_property_set(kModeProperty, "0");
    FuzzedDataProvider provider(data, size);
    tps::test::FakeLightSensor::reset();
    tps::test::FakeLightSensor::update([&](tps::test::FakeLightSensorState& s) {
        s.createLightSensorResult = provider.ConsumeBool() ? 0 : -1;
        s.enableSensorResult = provider.ConsumeBool() ? 0 : -1;
        s.lux = provider.ConsumeFloatingPoint<float>();
    });

    // Declared after the provider: callbacks the service keeps read from it until it is gone.
    std::shared_ptr<Tps> service = ndk::SharedRefBase::make<Tps>();
    ndk::SpAIBinder binder = service->asBinder();
    for (int calls = 0; calls < 32 && provider.remaining_bytes() > 0; ++calls) {
        ndk::ScopedAParcel in;
        if (AIBinder_prepareTransaction(binder.get(), in.getR()) != STATUS_OK) abort();
        const int header = provider.ConsumeIntegralInRange<int>(0, 3);
        if (header == 1) (void)AParcel_reset(in.get());
        if (header == 2) {
            (void)AParcel_reset(in.get());
            (void)ndk::AParcel_writeString(in.get(), provider.ConsumeRandomLengthString(64));
        }
        const uint32_t code = pickCode(provider);
        for (int n = provider.ConsumeIntegralInRange<int>(0, 4); n > 0; --n) {
            writeArgument(provider, in.get());
        }
        ndk::ScopedAParcel out;
        (void)AIBinder_transact(binder.get(), code, in.getR(), out.getR(),
                                provider.ConsumeBool() ? FLAG_ONEWAY : 0);
    }
    return 0;
}
