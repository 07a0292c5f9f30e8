#include "ThreadState.h"

#include <unistd.h>

namespace abinder {

ThreadState::ThreadState() : callingPid(getpid()), callingUid(getuid()) {}

ThreadState& ThreadState::self() {
    thread_local ThreadState state;
    return state;
}

IncomingTransactionScope::IncomingTransactionScope(pid_t callingPid, uid_t callingUid,
                                                   const char* callingSid, binder_flags_t flags)
    : mSaved(ThreadState::self()) {
    ThreadState& state = ThreadState::self();
    state.handlingTransaction = true;
    state.callingPid = callingPid;
    state.callingUid = callingUid;
    state.callingSid = callingSid;
    state.lastTransactionFlags = flags;
}

IncomingTransactionScope::~IncomingTransactionScope() {
    ThreadState::self() = mSaved;
}

}  // namespace abinder
