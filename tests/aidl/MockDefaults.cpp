#include <android/binder_auto_utils.h>
#include <gmock/gmock.h>

namespace {

// A call that no test expected answers an error status rather than gmock's made-up null status,
// which the dispatcher would hand to the library and crash the whole run instead of failing
// one test.
const bool kDefaultStatusSet = [] {
    ::testing::DefaultValue<::ndk::ScopedAStatus>::SetFactory(
            [] { return ::ndk::ScopedAStatus::fromExceptionCode(EX_ILLEGAL_STATE); });
    return true;
}();

}  // namespace
