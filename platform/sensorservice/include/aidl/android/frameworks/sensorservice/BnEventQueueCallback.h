#pragma once

#include <aidl/android/frameworks/sensorservice/IEventQueueCallback.h>
#include <android/binder_ibinder.h>

namespace aidl::android::frameworks::sensorservice {

class BnEventQueueCallback : public ::ndk::BnCInterface<IEventQueueCallback> {
public:
    BnEventQueueCallback();
    virtual ~BnEventQueueCallback();
    ::ndk::ScopedAStatus getInterfaceVersion(int32_t* _aidl_return) final;
    ::ndk::ScopedAStatus getInterfaceHash(std::string* _aidl_return) final;

protected:
    ::ndk::SpAIBinder createBinder() override;
};

}  // namespace aidl::android::frameworks::sensorservice
