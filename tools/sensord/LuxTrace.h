#pragma once

#include <chrono>
#include <istream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "LuxSource.h"

namespace sensord {

// A recorded lux curve: lines "milliseconds,lux", times counted from the moment the sensor is
// enabled. Blank lines and lines starting with '#' are skipped, and the first remaining line may
// be a header. Each sample holds until the next one; after the last sample the last value stays,
// or with looping the curve starts again, the last sample's time being the length of one lap.
class LuxTrace : public LuxSource {
public:
    struct Sample {
        int64_t ms;
        float lux;
    };

    // On failure returns null and sets *error to "<name>:<line>: <problem>".
    static std::unique_ptr<LuxTrace> parse(std::istream& in, const std::string& name, bool loop,
                                           std::string* error);
    static std::unique_ptr<LuxTrace> load(const std::string& path, bool loop, std::string* error);

    std::optional<float> luxAt(std::chrono::nanoseconds elapsed) override;

    const std::vector<Sample>& samples() const { return mSamples; }

private:
    LuxTrace(std::vector<Sample> samples, bool loop) : mSamples(std::move(samples)), mLoop(loop) {}

    const std::vector<Sample> mSamples;  // at least one, times never decreasing
    const bool mLoop;
};

}  // namespace sensord
