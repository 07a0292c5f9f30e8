#pragma once

#include <cstdlib>

namespace tps::fuzz {

// Once per process: a private property store (removed at exit) with the most verbose service log
// level, so every log format is exercised, and a logger that drops the formatted lines.
void setUpEnvironment();

// Fuzz targets check their own invariants with this; a plain abort gives libFuzzer a stack.
inline void check(bool condition) {
    if (!condition) abort();
}

}  // namespace tps::fuzz
