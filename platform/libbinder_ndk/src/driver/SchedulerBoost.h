#pragma once

#include <pthread.h>
#include <sched.h>

#include "DriverHandler.h"

namespace abinder::driver {

// Raises the calling thread to at least a real-time policy for the scope and restores what it
// had afterwards. Normal-policy requests are left to the kernel, which applies the node's nice.
class SchedulerBoost {
public:
    explicit SchedulerBoost(const SchedPolicy& min);
    ~SchedulerBoost();

    SchedulerBoost(const SchedulerBoost&) = delete;
    SchedulerBoost& operator=(const SchedulerBoost&) = delete;

private:
    bool mChanged = false;
    int mOldPolicy = SCHED_OTHER;
    sched_param mOldParam{};
};

}  // namespace abinder::driver
