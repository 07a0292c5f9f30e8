#pragma once

#include <stdint.h>

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "BinderDevice.h"
#include "DriverHandler.h"
#include "DriverThread.h"

namespace abinder::driver {

// This process's connection to one binder device: the device, the handler that receives what the
// driver delivers, and the looper thread pool. Each thread talks to the driver through its own
// DriverThread (thread()).
//
// Thread pool as the platform's: startThreadPool() starts one looper (BC_ENTER_LOOPER); the kernel
// asks for more with BR_SPAWN_LOOPER, up to the maximum set with setMaxThreads (each sends
// BC_REGISTER_LOOPER); joinThreadPool() adds the calling thread until shutdown().
class DriverProcess : public std::enable_shared_from_this<DriverProcess> {
public:
    // The device to use: $TPS_BINDER_DEVICE, else /dev/binder.
    static std::string defaultDevicePath();

    // Null when the device cannot be used: silently when it does not exist, logged otherwise.
    // handler must outlive the process object.
    static std::shared_ptr<DriverProcess> open(DriverHandler* handler,
                                               const std::string& path = defaultDevicePath());
    ~DriverProcess();

    DriverProcess(const DriverProcess&) = delete;
    DriverProcess& operator=(const DriverProcess&) = delete;

    // The calling thread's state for this process, created on first use.
    DriverThread& thread();
    // Hands a buffer the kernel delivered back to it; a forked child leaves it to the parent.
    void freeBuffer(const uint8_t* data);

    const BinderDevice& device() const { return *mDevice; }
    DriverHandler& handler() const { return *mHandler; }

    bool setMaxThreads(uint32_t count);
    void startThreadPool();
    bool isThreadPoolStarted() const { return mPoolStarted.load(std::memory_order_acquire); }
    // Serves incoming work on the calling thread until shutdown().
    void joinThreadPool();
    // Threads started by the pool (not joined callers).
    size_t poolThreadCount();

    // 0 or -errno (EBUSY: another process is the manager).
    int becomeContextManager() const { return mDevice->becomeContextManager(); }

    // Ends every looper, waits for the pool threads and leaves the process without incoming
    // service. For tests and orderly exits; calls in progress on other threads are not waited for.
    void shutdown();
    bool stopping() const { return mStopping.load(std::memory_order_acquire); }
    // True in a child forked after this object was opened: it belongs to the parent.
    bool forked() const { return mForked.load(std::memory_order_relaxed); }

    // Called by the loopers.
    void spawnPooledThread(bool isMain);

private:
    DriverProcess(std::unique_ptr<BinderDevice> device, DriverHandler* handler);
    void forgetAfterFork();  // runs in the child, which has only the forking thread
    static void registerForkHandlers();

    const std::unique_ptr<BinderDevice> mDevice;
    DriverHandler* const mHandler;
    const uint64_t mId;  // tells thread states of different process objects apart
    std::atomic<bool> mPoolStarted{false};
    std::atomic<bool> mStopping{false};
    std::atomic<bool> mForked{false};

    std::mutex mPoolLock;
    std::condition_variable mPoolChanged;
    std::vector<std::unique_ptr<std::thread>> mThreads;  // guarded by mPoolLock
    uint32_t mSpawnSeq = 0;                              // guarded by mPoolLock
    size_t mActiveLoopers = 0;  // guarded by mPoolLock; pool threads and joined callers

    friend class DriverThread;
};

}  // namespace abinder::driver
