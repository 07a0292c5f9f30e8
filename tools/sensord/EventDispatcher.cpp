#define LOG_TAG "sensord"

#include "EventDispatcher.h"

#include <android/log.h>
#include <time.h>

#include <algorithm>

namespace sensord {

using ::aidl::android::hardware::sensors::AdditionalInfo;
using ::aidl::android::hardware::sensors::Event;
using ::aidl::android::hardware::sensors::SensorType;

namespace {

// Event time stamps count like elapsedRealtimeNanos: since boot, including suspend.
int64_t elapsedRealtimeNanos() {
    timespec now{};
    clock_gettime(CLOCK_BOOTTIME, &now);
    return static_cast<int64_t>(now.tv_sec) * 1000000000LL + now.tv_nsec;
}

Event additionalInfoEvent(int32_t handle, AdditionalInfo::AdditionalInfoType type, int32_t serial,
                          float value) {
    using Payload = AdditionalInfo::AdditionalInfoPayload;
    AdditionalInfo info;
    info.type = type;
    info.serial = serial;
    Payload::FloatValues values;
    values.values[0] = value;
    info.payload.set<Payload::dataFloat>(values);

    Event event;
    event.timestamp = elapsedRealtimeNanos();
    event.sensorHandle = handle;
    event.sensorType = SensorType::ADDITIONAL_INFO;
    event.payload.set<Event::EventPayload::additional>(info);
    return event;
}

}  // namespace

EventDispatcher::EventDispatcher(std::shared_ptr<LuxSource> source, bool additionalInfo)
    : mSource(std::move(source)), mAdditionalInfo(additionalInfo), mThread([this] { run(); }) {}

EventDispatcher::~EventDispatcher() {
    {
        std::lock_guard<std::mutex> lock(mLock);
        mStopping = true;
    }
    mWake.notify_all();
    mThread.join();
}

void EventDispatcher::enable(uint64_t queueId, const std::shared_ptr<IEventQueueCallback>& callback,
                             const SensorInfo& sensor, std::chrono::microseconds period) {
    const Clock::time_point now = Clock::now();
    const std::chrono::nanoseconds effective = std::max(period, kMinPeriod);
    {
        std::lock_guard<std::mutex> lock(mLock);
        auto it = std::find_if(mSubscriptions.begin(), mSubscriptions.end(), [&](const auto& s) {
            return s.queueId == queueId && s.sensor.sensorHandle == sensor.sensorHandle;
        });
        if (it != mSubscriptions.end()) {
            // Re-enabling only changes the rate; the source keeps its time line.
            it->period = effective;
            it->nextDue = now;
        } else {
            mSubscriptions.push_back(
                    Subscription{queueId, callback, sensor, effective, now, now, mAdditionalInfo});
        }
    }
    mWake.notify_all();
}

bool EventDispatcher::disable(uint64_t queueId, int32_t sensorHandle) {
    std::lock_guard<std::mutex> lock(mLock);
    auto it = std::find_if(mSubscriptions.begin(), mSubscriptions.end(), [&](const auto& s) {
        return s.queueId == queueId && s.sensor.sensorHandle == sensorHandle;
    });
    if (it == mSubscriptions.end()) return false;
    mSubscriptions.erase(it);
    return true;
}

void EventDispatcher::removeQueue(uint64_t queueId) {
    std::lock_guard<std::mutex> lock(mLock);
    std::erase_if(mSubscriptions, [&](const auto& s) { return s.queueId == queueId; });
}

std::vector<EventDispatcher::ActiveSensor> EventDispatcher::activeSensors() const {
    std::lock_guard<std::mutex> lock(mLock);
    std::vector<ActiveSensor> active;
    for (const Subscription& s : mSubscriptions) {
        active.push_back({s.queueId, s.sensor.sensorHandle, s.period});
    }
    return active;
}

uint64_t EventDispatcher::eventsSent() const {
    std::lock_guard<std::mutex> lock(mLock);
    return mEventsSent;
}

void EventDispatcher::collectLocked(Subscription& s, Clock::time_point now,
                                    std::vector<Delivery>* out) {
    // A late thread does not catch up with a burst; it resumes one period from now.
    s.nextDue += s.period;
    if (s.nextDue <= now) s.nextDue = now + s.period;

    // Only light sensors have a source; other sensors are accepted but stay silent.
    if (s.sensor.type != SensorType::LIGHT) return;
    const std::optional<float> lux = mSource->luxAt(now - s.enabledAt);
    if (!lux) return;

    const int32_t handle = s.sensor.sensorHandle;
    if (s.additionalInfoPending) {
        using Type = AdditionalInfo::AdditionalInfoType;
        s.additionalInfoPending = false;
        const int32_t serial = mInfoSerial++;
        out->push_back({s.callback, additionalInfoEvent(handle, Type::AINFO_BEGIN, serial, 0)});
        out->push_back({s.callback, additionalInfoEvent(handle, Type::AINFO_INTERNAL_TEMPERATURE,
                                                        serial, 25.0f)});
        out->push_back({s.callback, additionalInfoEvent(handle, Type::AINFO_END, serial, 0)});
    }

    Event event;
    event.timestamp = elapsedRealtimeNanos();
    event.sensorHandle = handle;
    event.sensorType = SensorType::LIGHT;
    event.payload.set<Event::EventPayload::scalar>(*lux);
    out->push_back({s.callback, std::move(event)});
}

void EventDispatcher::run() {
    std::vector<Delivery> deliveries;
    std::unique_lock<std::mutex> lock(mLock);
    while (!mStopping) {
        const Clock::time_point now = Clock::now();
        Clock::time_point wakeAt = Clock::time_point::max();
        for (Subscription& s : mSubscriptions) {
            if (s.nextDue <= now) collectLocked(s, now, &deliveries);
            wakeAt = std::min(wakeAt, s.nextDue);
        }

        if (!deliveries.empty()) {
            lock.unlock();
            for (const Delivery& d : deliveries) {
                ::ndk::ScopedAStatus status = d.callback->onEvent(d.event);
                if (!status.isOk()) {
                    __android_log_print(ANDROID_LOG_WARN, LOG_TAG, "onEvent failed: %s",
                                        status.getDescription().c_str());
                }
            }
            const uint64_t sent = deliveries.size();
            // Released before taking the lock again: a callback's destructor may call in.
            deliveries.clear();
            lock.lock();
            mEventsSent += sent;
            continue;
        }

        if (wakeAt == Clock::time_point::max()) {
            mWake.wait(lock);
        } else {
            mWake.wait_until(lock, wakeAt);
        }
    }
}

}  // namespace sensord
