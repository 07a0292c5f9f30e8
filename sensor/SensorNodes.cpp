#include "SensorNodes.h"

namespace tavixPrism {

const std::vector<BrightnessNodeGroup> kBrightnessNodeGroups = {
        // Backlight class, one node per panel.
        {{"/sys/class/backlight/panel0-backlight/brightness",
          "/sys/class/backlight/panel1-backlight/brightness"},
         {"/sys/class/backlight/panel0-backlight/max_brightness",
          "/sys/class/backlight/panel1-backlight/max_brightness"}},
        // LED class, single panel.
        {{"/sys/class/leds/lcd-backlight/brightness"},
         {"/sys/class/leds/lcd-backlight/max_brightness"}},
};

}  // namespace tavixPrism
