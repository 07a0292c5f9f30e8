#pragma once

#include <aidl/android/frameworks/sensorservice/IDirectReportChannel.h>
#include <android/binder_ibinder.h>

namespace aidl::android::frameworks::sensorservice {

class BnDirectReportChannel : public ::ndk::BnCInterface<IDirectReportChannel> {
public:
    BnDirectReportChannel();
    virtual ~BnDirectReportChannel();
    ::ndk::ScopedAStatus getInterfaceVersion(int32_t* _aidl_return) final;
    ::ndk::ScopedAStatus getInterfaceHash(std::string* _aidl_return) final;

protected:
    ::ndk::SpAIBinder createBinder() override;
};

}  // namespace aidl::android::frameworks::sensorservice
