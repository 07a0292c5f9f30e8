// Link-time stand-in for the device's configuration file table: one candidate whose path the
// tests choose at run time. By default it names no file, so the host's own /odm and /vendor
// never leak into a test.

#include "FakeConfigPaths.h"

#include <cstring>

#include "ConfigPaths.h"

namespace tps {

namespace {
char gConfigPath[4096] = "/nonexistent/tavix_prism.cfg";
}  // namespace

extern const char* const kConfigPaths[] = {gConfigPath};
extern const size_t kConfigPathCount = 1;

namespace test {

void setConfigPath(const std::string& path) {
    strncpy(gConfigPath, path.c_str(), sizeof(gConfigPath) - 1);
}

}  // namespace test
}  // namespace tps
