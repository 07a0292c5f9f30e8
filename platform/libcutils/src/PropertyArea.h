#pragma once

#include <cstdint>
#include <memory>

namespace host_properties {

// The store's change serial, shared by every process using the store: a small file ".serial" in
// the store directory, mapped into each process. Every successful set bumps it after the new value
// is in place, so a process may keep what it read for as long as the serial stays the same.
class PropertyArea {
public:
    // Maps the area of the store `dir`, creating it when the directory exists without one. Null
    // when there is none and none can be made (no directory, a read-only one, a damaged file).
    static std::unique_ptr<PropertyArea> map(const char* dir);

    ~PropertyArea();
    PropertyArea(const PropertyArea&) = delete;
    PropertyArea& operator=(const PropertyArea&) = delete;

    uint64_t serial() const;
    bool writable() const { return mWritable; }
    // Requires writable().
    void bump();

private:
    PropertyArea(uint64_t* serial, bool writable) : mSerial(serial), mWritable(writable) {}

    uint64_t* const mSerial;  // inside a MAP_SHARED mapping owned by this object
    const bool mWritable;
};

}  // namespace host_properties
