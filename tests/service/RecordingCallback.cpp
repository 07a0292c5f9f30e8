#include "ServiceTestSupport.h"

namespace tps::test {

ndk::ScopedAStatus RecordingCallback::onTavixNotification(const std::string& event) {
    std::function<void(const std::string&)> hook;
    binder_status_t failure;
    {
        std::lock_guard<std::mutex> lock(mLock);
        mEvents.push_back(event);
        hook = mHook;
        failure = mFailure;
    }
    if (hook) hook(event);
    if (failure != STATUS_OK) return ndk::ScopedAStatus::fromStatus(failure);
    return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus RecordingCallback::onTavixPrismPlaybackStart(bool* handled) {
    ADD_FAILURE() << "the service never calls onTavixPrismPlaybackStart";
    *handled = false;
    return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus RecordingCallback::onTavixPrismPlaybackStop(bool* handled) {
    ADD_FAILURE() << "the service never calls onTavixPrismPlaybackStop";
    *handled = false;
    return ndk::ScopedAStatus::ok();
}

std::vector<std::string> RecordingCallback::events() const {
    std::lock_guard<std::mutex> lock(mLock);
    return mEvents;
}

void RecordingCallback::failWith(binder_status_t status) {
    std::lock_guard<std::mutex> lock(mLock);
    mFailure = status;
}

void RecordingCallback::setHook(std::function<void(const std::string&)> hook) {
    std::lock_guard<std::mutex> lock(mLock);
    mHook = std::move(hook);
}

}  // namespace tps::test
