#pragma once

#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

namespace tps::test {

// What the fake light sensor manager has been asked, and what it answers. Shared by every
// TPLightSensorManager in the test binary.
struct FakeLightSensorState {
    int constructed = 0;
    int destroyed = 0;
    std::vector<std::string> calls;  // method names in call order
    int32_t createLightSensorResult = 0;
    int32_t createEventQueueResult = 0;
    int32_t enableSensorResult = 0;
    int32_t disableSensorResult = 0;
    float lux = 0.0f;
};

// Linked in place of the real manager (reader_FakeLightSensorManager.cpp defines its members),
// so reader tests need no sensor service.
class FakeLightSensor {
public:
    static void reset();
    static FakeLightSensorState snapshot();
    template <typename Fn>
    static void update(Fn fn) {
        std::lock_guard<std::mutex> lock(sLock);
        fn(sState);
    }

private:
    static std::mutex sLock;
    static FakeLightSensorState sState;  // GUARDED_BY(sLock)
};

}  // namespace tps::test
