#pragma once

#include <limits.h>

#include <cstddef>

namespace tps::test {

// Backing store of the candidate-path table linked into config_tests instead of the device one.
constexpr size_t kTestConfigPathCount = 5;
extern char gTestConfigPaths[kTestConfigPathCount][PATH_MAX];

}  // namespace tps::test
