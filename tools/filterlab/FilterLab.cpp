#include "FilterLab.h"

#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <optional>
#include <string>

#include "Replay.h"
#include "SvgPlot.h"
#include "Trace.h"

namespace filterlab {

namespace {

constexpr char kUsage[] = R"(Usage: tps_filterlab (--lux FILE | --brightness FILE) [options]

Replays a recorded trace through the TPS smoothing filters on simulated time and writes the
filtered series as CSV and, on request, an SVG plot of input and output.

Traces are CSV lines "milliseconds,value". Blank lines and lines starting with "#" are skipped,
the first line may be a header, and times must not decrease.

  --lux FILE          lux trace through the ambient filter
  --brightness FILE   0..255 brightness trace through the backlight filter
  --rise R            ambient rise speed (default 0.02)
  --fall F            ambient fall speed (default 0.004)
  --min-interval MS   ambient minimum time between updates (default 50)
  --poll MS           filter every MS of simulated time using the latest sample, as a polling
                      client would, instead of once per sample (default: once per sample)
  --csv FILE          write "milliseconds,input,output" to FILE ("-": standard output, the
                      default)
  --svg FILE          write the plot to FILE
  --help              show this text

Exit status: 0 done, 1 bad trace or unwritable output, 2 usage error.
)";

struct Options {
    std::string luxPath;
    std::string brightnessPath;
    AmbientSettings ambient;
    bool ambientTuned = false;
    double pollMs = 0;
    std::string csvPath = "-";
    std::string svgPath;
    bool help = false;
};

// Returns an error message, empty on success.
std::string parseNumber(const std::string& option, const std::string& text, double& out) {
    errno = 0;
    char* end = nullptr;
    out = strtod(text.c_str(), &end);
    if (text.empty() || *end != '\0' || errno != 0 || !std::isfinite(out)) {
        return option + " needs a number, got \"" + text + "\"";
    }
    return "";
}

std::string parseOptions(int argc, const char* const* argv, Options& options) {
    for (int i = 1; i < argc; ++i) {
        std::string arg = argv[i];
        std::string value;
        bool hasValue = false;
        size_t eq = arg.find('=');
        if (arg.rfind("--", 0) == 0 && eq != std::string::npos) {
            value = arg.substr(eq + 1);
            arg = arg.substr(0, eq);
            hasValue = true;
        }
        if (arg == "--help" || arg == "-h") {
            options.help = true;
            continue;
        }
        static const char* const kWithValue[] = {"--lux",  "--brightness",   "--rise",
                                                 "--fall", "--min-interval", "--poll",
                                                 "--csv",  "--svg"};
        bool known = false;
        for (const char* name : kWithValue) known = known || arg == name;
        if (!known) return "unknown option \"" + std::string(argv[i]) + "\"";
        if (!hasValue) {
            if (i + 1 >= argc) return arg + " needs a value";
            value = argv[++i];
        }

        double number = 0;
        std::string error;
        if (arg == "--lux") {
            options.luxPath = value;
        } else if (arg == "--brightness") {
            options.brightnessPath = value;
        } else if (arg == "--csv") {
            options.csvPath = value;
        } else if (arg == "--svg") {
            options.svgPath = value;
        } else if (!(error = parseNumber(arg, value, number)).empty()) {
            return error;
        } else if (arg == "--poll") {
            if (number < 0) return "--poll must not be negative";
            options.pollMs = number;
        } else {
            options.ambientTuned = true;
            float f = static_cast<float>(number);
            if (arg == "--rise") options.ambient.rise = f;
            if (arg == "--fall") options.ambient.fall = f;
            if (arg == "--min-interval") options.ambient.minIntervalMs = f;
        }
    }
    if (options.help) return "";
    if (options.luxPath.empty() == options.brightnessPath.empty()) {
        return "give exactly one of --lux and --brightness";
    }
    if (options.ambientTuned && options.luxPath.empty()) {
        return "--rise, --fall and --min-interval apply to --lux only";
    }
    if (options.csvPath.empty()) return "--csv needs a file name";
    return "";
}

std::string shortest(double v) {
    char buf[64];
    auto result = std::to_chars(buf, buf + sizeof(buf), v);
    return std::string(buf, result.ptr);
}

std::string shortest(float v) {
    char buf[64];
    auto result = std::to_chars(buf, buf + sizeof(buf), v);
    return std::string(buf, result.ptr);
}

void writeCsv(std::ostream& out, const std::vector<Point>& points) {
    out << "milliseconds,input,output\n";
    for (const Point& p : points) {
        out << shortest(p.ms) << "," << shortest(p.input) << ","
            << shortest(static_cast<float>(p.output)) << "\n";
    }
}

bool writeFile(const std::string& path, std::ostream& err, const auto& writer) {
    std::ofstream file(path);
    if (file) writer(file);
    if (file) file.close();
    if (!file) {
        err << "tps_filterlab: " << path << ": cannot write: " << strerror(errno) << "\n";
        return false;
    }
    return true;
}

}  // namespace

int runFilterLab(int argc, const char* const* argv, std::ostream& out, std::ostream& err) {
    Options options;
    std::string usageError = parseOptions(argc, argv, options);
    if (!usageError.empty()) {
        err << "tps_filterlab: " << usageError << "\nTry 'tps_filterlab --help'.\n";
        return 2;
    }
    if (options.help) {
        out << kUsage;
        return 0;
    }

    bool lux = !options.luxPath.empty();
    const std::string& path = lux ? options.luxPath : options.brightnessPath;
    Trace trace;
    std::string error;
    if (!Trace::load(path, trace, error)) {
        err << "tps_filterlab: " << error << "\n";
        return 1;
    }

    std::vector<Point> points;
    std::string outputLabel;
    if (lux) {
        options.ambient.pollMs = options.pollMs;
        points = replayAmbient(trace, options.ambient);
        outputLabel = "filtered (rise " + shortest(options.ambient.rise) + ", fall " +
                      shortest(options.ambient.fall) + ", min interval " +
                      shortest(options.ambient.minIntervalMs) + " ms)";
    } else {
        points = replayBacklight(trace, options.pollMs);
        outputLabel = "filtered (backlight low-pass)";
    }

    if (options.csvPath == "-") {
        writeCsv(out, points);
    } else if (!writeFile(options.csvPath, err,
                          [&](std::ostream& file) { writeCsv(file, points); })) {
        return 1;
    }
    if (!options.svgPath.empty()) {
        std::string valueLabel = lux ? "lux" : "brightness (0-255)";
        SvgPlot plot(path, valueLabel, outputLabel,
                     lux ? SvgPlot::Scale::kLog : SvgPlot::Scale::kLinear);
        if (!writeFile(options.svgPath, err,
                       [&](std::ostream& file) { plot.write(file, points); })) {
            return 1;
        }
    }
    return 0;
}

}  // namespace filterlab
