#pragma once

#include <aidl/vendor/tavix/tps/BnTps.h>
#include <aidl/vendor/tavix/tps/ITpsCallback.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <vector>

#include "AConfigParser.h"
#include "TpSensorReader.h"

namespace aidl::vendor::tavix::tps {

// The one service object. Binder pool threads call every method concurrently.
//
// Locks and what they guard:
//   mStatusLock   (reader-writer) -> mStatus
//   mSensorLock                   -> mSensorReader, mHasBrightnessNode
//   mCallbackLock                 -> mCallbacks and the render/logo counts and flags; it is also
//                                    held across every outgoing client notification
// Lock order: mStatusLock before mSensorLock. mCallbackLock is never held with another lock, so a
// client that blocks inside a notification can stall sessions and registration, never the status.
// The sensor session count and its two flags are atomics outside any lock.
class Tps : public BnTps {
public:
    Tps();
    ~Tps() override;

    ndk::ScopedAStatus getTavixPrismStatus(std::vector<float>* status) override;
    ndk::ScopedAStatus registerCallback(const std::shared_ptr<ITpsCallback>& callback) override;
    ndk::ScopedAStatus registerProcessor(bool enableFilter) override;
    ndk::ScopedAStatus unregisterProcessor() override;
    ndk::ScopedAStatus updateParams(int64_t paramId, int64_t value) override;
    ndk::ScopedAStatus updateDisplayIDs(const std::vector<int32_t>& ids) override;
    ndk::ScopedAStatus getDisplayIDs(std::vector<int32_t>* ids) override;
    ndk::ScopedAStatus setParameters(const std::string& keyValuePairs) override;
    ndk::ScopedAStatus getParameters(const std::string& keys, std::string* reply) override;

    // Open (true) or close (false) one session of each kind. They take their own locks; call them
    // with none of this object's locks held.
    void onTavixRenderNotification(bool enable);
    void onTavixLogoNotification(bool enable);
    void enableSensorReader(bool enable, bool enableFilter);

private:
    friend class TpsTestPeer;

    // Reported by the status query and written by the parameter commands.
    struct StatusBlock {
        int32_t mBrightness = -1;
        int32_t mAdjustedBrightness = -1;
        int32_t mReportedBrightness = 255;
        int32_t mReserved = 0;
        int32_t mMode = 0;
        int32_t mDisplayId = 0;
        float mLux = 0.0f;
        int32_t mDisplayWidth = 0;
        int32_t mDisplayHeight = 0;
        std::vector<int32_t> mPqModes;
        std::vector<int32_t> mDisplayIDs;
    };

    // Requires mCallbackLock.
    void maybeNeedToRegisterProcessor(const std::shared_ptr<ITpsCallback>& callback);
    // Requires mCallbackLock. Calls every client once and drops those whose call failed.
    void notifyCallbacksLocked(const std::string& event, const char* failureLine);

    // Requires mStatusLock (exclusive) and mSensorLock, in that order.
    void refreshDerivedValuesLocked();

    // Requires no lock. Changes the display whose brightness node is read.
    void setDisplayId(int32_t displayId);
    static void persistMode(int32_t mode);

    mutable std::shared_mutex mStatusLock;
    StatusBlock mStatus;  // guarded by mStatusLock

    std::vector<std::shared_ptr<ITpsCallback>> mCallbacks;  // guarded by mCallbackLock
    std::atomic<int32_t> mSensorProcessorCount{0};
    std::atomic<bool> mIsSensorPlaying{false};
    int32_t mLogoProcessorCount = 0;    // guarded by mCallbackLock
    bool mIsLogoPlaying = false;        // guarded by mCallbackLock
    int32_t mRenderProcessorCount = 0;  // guarded by mCallbackLock
    bool mIsRenderPlaying = false;      // guarded by mCallbackLock
    std::atomic<bool> mEnableFilter{false};
    std::unique_ptr<tavixPrism::TpSensorReader> mSensorReader;  // guarded by mSensorLock
    std::mutex mSensorLock;
    std::mutex mCallbackLock;
    bool mHasBrightnessNode = false;  // guarded by mSensorLock
    ::tps::AConfigParser mConfigParser;
    int32_t mBluMode = 0;  // written once by the constructor
};

}  // namespace aidl::vendor::tavix::tps
