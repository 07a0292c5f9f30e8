#pragma once

#include <string>
#include <vector>

namespace tavixPrism {

// Backlight sysfs nodes in groups, one path per display. A group is usable when its display-0
// brightness node opens; groups are tried in order. Defined in SensorNodes.cpp (the device's
// layouts); host tests link a table of their own.
struct BrightnessNodeGroup {
    std::vector<std::string> brightness;
    std::vector<std::string> maxBrightness;
};

extern const std::vector<BrightnessNodeGroup> kBrightnessNodeGroups;

}  // namespace tavixPrism
