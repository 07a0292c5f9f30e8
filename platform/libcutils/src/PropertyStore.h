#pragma once

#include <string>

namespace host_properties {

// Directory holding one file per property: $TPS_PROPERTY_DIR when set, else the build-time
// default. Read on every call so a test can point a process at a fresh store at any moment.
std::string storeDirectory();

}  // namespace host_properties
