#pragma once

#include <string>

namespace tps::test {

// The one configuration file the service under test looks for. Not thread-safe: set it before a
// service is made.
void setConfigPath(const std::string& path);

}  // namespace tps::test
