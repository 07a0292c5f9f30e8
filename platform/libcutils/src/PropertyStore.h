#pragma once

#include <string>

namespace host_properties {

// Directory holding one file per property: $TPS_PROPERTY_DIR when set, else the build-time
// default. Read on every call so a test can point a process at a fresh store at any moment.
const char* storeDirectoryPath();
std::string storeDirectory();

// The files themselves, without the serial: the length read (0 when absent), and 0 or -1.
int readValueFile(const char* dir, const char* name, char* value);
int writeValueFile(const char* dir, const char* name, const char* value);

}  // namespace host_properties
