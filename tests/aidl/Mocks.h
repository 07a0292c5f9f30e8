#pragma once

#include <aidl/vendor/tavix/tps/BnTps.h>
#include <aidl/vendor/tavix/tps/BnTpsCallback.h>
#include <gmock/gmock.h>

namespace aidl::vendor::tavix::tps::test {

class MockTps : public BnTps {
public:
    MOCK_METHOD(::ndk::ScopedAStatus, getTavixPrismStatus, (std::vector<float>*), (override));
    MOCK_METHOD(::ndk::ScopedAStatus, registerCallback, (const std::shared_ptr<ITpsCallback>&),
                (override));
    MOCK_METHOD(::ndk::ScopedAStatus, registerProcessor, (bool), (override));
    MOCK_METHOD(::ndk::ScopedAStatus, unregisterProcessor, (), (override));
    MOCK_METHOD(::ndk::ScopedAStatus, updateParams, (int64_t, int64_t), (override));
    MOCK_METHOD(::ndk::ScopedAStatus, updateDisplayIDs, (const std::vector<int32_t>&), (override));
    MOCK_METHOD(::ndk::ScopedAStatus, getDisplayIDs, (std::vector<int32_t>*), (override));
    MOCK_METHOD(::ndk::ScopedAStatus, setParameters, (const std::string&), (override));
    MOCK_METHOD(::ndk::ScopedAStatus, getParameters, (const std::string&, std::string*),
                (override));
};

class MockTpsCallback : public BnTpsCallback {
public:
    MOCK_METHOD(::ndk::ScopedAStatus, onTavixPrismPlaybackStart, (bool*), (override));
    MOCK_METHOD(::ndk::ScopedAStatus, onTavixPrismPlaybackStop, (bool*), (override));
    MOCK_METHOD(::ndk::ScopedAStatus, onTavixNotification, (const std::string&), (override));
};

// Action: store value through the pointer argument N, then return an OK status.
template <size_t N, typename T>
auto ReturnOkWith(T value) {
    return [value](auto&&... args) {
        *std::get<N>(std::forward_as_tuple(args...)) = value;
        return ::ndk::ScopedAStatus::ok();
    };
}

inline auto ReturnOk() {
    return [](auto&&...) { return ::ndk::ScopedAStatus::ok(); };
}

// A call that no test expected answers an error status rather than gmock's made-up null status,
// which the dispatcher would hand to the library and crash the whole run instead of failing
// one test.
inline const bool kDefaultStatusSet = [] {
    ::testing::DefaultValue<::ndk::ScopedAStatus>::SetFactory(
            [] { return ::ndk::ScopedAStatus::fromExceptionCode(EX_ILLEGAL_STATE); });
    return true;
}();

}  // namespace aidl::vendor::tavix::tps::test
