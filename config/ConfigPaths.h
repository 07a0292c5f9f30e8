#pragma once

#include <cstddef>

namespace tps {

// Candidate configuration files, most specific first; the first readable one is used. Defined in
// ConfigPaths.cpp (target tps_config_paths) so host tests can link a table of their own.
extern const char* const kConfigPaths[];
extern const size_t kConfigPathCount;

}  // namespace tps
