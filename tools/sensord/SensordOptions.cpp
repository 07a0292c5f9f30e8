#include "SensordOptions.h"

#include <optional>

#include "TextParsing.h"

namespace sensord {

namespace {

// Splits "--name=value" so that both "--name value" and "--name=value" work.
struct Argument {
    std::string name;
    std::optional<std::string> inlineValue;
};

Argument splitArgument(const std::string& arg) {
    const size_t equals = arg.find('=');
    if (arg.rfind("--", 0) != 0 || equals == std::string::npos) return {arg, std::nullopt};
    return {arg.substr(0, equals), arg.substr(equals + 1)};
}

}  // namespace

ParsedOptions parseSensordOptions(const std::vector<std::string>& args) {
    ParsedOptions result;
    SensordOptions& options = result.options;
    int sourcesChosen = 0;

    for (size_t i = 0; i < args.size(); ++i) {
        const Argument arg = splitArgument(args[i]);
        const auto fail = [&](const std::string& error) {
            result.error = error;
            return result;
        };
        // The option's value: inline after '=' or the next argument.
        std::string value;
        const auto takeValue = [&]() {
            if (arg.inlineValue) {
                value = *arg.inlineValue;
                return true;
            }
            if (i + 1 >= args.size()) return false;
            value = args[++i];
            return true;
        };
        const bool takesValue = arg.name == "--constant" || arg.name == "--trace" ||
                                arg.name == "--sensor" || arg.name == "--sensor-list";
        if (takesValue) {
            if (!takeValue()) return fail("option " + arg.name + " needs a value");
        } else if (arg.inlineValue) {
            return fail("option " + arg.name + " takes no value");
        }

        if (arg.name == "--help" || arg.name == "-h") {
            options.help = true;
        } else if (arg.name == "--constant") {
            if (!parseFloat(value, &options.constantLux)) {
                return fail("--constant: not a number: '" + value + "'");
            }
            options.source = SensordOptions::Source::kConstant;
            ++sourcesChosen;
        } else if (arg.name == "--trace") {
            if (value.empty()) return fail("--trace: empty file name");
            options.traceFile = value;
            options.source = SensordOptions::Source::kTrace;
            ++sourcesChosen;
        } else if (arg.name == "--stdin") {
            options.source = SensordOptions::Source::kStdin;
            ++sourcesChosen;
        } else if (arg.name == "--loop") {
            options.loop = true;
        } else if (arg.name == "--additional-info") {
            options.additionalInfo = true;
        } else if (arg.name == "--no-light-sensor") {
            options.lightSensor = false;
        } else if (arg.name == "--sensor") {
            options.sensorSpecs.push_back(value);
        } else if (arg.name == "--sensor-list") {
            if (!options.sensorListFile.empty()) return fail("--sensor-list given twice");
            if (value.empty()) return fail("--sensor-list: empty file name");
            options.sensorListFile = value;
        } else if (arg.name == "--empty-list") {
            options.emptyList = true;
        } else if (arg.name == "--fail-list") {
            options.failList = true;
        } else {
            return fail("unknown argument '" + args[i] + "'");
        }
    }

    if (sourcesChosen > 1) {
        result.error = "choose one of --constant, --trace and --stdin";
        return result;
    }
    if (options.loop && options.source != SensordOptions::Source::kTrace) {
        result.error = "--loop needs --trace";
        return result;
    }
    if (options.emptyList && options.failList) {
        result.error = "--empty-list and --fail-list exclude each other";
        return result;
    }
    result.ok = true;
    return result;
}

std::string sensordUsage() {
    return R"(usage: sensord [options]

Simulated platform sensor service: registers
android.frameworks.sensorservice.ISensorManager/default and, while a client has a light sensor
enabled, sends it light events at the sampling period it asked for.

Event source (one of; default --constant 100):
  --constant LUX       the same lux on every event
  --trace FILE         play FILE back from the moment the sensor is enabled; lines
                       "milliseconds,lux", '#' comments and one header line allowed; after the
                       last line its value stays
  --loop               with --trace: start again after the last line, whose time is the length
                       of one lap
  --stdin              the latest lux read from standard input, one value per line; nothing is
                       sent before the first value
  --additional-info    send an ADDITIONAL_INFO frame (begin, temperature, end) before the first
                       light event after each enable

Sensor list (the default is one light sensor, handle 1):
  --no-light-sensor    leave the default light sensor out
  --sensor SPEC        add a sensor: TYPE,NAME[,VENDOR[,MAX_RANGE[,RESOLUTION[,POWER
                       [,MIN_DELAY_US[,MAX_DELAY_US[,FLAGS]]]]]]]; TYPE is a number or a name
                       such as light, proximity, accelerometer
  --sensor-list FILE   add the sensors of FILE, one SPEC per line ('#' comments allowed)
  --empty-list         getSensorList answers an empty list (getDefaultSensor still answers)
  --fail-list          getSensorList fails with RESULT_UNKNOWN_ERROR

  --help               this text

Exit status: 2 for bad arguments or input files, 1 if the service cannot be registered.
)";
}

}  // namespace sensord
