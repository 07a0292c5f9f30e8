#include <android/binder_auto_utils.h>
#include <android/binder_ibinder.h>
#include <android/binder_parcel_utils.h>
#include <fuzzer/FuzzedDataProvider.h>

#include <optional>
#include <string>
#include <vector>

#include "FuzzEnvironment.h"

namespace {

using tps::fuzz::check;

template <typename T>
void readOne(const AParcel* parcel) {
    T value{};
    (void)ndk::AParcel_readData(parcel, &value);
}

void readNullableBinder(const AParcel* parcel) {
    ndk::SpAIBinder binder;
    (void)ndk::AParcel_readNullableStrongBinder(parcel, &binder);
}

void readStatusHeader(const AParcel* parcel) {
    ndk::ScopedAStatus status;
    if (AParcel_readStatusHeader(parcel, status.getR()) == STATUS_OK) {
        (void)status.getDescription();
    }
}

// A binder to place among the raw bytes, so object offsets are exercised too.
ndk::SpAIBinder localBinder() {
    static AIBinder_Class* clazz = AIBinder_Class_define(
            "fuzz.parcel.Local", [](void*) -> void* { return nullptr; }, [](void*) {},
            [](AIBinder*, transaction_code_t, const AParcel*, AParcel*) -> binder_status_t {
                return STATUS_OK;
            });
    return ndk::SpAIBinder(AIBinder_new(clazz, nullptr));
}

using Reader = void (*)(const AParcel*);
const Reader kReaders[] = {
        readOne<int32_t>,
        readOne<uint32_t>,
        readOne<int64_t>,
        readOne<uint64_t>,
        readOne<float>,
        readOne<double>,
        readOne<bool>,
        readOne<char16_t>,
        readOne<int8_t>,
        readOne<std::string>,
        readOne<std::optional<std::string>>,
        readOne<std::vector<std::string>>,
        readOne<std::optional<std::vector<std::string>>>,
        readOne<std::vector<std::optional<std::string>>>,
        readOne<std::vector<int32_t>>,
        readOne<std::vector<int64_t>>,
        readOne<std::vector<float>>,
        readOne<std::vector<double>>,
        readOne<std::vector<bool>>,
        readOne<std::vector<char16_t>>,
        readOne<std::vector<uint8_t>>,
        readOne<std::optional<std::vector<int32_t>>>,
        readOne<ndk::SpAIBinder>,
        readNullableBinder,
        readOne<ndk::ScopedFileDescriptor>,
        readStatusHeader,
};
constexpr size_t kReaderCount = sizeof(kReaders) / sizeof(kReaders[0]);

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    tps::fuzz::setUpEnvironment();
    FuzzedDataProvider provider(data, size);
    const std::vector<uint8_t> bytes = provider.ConsumeBytes<uint8_t>(
            provider.ConsumeIntegralInRange<size_t>(0, provider.remaining_bytes()));

    ndk::ScopedAParcel parcel(AParcel_create());
    if (AParcel_unmarshal(parcel.get(), bytes.data(), bytes.size()) != STATUS_OK) return 0;

    // Marshalling gives back exactly what was unmarshalled.
    check(AParcel_getDataSize(parcel.get()) == static_cast<int32_t>(bytes.size()));
    std::vector<uint8_t> copy(bytes.size());
    check(AParcel_marshal(parcel.get(), copy.data(), 0, copy.size()) == STATUS_OK && copy == bytes);

    while (provider.remaining_bytes() > 0) {
        switch (provider.ConsumeIntegralInRange<int>(0, 9)) {
            case 0:
                // Positions a reader could have seen: word-aligned, as the API requires, and
                // near the data, since a write far past the end just zero-fills gigabytes.
                (void)AParcel_setDataPosition(
                        parcel.get(), 4 * provider.ConsumeIntegralInRange<int32_t>(
                                                  -2, AParcel_getDataSize(parcel.get()) / 4 + 16));
                break;
            case 1:
                (void)AParcel_writeStrongBinder(parcel.get(), localBinder().get());
                break;
            case 2:
                (void)AParcel_writeInt32(parcel.get(), provider.ConsumeIntegral<int32_t>());
                break;
            case 3: {
                ndk::ScopedAParcel other(AParcel_create());
                (void)AParcel_appendFrom(parcel.get(), other.get(),
                                         provider.ConsumeIntegral<int32_t>(),
                                         provider.ConsumeIntegral<int32_t>());
                (void)AParcel_setDataPosition(other.get(), 0);
                kReaders[provider.ConsumeIntegralInRange<size_t>(0, kReaderCount - 1)](other.get());
                break;
            }
            default:
                kReaders[provider.ConsumeIntegralInRange<size_t>(0, kReaderCount - 1)](
                        parcel.get());
                break;
        }
    }
    return 0;
}
