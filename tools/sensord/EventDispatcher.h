#pragma once

#include <aidl/android/frameworks/sensorservice/IEventQueueCallback.h>
#include <aidl/android/hardware/sensors/Event.h>
#include <aidl/android/hardware/sensors/SensorInfo.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "LuxSource.h"

namespace sensord {

// The one delivery thread: for every enabled (queue, sensor) pair it sends an event each sampling
// period, oneway, to the queue's callback. Events of one queue go out in order. The lock is never
// held while a callback runs, so a callback may enable or disable; an event picked up just before
// a disable can still arrive after it, as with the platform service.
class EventDispatcher {
public:
    using Clock = std::chrono::steady_clock;
    using IEventQueueCallback = ::aidl::android::frameworks::sensorservice::IEventQueueCallback;
    using SensorInfo = ::aidl::android::hardware::sensors::SensorInfo;

    // The floor for any sampling period: faster is pointless on a host.
    static constexpr std::chrono::microseconds kMinPeriod{1000};

    EventDispatcher(std::shared_ptr<LuxSource> source, bool additionalInfo);
    // Stops and joins the delivery thread.
    ~EventDispatcher();
    EventDispatcher(const EventDispatcher&) = delete;
    EventDispatcher& operator=(const EventDispatcher&) = delete;

    // Starts delivery, or changes the period of an active sensor (the latest call wins).
    void enable(uint64_t queueId, const std::shared_ptr<IEventQueueCallback>& callback,
                const SensorInfo& sensor, std::chrono::microseconds period);
    // False if the sensor was not enabled on that queue.
    bool disable(uint64_t queueId, int32_t sensorHandle);
    // Drops every sensor of a queue that is going away.
    void removeQueue(uint64_t queueId);

    struct ActiveSensor {
        uint64_t queueId;
        int32_t sensorHandle;
        std::chrono::nanoseconds period;
    };
    // What is enabled right now, in enabling order.
    std::vector<ActiveSensor> activeSensors() const;

    // Events handed to callbacks so far; lets callers wait for progress without timing.
    uint64_t eventsSent() const;

private:
    struct Subscription {
        uint64_t queueId;
        std::shared_ptr<IEventQueueCallback> callback;
        SensorInfo sensor;
        std::chrono::nanoseconds period;
        Clock::time_point enabledAt;
        Clock::time_point nextDue;
        bool additionalInfoPending;
    };
    struct Delivery {
        std::shared_ptr<IEventQueueCallback> callback;
        ::aidl::android::hardware::sensors::Event event;
    };

    void run();
    // Appends the events due for s at now and schedules its next sample.
    void collectLocked(Subscription& s, Clock::time_point now, std::vector<Delivery>* out);

    const std::shared_ptr<LuxSource> mSource;
    const bool mAdditionalInfo;

    mutable std::mutex mLock;
    std::condition_variable mWake;             // subscriptions changed or stopping
    std::vector<Subscription> mSubscriptions;  // guarded by mLock
    bool mStopping = false;                    // guarded by mLock
    uint64_t mEventsSent = 0;                  // guarded by mLock
    int32_t mInfoSerial = 0;                   // guarded by mLock

    std::thread mThread;  // last: starts after everything above exists
};

}  // namespace sensord
