#include "sensorservice_LinkSeams.h"

#include <android/binder_ibinder_platform.h>

#include <mutex>

extern "C" binder_status_t __real_AIBinder_transact(AIBinder* binder, transaction_code_t code,
                                                    AParcel** in, AParcel** out,
                                                    binder_flags_t flags);
extern "C" void __real_AIBinder_setMinSchedulerPolicy(AIBinder* binder, int policy, int priority);

namespace sensortest {

namespace {

std::mutex gLock;
std::vector<TransactCall> gTransactCalls;                // guarded by gLock
std::vector<SchedulerPolicyCall> gSchedulerPolicyCalls;  // guarded by gLock

}  // namespace

std::vector<TransactCall> transactCalls() {
    std::lock_guard<std::mutex> lock(gLock);
    return gTransactCalls;
}

std::vector<SchedulerPolicyCall> schedulerPolicyCalls() {
    std::lock_guard<std::mutex> lock(gLock);
    return gSchedulerPolicyCalls;
}

}  // namespace sensortest

extern "C" binder_status_t __wrap_AIBinder_transact(AIBinder* binder, transaction_code_t code,
                                                    AParcel** in, AParcel** out,
                                                    binder_flags_t flags) {
    {
        std::lock_guard<std::mutex> lock(sensortest::gLock);
        sensortest::gTransactCalls.push_back({binder, code, flags});
    }
    return __real_AIBinder_transact(binder, code, in, out, flags);
}

extern "C" void __wrap_AIBinder_setMinSchedulerPolicy(AIBinder* binder, int policy, int priority) {
    {
        std::lock_guard<std::mutex> lock(sensortest::gLock);
        sensortest::gSchedulerPolicyCalls.push_back({binder, policy, priority});
    }
    __real_AIBinder_setMinSchedulerPolicy(binder, policy, priority);
}
