#pragma once

#include <stdint.h>

#include "DriverTestSupport.h"

namespace drivertest {

// Codes the test server (the context manager, in a forked child) answers.
enum ServerCode : uint32_t {
    kPing = 1,           // int32 x -> int32 x+1, int32 sender pid, int32 sender euid
    kStatusReply = 2,    // int32 s -> a status-only reply with s
    kNoAnswer = 3,       // returns without answering
    kCallBack = 4,       // node -> calls it with kCallbackCode(21); replies status, 2x, its tid
    kBarrier = 5,        // int32 n -> waits until n calls are inside at once; int32 1 if they were
    kOneway = 6,         // oneway int32 seq: recorded
    kOnewayLog = 7,      // int32 n -> waits for n oneways; int32 count, int32 1 if in order
    kExitNow = 8,        // the server exits inside the call
    kGetNode = 9,        // -> the server's second node (kRtNodePtr), served at SCHED_FIFO 10
    kSchedInfo = 10,     // -> int32 policy, int32 priority of the serving thread
    kReport = 11,        // -> int32 own buffers held, int32 pool threads, int32 deaths seen,
                         //    int32 status of the call made to the dead client
    kWatchAndWait = 12,  // node: watches its death, signals the watch pipe, waits for the death,
                         // calls the node (recording the status), then answers
};

inline constexpr binder_uintptr_t kRtNodePtr = 0x3000;
inline constexpr binder_uintptr_t kRtNodeCookie = 0x4000;
inline constexpr int kRtPriority = 10;

struct ServerOptions {
    uint32_t maxThreads = 0;   // kernel-spawned loopers on top of the started one
    bool startPool = true;     // else the main thread alone serves
    Pipe* ready = nullptr;     // signalled once the server is the context manager
    Pipe* watching = nullptr;  // signalled by kWatchAndWait once the death is watched
};

// Runs the test server until killed or kExitNow; the child's exit status.
int runTestServer(const ServerOptions& options);

}  // namespace drivertest
