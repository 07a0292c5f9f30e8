#pragma once

#include <android/binder_ibinder.h>
#include <sys/types.h>

namespace abinder {

// Per-thread binder state: identity of the caller being served, and the strict-mode and work
// source values that interface tokens carry. Touched only by its own thread.
struct ThreadState {
    static ThreadState& self();

    bool handlingTransaction = false;
    pid_t callingPid;
    uid_t callingUid;
    const char* callingSid = nullptr;
    binder_flags_t lastTransactionFlags = 0;

    int32_t strictModePolicy = 0;
    int32_t workSourceUid = -1;
    bool propagateWorkSource = false;

private:
    ThreadState();
};

// Marks the current thread as serving an incoming transaction from another process for the
// scope's lifetime, restoring the previous state after (transactions nest).
class IncomingTransactionScope {
public:
    IncomingTransactionScope(pid_t callingPid, uid_t callingUid, const char* callingSid,
                             binder_flags_t flags);
    ~IncomingTransactionScope();

    IncomingTransactionScope(const IncomingTransactionScope&) = delete;
    IncomingTransactionScope& operator=(const IncomingTransactionScope&) = delete;

private:
    ThreadState mSaved;
};

}  // namespace abinder
