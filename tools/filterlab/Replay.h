#pragma once

#include <vector>

#include "Trace.h"

namespace filterlab {

struct AmbientSettings {
    float rise = 0.02f;
    float fall = 0.004f;
    float minIntervalMs = 50.0f;
    // 0: filter at every sample. Otherwise filter every `pollMs` from the first sample on, with
    // the latest sample as input, the way the service polls when clients ask for the status.
    double pollMs = 0;
};

struct Point {
    double ms;
    double input;
    double output;
};

// Both run on simulated time; the filter is built at the first sample's time.
std::vector<Point> replayAmbient(const Trace& trace, const AmbientSettings& settings);
std::vector<Point> replayBacklight(const Trace& trace, double pollMs);

}  // namespace filterlab
