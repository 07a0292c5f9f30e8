#include "LuxTrace.h"

#include <algorithm>
#include <fstream>

#include "TextParsing.h"

namespace sensord {

std::unique_ptr<LuxTrace> LuxTrace::parse(std::istream& in, const std::string& name, bool loop,
                                          std::string* error) {
    std::vector<Sample> samples;
    bool headerAllowed = true;
    std::string line;
    for (int lineNumber = 1; std::getline(in, line); ++lineNumber) {
        const std::string_view text = trim(line);
        if (text.empty() || text.front() == '#') continue;

        const auto fail = [&](const std::string& problem) {
            *error = name + ":" + std::to_string(lineNumber) + ": " + problem;
            return nullptr;
        };
        const size_t comma = text.find(',');
        if (comma == std::string_view::npos) {
            return fail("expected \"milliseconds,lux\", got '" + std::string(text) + "'");
        }
        const std::string_view msText = trim(text.substr(0, comma));
        const std::string_view luxText = trim(text.substr(comma + 1));

        Sample sample{};
        double ms = 0;
        const bool msOk = parseDouble(msText, &ms);
        const bool luxOk = parseFloat(luxText, &sample.lux);
        if (headerAllowed && !msOk && !luxOk) {
            headerAllowed = false;
            continue;
        }
        headerAllowed = false;
        if (!msOk) return fail("time is not a number: '" + std::string(msText) + "'");
        if (ms < 0) return fail("time is negative: " + std::string(msText));
        if (!luxOk) return fail("lux is not a number: '" + std::string(luxText) + "'");
        sample.ms = static_cast<int64_t>(ms);
        if (!samples.empty() && sample.ms < samples.back().ms) {
            return fail("time goes backwards: " + std::to_string(sample.ms) + " ms after " +
                        std::to_string(samples.back().ms) + " ms");
        }
        samples.push_back(sample);
    }
    if (in.bad()) {
        *error = name + ": read error";
        return nullptr;
    }
    if (samples.empty()) {
        *error = name + ": no samples";
        return nullptr;
    }
    return std::unique_ptr<LuxTrace>(new LuxTrace(std::move(samples), loop));
}

std::unique_ptr<LuxTrace> LuxTrace::load(const std::string& path, bool loop, std::string* error) {
    std::ifstream in(path);
    if (!in) {
        *error = path + ": cannot open";
        return nullptr;
    }
    return parse(in, path, loop, error);
}

std::optional<float> LuxTrace::luxAt(std::chrono::nanoseconds elapsed) {
    int64_t ms = std::chrono::duration_cast<std::chrono::milliseconds>(elapsed).count();
    const int64_t lap = mSamples.back().ms;
    if (mLoop && lap > 0) ms %= lap;

    // The last sample at or before ms; before the first sample, the first one.
    auto after = std::upper_bound(mSamples.begin(), mSamples.end(), ms,
                                  [](int64_t t, const Sample& s) { return t < s.ms; });
    if (after == mSamples.begin()) return mSamples.front().lux;
    return std::prev(after)->lux;
}

}  // namespace sensord
