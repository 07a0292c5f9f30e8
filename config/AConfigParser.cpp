#define LOG_TAG "TavixTPSConfigParser"

#include "AConfigParser.h"

#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <memory>
#include <sstream>

#include "ConfigPaths.h"
#include "TpsLog.h"

namespace tps {

namespace {

constexpr char kDisplaySection[] = "[Display]";
constexpr char kAmbientStop[] = "PictureMode";

// Order gives the index into mAmbientParams. "TFrontLux" is a substring of "TFrontLuxScale", so
// a "TFrontLuxScale" line also sets "TFrontLux"; files list the scale first for that reason.
constexpr const char* kAmbientKeys[AConfigParser::kAmbientParamCount] = {
        "Ambient",        "TSurroundReflection", "TScreenReflection", "ALDelayMilliSec",
        "ALResponseFall", "ALResponseRise",      "ALOperationalRate", "TFrontLux",
        "TFrontLuxScale", "TRearLumScale",
};

using UniqueFile = std::unique_ptr<FILE, int (*)(FILE*)>;

bool readWholeFile(const char* path, std::string& out) {
    UniqueFile file(fopen(path, "re"), fclose);
    if (!file) return false;
    // A directory opens too, and seeking to its end reports a hash cookie, not a size.
    struct stat st;
    if (fstat(fileno(file.get()), &st) != 0 || !S_ISREG(st.st_mode) || st.st_size <= 0)
        return false;
    out.resize(static_cast<size_t>(st.st_size));
    out.resize(fread(out.data(), 1, out.size(), file.get()));
    return !out.empty();
}

// Words that are not a base-10 integer (or overflow an int) are refused rather than read as 0.
bool toInt(const std::string& word, int32_t& out) {
    errno = 0;
    char* end = nullptr;
    long value = strtol(word.c_str(), &end, 10);
    if (end == word.c_str() || errno == ERANGE || value < INT32_MIN || value > INT32_MAX) {
        return false;
    }
    out = static_cast<int32_t>(value);
    return true;
}

// For a line "name = value": the first word when it contains `nameFragment`, then the word after
// the next "=" on the same line. Empty when either is missing.
std::string valueAfterName(const std::string& line, const char* nameFragment) {
    std::istringstream in(line);
    std::string word;
    in >> word;
    if (word.find(nameFragment) == std::string::npos) return "";
    in.ignore(static_cast<std::streamsize>(line.size()), '=');
    std::string value;
    in >> value;
    return value;
}

}  // namespace

AConfigParser::AConfigParser() {
    const char* path = nullptr;
    for (size_t i = 0; i < kConfigPathCount; ++i) {
        if (access(kConfigPaths[i], R_OK) == 0) {
            path = kConfigPaths[i];
            break;
        }
    }
    if (path == nullptr) return;
    TPS_LOGI("Found config file at %s", path);

    std::string text;
    if (!readWholeFile(path, text)) return;
    parseCfgBuffer(text);
}

void AConfigParser::parseCfgBuffer(std::string& text) {
    TPS_LOG_DUMP("Cfg file is:\n%s", text.c_str());

    std::string working;
    std::istringstream lines(text);
    std::string line;
    while (std::getline(lines, line)) {
        working.append(line, 0, line.find('#'));
        working += '\n';
    }

    parseAmbientParams(working);
    parseBLUMode(working);

    size_t last = working.rfind(kDisplaySection);
    if (last == std::string::npos) {
        TPS_LOGI("Parsing config file for default display");
        mDisplayIDs.push_back(0);
        return;
    }
    TPS_LOGI("Parsing config file for specific displays");
    TPS_LOGV("Found last occurrence at %zu", last);
    mHasDisplaySections = true;

    size_t start = working.find(kDisplaySection);
    while (start != std::string::npos) {
        size_t next = working.find(kDisplaySection, start + 1);
        std::string section =
                working.substr(start, next == std::string::npos ? next : next - start);
        int id = parseDisplayID(section);
        if (id < 0) {
            TPS_LOGE("Display ID is missing in config file, please provide a valid display ID!");
        } else {
            TPS_LOGI("Found config file %p for display %d",
                     static_cast<const void*>(section.c_str()), id);
            mDisplayIDs.push_back(id);
        }
        start = next;
    }
}

void AConfigParser::parseAmbientParams(std::string& text) {
    mAmbientParams[0] = 0.0f;
    std::istringstream lines(text);
    std::string line;
    while (std::getline(lines, line)) {
        for (size_t i = 0; i < kAmbientParamCount; ++i) {
            if (line.find(kAmbientKeys[i]) == std::string::npos) continue;
            // The scanned name is not compared with the key: the substring test above decides.
            char name[128];
            float value = 0.0f;
            sscanf(line.c_str(), "%127s = %f", name, &value);
            mAmbientParams[i] = value;
        }
        if (line.find(kAmbientStop) != std::string::npos) break;
    }
}

void AConfigParser::parseBLUMode(std::string& text) {
    std::istringstream lines(text);
    std::string line;
    while (std::getline(lines, line)) {
        std::string value = valueAfterName(line, "BLUMode");
        int32_t mode = 0;
        if (!value.empty() && toInt(value, mode)) mBLUMode = mode;
    }
}

int AConfigParser::parseDisplayID(std::string& section) {
    std::istringstream lines(section);
    std::string line;
    while (std::getline(lines, line)) {
        std::string value = valueAfterName(line, "ID");
        int32_t id = 0;
        if (!value.empty() && toInt(value, id)) return id;
    }
    return -1;
}

}  // namespace tps
