#pragma once

#include <linux/android/binder.h>
#include <sys/types.h>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "driver/DriverHandler.h"
#include "driver/DriverProcess.h"

namespace drivertest {

using abinder::driver::DriverHandler;
using abinder::driver::DriverProcess;
using abinder::driver::DriverThread;
using abinder::driver::IncomingTransaction;
using abinder::driver::OutgoingBuffer;
using abinder::driver::ReceivedBuffer;

// Generous bound for anything that waits on another process (TCG guests are slow).
inline constexpr std::chrono::seconds kPatience{20};

// Transaction data as the driver sees it: int32 words and flat binder objects.
class RawParcel {
public:
    RawParcel& int32(int32_t value);
    RawParcel& node(binder_uintptr_t ptr, binder_uintptr_t cookie);
    RawParcel& handle(uint32_t handle);
    OutgoingBuffer buffer() const;

private:
    void object(const flat_binder_object& object);
    std::vector<uint8_t> mData;
    std::vector<binder_size_t> mOffsets;
};

// Reads int32 words and objects from a received buffer; reads past the end give 0 / null.
class RawReader {
public:
    explicit RawReader(const ReceivedBuffer& buffer) : mBuffer(buffer) {}
    int32_t int32();
    // The object listed at index in the offset table, or null.
    const flat_binder_object* object(size_t index) const;

private:
    const ReceivedBuffer& mBuffer;
    size_t mPos = 0;
};

// A handler that records what the driver reports and serves the callback code clients expose.
class RecordingHandler : public DriverHandler {
public:
    static constexpr uint32_t kCallbackCode = 100;  // int32 x -> int32 2x, int32 serving tid

    void onTransaction(DriverThread& thread, IncomingTransaction& txn) override;
    void onIncRefs(binder_uintptr_t ptr, binder_uintptr_t cookie) override;
    void onAcquire(binder_uintptr_t ptr, binder_uintptr_t cookie) override;
    void onRelease(binder_uintptr_t ptr, binder_uintptr_t cookie) override;
    void onDecRefs(binder_uintptr_t ptr, binder_uintptr_t cookie) override;
    void onDeadBinder(DriverThread& thread, binder_uintptr_t cookie) override;
    void onDeathNotificationCleared(binder_uintptr_t cookie) override;

    // Death cookie -> handle, so a death clears its own notification.
    void watch(binder_uintptr_t cookie, uint32_t handle);

    struct Counts {
        int incRefs = 0;
        int acquires = 0;
        int releases = 0;
        int decRefs = 0;
        int callbacks = 0;
        std::map<binder_uintptr_t, int> deaths;
        std::map<binder_uintptr_t, int> cleared;
    };
    Counts counts();
    // Waits until done(counts) holds; false on timeout.
    bool waitFor(const std::function<bool(const Counts&)>& done);

    // Extra handling for codes other than kCallbackCode; may be empty.
    std::function<void(DriverThread&, IncomingTransaction&)> onCall;

private:
    std::mutex mLock;
    std::condition_variable mChanged;
    Counts mCounts;                               // guarded by mLock
    std::map<binder_uintptr_t, uint32_t> mWatch;  // guarded by mLock
};

// A forked child running fn; its result is the exit status. The child must not touch gtest.
class ChildProcess {
public:
    explicit ChildProcess(const std::function<int()>& fn);
    ~ChildProcess();  // kills the child if still running

    pid_t pid() const { return mPid; }
    void kill();
    bool running();
    // Exit status, or 128+signal; -1 if it does not end within kPatience.
    int wait();

private:
    pid_t mPid;
    bool mReaped = false;
    int mStatus = -1;
};

// One-byte signals between processes.
class Pipe {
public:
    Pipe();
    ~Pipe();
    void signal(char value = 1);
    // False on timeout or end of file.
    bool await(char* value = nullptr);

private:
    int mFds[2];
};

// Per-process figures from the driver's debugfs state: what the kernel still holds for it.
struct ProcState {
    bool present = false;
    int nodes = 0;
    int refs = 0;
    int buffers = 0;
    int threads = 0;
};
ProcState binderProcState(pid_t pid);
// Waits until done(state of pid) holds; the last state seen is left in *last.
bool waitForProcState(pid_t pid, const std::function<bool(const ProcState&)>& done,
                      ProcState* last = nullptr);
// Waits until the driver lists nothing for pid.
bool waitForProcGone(pid_t pid);

// Becomes the context manager, retrying while the previous one is still being torn down.
bool becomeContextManager(DriverProcess& process);

}  // namespace drivertest
