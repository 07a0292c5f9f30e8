#pragma once

// Link-time seams of sensor_manager_tests (-Wl,--wrap): the wrapped binder calls are recorded,
// then passed on to the real ones.

#include <android/binder_ibinder.h>

#include <vector>

namespace sensortest {

struct TransactCall {
    const AIBinder* binder;
    transaction_code_t code;
    binder_flags_t flags;
};

struct SchedulerPolicyCall {
    const AIBinder* binder;
    int policy;
    int priority;
};

std::vector<TransactCall> transactCalls();
std::vector<SchedulerPolicyCall> schedulerPolicyCalls();

}  // namespace sensortest
