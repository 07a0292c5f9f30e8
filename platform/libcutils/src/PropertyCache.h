#pragma once

#include <sys/system_properties.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "PropertyArea.h"

namespace host_properties {

// This process's copies of the values it read, valid while the store's serial is unchanged; the
// host's counterpart of reading a property from shared memory without a system call. Only values
// set through the API move the serial: a property file edited by hand is seen once the next set
// anywhere in the store, or a switch to another store, drops the copies.
class PropertyCache {
public:
    // Process-wide and never destroyed, so that reads from exit-time destructors still work.
    static PropertyCache& instance();

    // As __system_property_get, from store `dir`.
    int get(const char* dir, const char* name, char* value);
    // As __system_property_set, into the existing store `dir`.
    int set(const char* dir, const char* name, const char* value);

private:
    struct Entry {
        uint64_t serial = 0;
        int length = 0;
        char value[PROP_VALUE_MAX] = {};
    };

    PropertyCache() = default;
    // Requires mLock. Drops everything kept for another store and maps the area of `dir` if it
    // is not mapped yet; false when the store has no area.
    bool selectStoreLocked(const char* dir);

    // Unbounded names would come from property listings and fuzzers; past this, reads go to the
    // files.
    static constexpr size_t kMaxEntries = 256;

    // Held across file reads and writes too: simple, and only a miss or a set waits.
    std::mutex mLock;
    std::string mDir;                                    // guarded by mLock
    std::unique_ptr<PropertyArea> mArea;                 // guarded by mLock; null while none exists
    std::map<std::string, Entry, std::less<>> mEntries;  // guarded by mLock
};

}  // namespace host_properties
