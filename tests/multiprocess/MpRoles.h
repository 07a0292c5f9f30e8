#pragma once

#include <string>
#include <vector>

namespace mptest {

// Names the test processes use.
inline constexpr const char* kTpsName = "vendor.tavix.tps.ITps/default";
inline constexpr const char* kUndeclaredTpsName = "vendor.tavix.tps.ITps/undeclared";
inline constexpr const char* kOrderName = "tps.test.IOrder/default";
inline constexpr const char* kOrderDescriptor = "tps.test.IOrder";

// IOrder, a raw NDK interface for what ITps lacks: oneway calls, a binder of system stability
// and one with a real-time minimum scheduler policy.
enum OrderCode : uint32_t {
    kOrderRecord = 1,     // oneway int32 seq
    kOrderLog = 2,        // int32 n -> waits for n records; int32 count, bool in order
    kOrderNewBinder = 3,  // -> a fresh local IOrder binder, never marked (system stability)
    kOrderRtBinder = 4,   // -> a fresh IOrder binder served at SCHED_FIFO kRtPriority
    kOrderSchedInfo = 5,  // -> int32 policy, int32 priority of the serving thread
};
inline constexpr int kRtPriority = 98;

// Runs the role a test process was started for ("--child ROLE ARGS..."); its exit status.
//   tps-server MAX_THREADS JOIN_ONLY     ITps fake at kTpsName and IOrder at kOrderName
//   tps-undeclared                       tries to add a VINTF binder under kUndeclaredTpsName;
//                                        exits with the exception code it got (as a positive)
//   callback-client MODE                 registers an ITpsCallback with the ITps fake, then
//                                        MODE "exit": exits; "hold": calls setParameters("hold")
int runRole(const std::vector<std::string>& args);

}  // namespace mptest
