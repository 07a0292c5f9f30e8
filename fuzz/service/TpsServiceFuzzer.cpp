#include <android/binder_interface_utils.h>
#include <fuzzbinder/libbinder_ndk_driver.h>
#include <fuzzer/FuzzedDataProvider.h>

#include <memory>

#include "Tps.h"

using aidl::vendor::tavix::tps::Tps;

// Drives the service object with random transactions the way a client on another process could:
// any code, any parcel, including the processor keys that open the light sensor session.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::shared_ptr<Tps> service = ndk::SharedRefBase::make<Tps>();
    android::fuzzService(service->asBinder().get(), FuzzedDataProvider(data, size));
    return 0;
}
