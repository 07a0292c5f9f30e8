#include "Trace.h"

#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>

namespace filterlab {

namespace {

std::string trim(const std::string& s) {
    size_t begin = s.find_first_not_of(" \t\r");
    if (begin == std::string::npos) return "";
    size_t end = s.find_last_not_of(" \t\r");
    return s.substr(begin, end - begin + 1);
}

bool toNumber(const std::string& text, double& out) {
    if (text.empty()) return false;
    errno = 0;
    char* end = nullptr;
    out = strtod(text.c_str(), &end);
    return *end == '\0' && errno == 0 && std::isfinite(out);
}

std::string shortest(double v) {
    std::ostringstream s;
    s << v;
    return s.str();
}

}  // namespace

bool Trace::parse(std::istream& in, const std::string& name, Trace& out, std::string& error) {
    out = Trace();
    std::string line;
    int lineNumber = 0;
    bool seenData = false;
    auto fail = [&](const std::string& what) {
        error = name + ":" + std::to_string(lineNumber) + ": " + what;
        return false;
    };
    while (std::getline(in, line)) {
        ++lineNumber;
        std::string text = trim(line);
        if (text.empty() || text[0] == '#') continue;

        size_t comma = text.find(',');
        if (comma == std::string::npos || text.find(',', comma + 1) != std::string::npos) {
            return fail("expected two comma-separated fields, got \"" + text + "\"");
        }
        std::string timeField = trim(text.substr(0, comma));
        std::string valueField = trim(text.substr(comma + 1));
        double ms = 0;
        double value = 0;
        bool timeOk = toNumber(timeField, ms);
        bool looksLikeHeader =
                !timeField.empty() && isalpha(static_cast<unsigned char>(timeField[0]));
        if (!seenData && out.mValueName.empty() && !timeOk && looksLikeHeader) {
            // A header names the columns; only the first line of data may be one.
            out.mValueName = valueField;
            if (out.mValueName.empty()) return fail("header names no value column");
            continue;
        }
        if (!timeOk) return fail("time \"" + timeField + "\" is not a number");
        if (!toNumber(valueField, value)) {
            return fail("value \"" + valueField + "\" is not a number");
        }
        if (seenData && ms < out.mSamples.back().ms) {
            return fail("time goes backwards (" + shortest(ms) + " ms after " +
                        shortest(out.mSamples.back().ms) + " ms)");
        }
        out.mSamples.push_back({ms, value});
        seenData = true;
    }
    if (in.bad()) {
        error = name + ": read error";
        return false;
    }
    if (out.mSamples.empty()) {
        error = name + ": no samples";
        return false;
    }
    return true;
}

bool Trace::load(const std::string& path, Trace& out, std::string& error) {
    std::ifstream in(path);
    if (!in) {
        error = path + ": cannot open: " + strerror(errno);
        return false;
    }
    return parse(in, path, out, error);
}

}  // namespace filterlab
