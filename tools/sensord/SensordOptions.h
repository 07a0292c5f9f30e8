#pragma once

#include <string>
#include <vector>

namespace sensord {

// What the command line asks for. Parsing checks the syntax and the numbers; files are read
// later, when the service is assembled.
struct SensordOptions {
    enum class Source { kConstant, kTrace, kStdin };

    Source source = Source::kConstant;
    float constantLux = 100.0f;
    std::string traceFile;
    bool loop = false;
    bool additionalInfo = false;

    bool lightSensor = true;               // the default light sensor heads the list
    std::vector<std::string> sensorSpecs;  // --sensor, in order
    std::string sensorListFile;            // --sensor-list
    bool emptyList = false;
    bool failList = false;

    bool help = false;
};

// Exit status for every input error: command line, trace or sensor list.
inline constexpr int kUsageExitStatus = 2;

struct ParsedOptions {
    bool ok = false;
    SensordOptions options;
    std::string error;  // when !ok: one line, without the program name
};

ParsedOptions parseSensordOptions(const std::vector<std::string>& args);

std::string sensordUsage();

}  // namespace sensord
