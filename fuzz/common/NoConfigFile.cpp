// Link-time stand-in for the configuration file table: no candidates, so the parser never reads
// the host's own /odm or /vendor and starts from its defaults.

#include "ConfigPaths.h"

namespace tps {

extern const char* const kConfigPaths[] = {nullptr};
extern const size_t kConfigPathCount = 0;

}  // namespace tps
