#pragma once

#include <android/binder_ibinder.h>

#include "aidl/vendor/tavix/tps/ITpsCallback.h"

namespace aidl::vendor::tavix::tps {

class BnTpsCallback : public ::ndk::BnCInterface<ITpsCallback> {
public:
    BnTpsCallback();
    virtual ~BnTpsCallback();
    ::ndk::ScopedAStatus getInterfaceVersion(int32_t* _aidl_return) final;
    ::ndk::ScopedAStatus getInterfaceHash(std::string* _aidl_return) final;

protected:
    ::ndk::SpAIBinder createBinder() override;
};

}  // namespace aidl::vendor::tavix::tps
