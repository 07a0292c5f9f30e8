#include <string>
#include <vector>

#include "AConfigParser.h"
#include "FuzzEnvironment.h"

using tps::AConfigParser;
using tps::fuzz::check;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    tps::fuzz::setUpEnvironment();
    const std::string text(reinterpret_cast<const char*>(data), size);

    // No file is found, so the parser starts from its defaults.
    AConfigParser parser;
    check(parser.getDisplayIDs().empty() && parser.getBLUMode() == 0);

    std::string buffer = text;
    parser.parseCfgBuffer(buffer);
    const std::vector<int> ids = parser.getDisplayIDs();
    const int bluMode = parser.getBLUMode();

    // Parsing depends on the text alone.
    AConfigParser again;
    std::string copy = text;
    again.parseCfgBuffer(copy);
    check(again.getDisplayIDs() == ids && again.getBLUMode() == bluMode);

    // The section and line parsers on their own, on text that is not a whole file.
    AConfigParser pieces;
    std::string section = text;
    (void)pieces.parseDisplayID(section);
    std::string ambient = text;
    pieces.parseAmbientParams(ambient);
    std::string blu = text;
    pieces.parseBLUMode(blu);
    return 0;
}
