#pragma once

#include <linux/android/binder.h>
#include <stddef.h>
#include <stdint.h>

#include <memory>
#include <string>

#include "UniqueFd.h"

namespace abinder::driver {

// An open binder device and its receive mapping: the kernel places every transaction and reply
// addressed to this process in that mapping. Closing the device releases all the nodes,
// references and buffers the process holds in the driver.
class BinderDevice {
public:
    // The kernel asks for no more looper threads than this unless told otherwise.
    static constexpr uint32_t kDefaultMaxThreads = 15;

    // Null with *error set when the device cannot be used; *missing tells a device that does not
    // exist (the normal case on hosts without the driver) from a failing one.
    static std::unique_ptr<BinderDevice> open(const std::string& path, std::string* error,
                                              bool* missing);
    ~BinderDevice();

    BinderDevice(const BinderDevice&) = delete;
    BinderDevice& operator=(const BinderDevice&) = delete;

    const std::string& path() const { return mPath; }
    // "binder" for /dev/binder: the context name the driver reports for this device.
    std::string name() const;

    // One BINDER_WRITE_READ, repeated on EINTR. 0 or -errno.
    int writeRead(binder_write_read* bwr) const;
    int setMaxThreads(uint32_t count) const;
    int becomeContextManager() const;
    int threadExit() const;
    // The last error the driver recorded for the calling thread; false if unavailable.
    bool extendedError(binder_extended_error* error) const;

    // Makes every thread blocked in a read of this device return: closing any descriptor of the
    // device file flushes it.
    void wakeAll() const;

    // In a forked child: the descriptor belongs to the parent's binder process and the mapping
    // was not inherited, so drop both without touching either.
    void abandonAfterFork();

private:
    BinderDevice(std::string path, UniqueFd fd, void* mapping, size_t mappingSize);

    const std::string mPath;
    UniqueFd mFd;
    void* mMapping;
    size_t mMappingSize;
};

}  // namespace abinder::driver
