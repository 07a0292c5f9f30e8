#include <aidl/vendor/tavix/tps/BpTpsCallback.h>
#include <android/binder_parcel_utils.h>
#include <fuzzer/FuzzedDataProvider.h>

#include <memory>
#include <string>
#include <vector>

#include "FuzzEnvironment.h"

namespace {

using aidl::vendor::tavix::tps::BpTpsCallback;
using aidl::vendor::tavix::tps::ITpsCallback;
using aidl::vendor::tavix::tps::ITpsCallbackDefault;

// The client's side: every reply is made up by the input, raw or as a status and one value.
binder_status_t reply(AIBinder* binder, transaction_code_t, const AParcel*, AParcel* out) {
    auto& provider = *static_cast<FuzzedDataProvider*>(AIBinder_getUserData(binder));
    if (provider.ConsumeBool()) {
        const std::vector<uint8_t> bytes =
                provider.ConsumeBytes<uint8_t>(provider.ConsumeIntegralInRange<size_t>(0, 64));
        (void)AParcel_unmarshal(out, bytes.data(), bytes.size());
    } else {
        ndk::ScopedAStatus status =
                provider.ConsumeBool() ? ndk::ScopedAStatus::ok()
                                       : ndk::ScopedAStatus::fromExceptionCodeWithMessage(
                                                 provider.ConsumeIntegral<int32_t>(),
                                                 provider.ConsumeRandomLengthString(32).c_str());
        (void)AParcel_writeStatusHeader(out, status.get());
        if (provider.ConsumeBool()) (void)AParcel_writeBool(out, provider.ConsumeBool());
        if (provider.ConsumeBool()) (void)AParcel_writeInt32(out, provider.ConsumeIntegral<int>());
        if (provider.ConsumeBool()) {
            (void)ndk::AParcel_writeString(out, provider.ConsumeRandomLengthString(64));
        }
    }
    return provider.ConsumeBool() ? STATUS_OK : provider.ConsumeIntegral<int32_t>();
}

// Same descriptor, another class object: the interface then reaches it through its proxy, as it
// does a binder from another process.
const AIBinder_Class* foreignClass() {
    static AIBinder_Class* clazz = AIBinder_Class_define(
            ITpsCallback::descriptor, [](void* args) { return args; }, [](void*) {}, reply);
    return clazz;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    tps::fuzz::setUpEnvironment();
    FuzzedDataProvider provider(data, size);
    // Answers unknown transactions when set; the proxy must then defer to it.
    ITpsCallback::setDefaultImpl(
            provider.ConsumeBool() ? ndk::SharedRefBase::make<ITpsCallbackDefault>() : nullptr);

    ndk::SpAIBinder binder(AIBinder_new(foreignClass(), &provider));
    std::shared_ptr<ITpsCallback> callback = ITpsCallback::fromBinder(binder);
    if (dynamic_cast<BpTpsCallback*>(callback.get()) == nullptr) abort();

    while (provider.remaining_bytes() > 0) {
        bool answer = false;
        int32_t version = 0;
        std::string hash;
        switch (provider.ConsumeIntegralInRange<int>(0, 4)) {
            case 0:
                (void)callback->onTavixPrismPlaybackStart(&answer);
                break;
            case 1:
                (void)callback->onTavixPrismPlaybackStop(&answer);
                break;
            case 2:
                (void)callback->onTavixNotification(provider.ConsumeRandomLengthString(64));
                break;
            case 3:
                (void)callback->getInterfaceVersion(&version);
                break;
            default:
                (void)callback->getInterfaceHash(&hash);
                break;
        }
    }
    ITpsCallback::setDefaultImpl(nullptr);
    return 0;
}
