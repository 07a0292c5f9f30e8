#include "TpsctlArgs.h"

#include <cerrno>
#include <cstdlib>
#include <limits>

namespace tpsctl {

namespace {

ParseResult failure(std::string error) {
    ParseResult result;
    result.error = std::move(error);
    return result;
}

std::string joinWith(const std::vector<std::string>& items, size_t first, char separator) {
    std::string joined;
    for (size_t i = first; i < items.size(); ++i) {
        if (i > first) joined += separator;
        joined += items[i];
    }
    return joined;
}

bool parseSeconds(const std::string& text, double* seconds) {
    if (text.empty() || text.front() == '-' || text.front() == '+') return false;
    for (char c : text) {
        if ((c < '0' || c > '9') && c != '.') return false;
    }
    errno = 0;
    char* end = nullptr;
    double value = strtod(text.c_str(), &end);
    if (end != text.c_str() + text.size() || errno == ERANGE) return false;
    *seconds = value;
    return true;
}

ParseResult parseCommand(const std::vector<std::string>& args, size_t index, Options options) {
    const std::string& name = args[index];
    const size_t operands = args.size() - index - 1;
    auto operand = [&](size_t n) -> const std::string& { return args[index + 1 + n]; };

    if (name == "status" || name == "unregister" || name == "version") {
        if (operands != 0) return failure(name + " takes no arguments");
        options.command = name == "status"       ? Command::kStatus
                          : name == "unregister" ? Command::kUnregister
                                                 : Command::kVersion;
    } else if (name == "set") {
        if (operands == 0) return failure("set needs KEY=VALUE pairs, e.g. set 'pqMode=1'");
        options.command = Command::kSet;
        options.text = joinWith(args, index + 1, ';');
        if (options.text.find_first_not_of(';') == std::string::npos) {
            return failure("set needs at least one KEY=VALUE pair");
        }
    } else if (name == "get") {
        if (operands == 0) return failure("get needs 'all' or the keys to read");
        options.command = Command::kGet;
        options.text = joinWith(args, index + 1, ';');
    } else if (name == "update") {
        if (operands != 2) return failure("update needs ID and VALUE, e.g. update 0 128");
        options.command = Command::kUpdate;
        if (!parseInt64(operand(0), &options.paramId)) {
            return failure("update: ID '" + operand(0) + "' is not an integer");
        }
        if (!parseInt64(operand(1), &options.paramValue)) {
            return failure("update: VALUE '" + operand(1) + "' is not an integer");
        }
    } else if (name == "display-ids") {
        if (operands == 0 || (operands == 1 && operand(0) == "get")) {
            options.command = Command::kDisplayIdsGet;
        } else if (operand(0) == "set") {
            if (operands != 2) return failure("display-ids set needs one list, e.g. 0,1");
            options.command = Command::kDisplayIdsSet;
            if (!parseIdList(operand(1), &options.displayIds)) {
                return failure("display-ids set: '" + operand(1) +
                               "' is not a comma-separated list of integers");
            }
        } else {
            return failure("display-ids takes 'get' or 'set LIST'");
        }
    } else if (name == "register") {
        options.command = Command::kRegister;
        for (size_t n = 0; n < operands; ++n) {
            if (operand(n) == "--filter") {
                options.filter = true;
            } else if (operand(n) == "--no-filter") {
                options.filter = false;
            } else {
                return failure("register: unknown option '" + operand(n) + "'");
            }
        }
    } else if (name == "watch") {
        options.command = Command::kWatch;
        for (size_t n = 0; n < operands; ++n) {
            if (operand(n) != "--status-interval") {
                return failure("watch: unknown option '" + operand(n) + "'");
            }
            if (n + 1 >= operands) return failure("watch: --status-interval needs MS");
            ++n;
            if (!parseInt64(operand(n), &options.statusIntervalMs) ||
                options.statusIntervalMs <= 0) {
                return failure("watch: --status-interval needs a positive number of ms, not '" +
                               operand(n) + "'");
            }
        }
    } else {
        return failure("unknown command '" + name + "'");
    }

    ParseResult result;
    result.ok = true;
    result.options = std::move(options);
    return result;
}

}  // namespace

bool parseInt64(const std::string& text, int64_t* value) {
    size_t digits = (!text.empty() && (text[0] == '-' || text[0] == '+')) ? 1 : 0;
    if (digits >= text.size()) return false;
    for (size_t i = digits; i < text.size(); ++i) {
        if (text[i] < '0' || text[i] > '9') return false;
    }
    errno = 0;
    long long parsed = strtoll(text.c_str(), nullptr, 10);
    if (errno == ERANGE) return false;
    *value = parsed;
    return true;
}

bool parseInt32(const std::string& text, int32_t* value) {
    int64_t wide = 0;
    if (!parseInt64(text, &wide) || wide < std::numeric_limits<int32_t>::min() ||
        wide > std::numeric_limits<int32_t>::max()) {
        return false;
    }
    *value = static_cast<int32_t>(wide);
    return true;
}

bool parseIdList(const std::string& text, std::vector<int32_t>* ids) {
    std::vector<int32_t> parsed;
    size_t start = 0;
    while (!text.empty()) {
        size_t comma = text.find(',', start);
        std::string item = text.substr(start, comma == std::string::npos ? comma : comma - start);
        int32_t id = 0;
        if (!parseInt32(item, &id)) return false;
        parsed.push_back(id);
        if (comma == std::string::npos) break;
        start = comma + 1;
    }
    *ids = std::move(parsed);
    return true;
}

ParseResult parseArguments(const std::vector<std::string>& args) {
    for (const std::string& arg : args) {
        if (arg == "-h" || arg == "--help") {
            ParseResult result;
            result.ok = true;
            result.options.command = Command::kHelp;
            return result;
        }
    }

    Options options;
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string& arg = args[i];
        if (arg == "--timeout") {
            if (i + 1 >= args.size()) return failure("--timeout needs a number of seconds");
            if (!parseSeconds(args[i + 1], &options.timeoutSeconds)) {
                return failure("--timeout: '" + args[i + 1] + "' is not a number of seconds");
            }
            ++i;
            continue;
        }
        if (arg.size() > 1 && arg[0] == '-') return failure("unknown option '" + arg + "'");
        return parseCommand(args, i, options);
    }
    return failure("no command given");
}

std::string usageText() {
    return R"(Usage: tpsctl [--timeout S] COMMAND [ARGS]

Talks to the picture-quality service vendor.tavix.tps.ITps/default.

Commands:
  status                      the status vector, one labelled value per line
  set KEY=VALUE[;KEY=VALUE]   send parameters, e.g. set 'brightness=128;pqMode=1'
                              (several arguments are joined with ';')
  get all|KEY[;KEY]           read parameters, e.g. get all, get pqModes displayIDs
  update ID VALUE             set one value by id (0 brightness, 2 mode, 3 display,
                              5 width, 6 height)
  display-ids [get]           the display identifiers
  display-ids set LIST        replace them, e.g. display-ids set 0,1 ('' empties)
  register [--filter|--no-filter]
                              open a render, logo and sensor session (filtered by default)
  unregister                  close one of each
  version                     the service's interface version and hash
  watch [--status-interval MS]
                              print every notification with its time until Ctrl-C;
                              with MS, also poll lux and brightness every MS milliseconds

Options:
  --timeout S   wait up to S seconds for the service to appear (default 5, 0 = do not wait)
  -h, --help    this text

Exit status: 0 success, 1 a call failed or the service was not found, 2 usage error.
)";
}

}  // namespace tpsctl
