#pragma once

#include <string>

namespace tps::test {

// The node table linked into reader tests points below this folder (created on first use,
// removed at exit):
//   group 0: <root>/backlight/panel{0,1}/{brightness,max_brightness}
//   group 1: <root>/leds/lcd/{brightness,max_brightness}
const std::string& testNodeRoot();

// Empties the root, then writes or removes single nodes, e.g. writeNode("leds/lcd/brightness",
// "12").
void clearTestNodes();
void writeNode(const std::string& relativePath, const std::string& text);
std::string nodePath(const std::string& relativePath);

}  // namespace tps::test
