#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tpsctl {

inline constexpr char kDefaultInstance[] = "vendor.tavix.tps.ITps/default";

enum class Command {
    kHelp,
    kStatus,
    kSet,
    kGet,
    kUpdate,
    kDisplayIdsGet,
    kDisplayIdsSet,
    kRegister,
    kUnregister,
    kVersion,
    kWatch,
};

// Everything one invocation asks for, already validated: nothing here is sent to the service
// unless it parsed cleanly.
struct Options {
    Command command = Command::kHelp;
    double timeoutSeconds = 5.0;      // how long to wait for the service to appear
    std::string text;                 // set: key=value pairs; get: "all" or keys
    int64_t paramId = 0;              // update
    int64_t paramValue = 0;           // update
    std::vector<int32_t> displayIds;  // display-ids set
    bool filter = true;               // register
    int64_t statusIntervalMs = 0;     // watch: 0 polls nothing
};

struct ParseResult {
    bool ok = false;
    Options options;
    std::string error;  // set when !ok; one line, without the program name
};

// Parses the arguments after the program name.
ParseResult parseArguments(const std::vector<std::string>& args);

std::string usageText();

// Strict decimal parsers: optional sign, digits only, in range.
bool parseInt64(const std::string& text, int64_t* value);
bool parseInt32(const std::string& text, int32_t* value);
// "0,1,2" into ids; the empty text is the empty list. No empty items, no blanks.
bool parseIdList(const std::string& text, std::vector<int32_t>* ids);

}  // namespace tpsctl
