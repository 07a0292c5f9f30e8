#pragma once

#include <chrono>
#include <optional>

namespace sensord {

// Where the simulated light sensor's readings come from. Called from the delivery thread.
class LuxSource {
public:
    virtual ~LuxSource() = default;

    // The lux to report `elapsed` after the sensor was enabled; nothing while the source has
    // no value yet.
    virtual std::optional<float> luxAt(std::chrono::nanoseconds elapsed) = 0;
};

// The same value on every sample.
class ConstantLuxSource : public LuxSource {
public:
    explicit ConstantLuxSource(float lux) : mLux(lux) {}

    std::optional<float> luxAt(std::chrono::nanoseconds) override { return mLux; }

private:
    const float mLux;
};

}  // namespace sensord
