#pragma once

#include <android/binder_status.h>
#include <linux/android/binder.h>
#include <stddef.h>
#include <stdint.h>

#include <utility>
#include <vector>

#include "DriverHandler.h"
#include "ReceivedBuffer.h"

namespace abinder::driver {

class DriverProcess;

// One thread's conversation with the driver: the commands it has queued and the returns it has
// read but not handled yet. Only its own thread ever touches it (get it with
// DriverProcess::thread()).
//
// Commands that change references or free buffers are queued; a thread that is neither a looper
// nor serving a call writes them at once, the others send them with their next read.
class DriverThread {
public:
    explicit DriverThread(DriverProcess& process);
    // Writes what is still queued and tells the driver the thread is gone.
    ~DriverThread();

    DriverThread(const DriverThread&) = delete;
    DriverThread& operator=(const DriverThread&) = delete;

    // Calls the node behind handle. For a two-way call waits for the reply, serving calls that
    // come back to this thread meanwhile; *reply gets the reply data (empty for a status-only
    // reply). Returns the remote status, STATUS_DEAD_OBJECT when the node's process is gone,
    // STATUS_FAILED_TRANSACTION when the driver refused the call, or -errno.
    binder_status_t transact(uint32_t handle, uint32_t code, const OutgoingBuffer& data,
                             uint32_t flags, ReceivedBuffer* reply);

    // Answers the two-way call this thread is serving (the innermost one).
    binder_status_t sendReply(const OutgoingBuffer& data);
    // Answers it with a bare status instead of data; the caller's transact returns status.
    binder_status_t sendStatusReply(binder_status_t status);

    // References to a remote node; a transaction needs a strong one (handle 0 excepted).
    void incStrongHandle(uint32_t handle) { queueHandleCommand(BC_ACQUIRE, handle); }
    void decStrongHandle(uint32_t handle) { queueHandleCommand(BC_RELEASE, handle); }
    void incWeakHandle(uint32_t handle) { queueHandleCommand(BC_INCREFS, handle); }
    void decWeakHandle(uint32_t handle) { queueHandleCommand(BC_DECREFS, handle); }

    // Both are written at once. One notification per handle; the cookie comes back in
    // DriverHandler::onDeadBinder and onDeathNotificationCleared.
    binder_status_t requestDeathNotification(uint32_t handle, binder_uintptr_t cookie);
    binder_status_t clearDeathNotification(uint32_t handle, binder_uintptr_t cookie);

    void freeBuffer(binder_uintptr_t address);
    // Writes everything queued without reading.
    binder_status_t flushCommands();

    // Serves incoming work until the process shuts down. isMain: the thread joined on its own
    // (BC_ENTER_LOOPER) rather than at the kernel's request (BC_REGISTER_LOOPER).
    void joinThreadPool(bool isMain);

    // For a state whose process object is gone: destruction then touches nothing of it.
    void abandon() { mAbandoned = true; }

    // True while inside DriverHandler::onTransaction.
    bool isServing() const { return !mServing.empty(); }

private:
    struct ServingFrame {
        uint32_t flags;
        bool replied;
    };

    template <typename T>
    void queue(uint32_t cmd, const T& payload);
    void queue(uint32_t cmd);
    void queueHandleCommand(uint32_t cmd, uint32_t handle);
    void queueTransaction(uint32_t cmd, uint32_t flags, uint32_t handle, uint32_t code,
                          const OutgoingBuffer& data);
    void flushIfNeeded();

    // One BINDER_WRITE_READ; reads only once everything read before has been handled.
    binder_status_t talk(bool doReceive);
    // Takes the next return from the read buffer; false when it is empty.
    bool nextReturn(uint32_t* cmd, const uint8_t** payload);
    binder_status_t waitForResponse(ReceivedBuffer* reply, bool expectReply);
    binder_status_t executeReturn(uint32_t cmd, const uint8_t* payload);
    void executeTransaction(const binder_transaction_data& tr);
    void processPendingDerefs();
    void logExtendedError();

    DriverProcess& mProcess;
    std::vector<uint8_t> mOut;
    alignas(8) uint8_t mIn[256];
    size_t mInSize = 0;
    size_t mInPos = 0;
    bool mIsLooper = false;
    bool mAbandoned = false;
    std::vector<ServingFrame> mServing;
    std::vector<std::pair<binder_uintptr_t, binder_uintptr_t>> mPendingStrongDerefs;
    std::vector<std::pair<binder_uintptr_t, binder_uintptr_t>> mPendingWeakDerefs;
};

}  // namespace abinder::driver
