#pragma once

#include <android/binder_ibinder.h>

#include "aidl/vendor/tavix/tps/ITps.h"

namespace aidl::vendor::tavix::tps {

class BnTps : public ::ndk::BnCInterface<ITps> {
public:
    BnTps();
    virtual ~BnTps();
    ::ndk::ScopedAStatus getInterfaceVersion(int32_t* _aidl_return) final;
    ::ndk::ScopedAStatus getInterfaceHash(std::string* _aidl_return) final;

protected:
    ::ndk::SpAIBinder createBinder() override;
};

}  // namespace aidl::vendor::tavix::tps
