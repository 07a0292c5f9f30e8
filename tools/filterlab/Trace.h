#pragma once

#include <istream>
#include <string>
#include <vector>

namespace filterlab {

struct Sample {
    double ms;
    double value;
};

// A two-column CSV trace: "milliseconds,value" per line. Blank lines and lines starting with "#"
// are skipped; the first other line may be a header. Times must not decrease.
class Trace {
public:
    // On failure returns false and sets `error` to "<name>:<line>: <what>" (or "<name>: <what>").
    static bool parse(std::istream& in, const std::string& name, Trace& out, std::string& error);
    static bool load(const std::string& path, Trace& out, std::string& error);

    const std::vector<Sample>& samples() const { return mSamples; }
    const std::string& valueName() const { return mValueName; }

private:
    std::vector<Sample> mSamples;
    std::string mValueName;  // from the header, empty without one
};

}  // namespace filterlab
