#pragma once

#include <linux/android/binder.h>
#include <sched.h>
#include <stddef.h>
#include <stdint.h>
#include <sys/types.h>

#include "ReceivedBuffer.h"

namespace abinder::driver {

class DriverThread;

// Bytes to send: data with binder objects (flat_binder_object) at the listed byte offsets.
struct OutgoingBuffer {
    const void* data = nullptr;
    size_t size = 0;
    const binder_size_t* offsets = nullptr;
    size_t offsetCount = 0;
};

// A call that arrived for a local node.
struct IncomingTransaction {
    // The node's key as this process chose it when sending the node; both 0 for the context
    // manager's own node.
    binder_uintptr_t ptr = 0;
    binder_uintptr_t cookie = 0;
    uint32_t code = 0;
    uint32_t flags = 0;
    pid_t senderPid = 0;  // 0 for oneway calls
    uid_t senderEuid = 0;
    ReceivedBuffer data;

    bool oneway() const { return (flags & TF_ONE_WAY) != 0; }
};

// Scheduling a node asks of the threads that serve it.
struct SchedPolicy {
    int policy = SCHED_OTHER;
    int priority = 0;
};

// What the layer above (the object model) does with what the driver delivers. Called on the
// thread that read the command; implementations must be thread-safe.
class DriverHandler {
public:
    virtual ~DriverHandler() = default;

    // For a two-way call the handler answers exactly once with DriverThread::sendReply or
    // sendStatusReply (after freeing txn.data, if it can, so both go out in one write); a handler
    // that returns without answering makes the caller see STATUS_FAILED_TRANSACTION.
    virtual void onTransaction(DriverThread& thread, IncomingTransaction& txn) = 0;

    // The driver's interest in a local node. Take the reference before returning: the layer
    // confirms it to the kernel right after. Releases arrive only after the rest of the read
    // buffer has been handled, so an acquire later in that buffer is seen first.
    virtual void onIncRefs(binder_uintptr_t ptr, binder_uintptr_t cookie) = 0;
    virtual void onAcquire(binder_uintptr_t ptr, binder_uintptr_t cookie) = 0;
    virtual void onRelease(binder_uintptr_t ptr, binder_uintptr_t cookie) = 0;
    virtual void onDecRefs(binder_uintptr_t ptr, binder_uintptr_t cookie) = 0;

    // The node behind a death notification requested with cookie died. The handler normally
    // clears the notification (DriverThread::clearDeathNotification); BC_DEAD_BINDER_DONE follows
    // its return.
    virtual void onDeadBinder(DriverThread& thread, binder_uintptr_t cookie) = 0;
    // The kernel forgot the notification with cookie: nothing more will arrive for it.
    virtual void onDeathNotificationCleared(binder_uintptr_t cookie) = 0;

    // The least scheduling the thread serving a call to this node needs. Mainline kernels only
    // honour the nice value of a node, so real-time policies are applied here.
    virtual SchedPolicy minSchedulerPolicy(binder_uintptr_t /*ptr*/, binder_uintptr_t /*cookie*/) {
        return {};
    }
};

}  // namespace abinder::driver
