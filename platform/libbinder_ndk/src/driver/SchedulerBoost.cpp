#include "SchedulerBoost.h"

#include <string.h>

#include "../BinderLog.h"

namespace abinder::driver {

namespace {

bool isRealTime(int policy) {
    return policy == SCHED_FIFO || policy == SCHED_RR;
}

}  // namespace

SchedulerBoost::SchedulerBoost(const SchedPolicy& min) {
    if (!isRealTime(min.policy)) return;
    if (pthread_getschedparam(pthread_self(), &mOldPolicy, &mOldParam) != 0) return;
    if (isRealTime(mOldPolicy) && mOldParam.sched_priority >= min.priority) return;
    sched_param param{};
    param.sched_priority = min.priority;
    if (int err = pthread_setschedparam(pthread_self(), min.policy, &param); err != 0) {
        BINDER_LOGW("cannot raise the binder thread to policy %d priority %d: %s", min.policy,
                    min.priority, strerror(err));
        return;
    }
    mChanged = true;
}

SchedulerBoost::~SchedulerBoost() {
    if (mChanged) pthread_setschedparam(pthread_self(), mOldPolicy, &mOldParam);
}

}  // namespace abinder::driver
