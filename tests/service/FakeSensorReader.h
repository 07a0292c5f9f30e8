#pragma once

#include <mutex>
#include <optional>
#include <vector>

namespace tps::test {

// What the service asked of tavixPrism::TpSensorReader, and what the fake answers. The fake
// reader (FakeSensorReader.cpp) is linked in place of the real one, so tests control lux and
// brightness exactly and see every call the service makes.
struct FakeReaderState {
    // Answers.
    float lux = 0.0f;
    float filteredLux = 0.0f;
    float nodeBrightness = 255.0f;
    float filteredNodeBrightness = 255.0f;
    // Without a value getFilteredBrightnessVal returns its argument.
    std::optional<float> filteredBrightness;
    bool nodeCheckResult = true;

    // Calls seen.
    int constructed = 0;
    int destroyed = 0;
    int enableSensorCalls = 0;
    int disableSensorCalls = 0;
    std::vector<int> checkedDisplays;
    std::vector<bool> ambientLuxFiltered;  // argument of each getAmbientLux
    std::vector<bool> brightnessFiltered;  // argument of each getBrightnessVal
    std::vector<float> filteredBrightnessInputs;
    std::vector<float> riseSpeeds;
    std::vector<float> fallSpeeds;

    int alive() const { return constructed - destroyed; }
};

// Thread-safe access to the one process-wide fake state.
class FakeReader {
public:
    static void reset();
    static FakeReaderState snapshot();
    template <typename Fn>
    static void update(Fn&& fn) {
        std::lock_guard<std::mutex> lock(sLock);
        fn(sState);
    }

private:
    static std::mutex sLock;
    static FakeReaderState sState;  // guarded by sLock
};

}  // namespace tps::test
