#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tps {

// The device's tuning file, found and parsed once at construction and immutable afterwards.
// A missing or unreadable file leaves the defaults (no display ids, BLU mode 0).
class AConfigParser {
public:
    static constexpr size_t kAmbientParamCount = 10;

    AConfigParser();

    void parseCfgBuffer(std::string& text);
    void parseAmbientParams(std::string& text);
    void parseBLUMode(std::string& text);
    // The identifier of one "[Display]" section, or -1 when it names none.
    int parseDisplayID(std::string& section);

    std::vector<int> getDisplayIDs() const { return mDisplayIDs; }
    int getBLUMode() const { return mBLUMode; }

private:
    friend class AConfigParserPeer;  // host tests inspect the values that have no accessor

    std::vector<int32_t> mDisplayIDs;
    bool mHasDisplaySections = false;
    int32_t mBLUMode = 0;
    // Indexed as kAmbientKeys in AConfigParser.cpp; parsed and kept, not used yet.
    float mAmbientParams[kAmbientParamCount] = {};
};

}  // namespace tps
