#include "Replay.h"

#include <cmath>
#include <cstdint>
#include <memory>

#include "ProxyUtilsAmbient.h"
#include "ProxyUtilsBacklight.h"
#include "SimulatedClock.h"

namespace filterlab {

namespace {

int64_t toNs(double ms) {
    return std::llround(ms * 1e6);
}

std::vector<Point> replay(const Trace& trace, double pollMs, tapr::ProxyUtils& filter) {
    const std::vector<Sample>& samples = trace.samples();
    std::vector<Point> out;
    auto step = [&](double ms, double input) {
        setSimulatedTimeNs(toNs(ms));
        float output = filter.Filter(static_cast<float>(input));
        out.push_back({ms, input, output});
    };
    if (pollMs <= 0) {
        for (const Sample& s : samples) step(s.ms, s.value);
        return out;
    }
    size_t next = 0;
    double input = samples.front().value;
    double start = samples.front().ms;
    double end = samples.back().ms;
    for (uint64_t i = 0;; ++i) {
        double t = start + static_cast<double>(i) * pollMs;
        if (t > end) break;
        while (next < samples.size() && samples[next].ms <= t) input = samples[next++].value;
        step(t, input);
    }
    return out;
}

}  // namespace

std::vector<Point> replayAmbient(const Trace& trace, const AmbientSettings& settings) {
    setSimulatedTimeNs(toNs(trace.samples().front().ms));
    tapr::ProxyUtilsAmbient filter;
    filter.setAmbientFilterRise(settings.rise);
    filter.setAmbientFilterFall(settings.fall);
    filter.setMinIntervalMs(settings.minIntervalMs);
    return replay(trace, settings.pollMs, filter);
}

std::vector<Point> replayBacklight(const Trace& trace, double pollMs) {
    setSimulatedTimeNs(toNs(trace.samples().front().ms));
    tapr::ProxyUtilsBacklight filter;
    return replay(trace, pollMs, filter);
}

}  // namespace filterlab
