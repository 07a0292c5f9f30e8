#include "RefCounts.h"

#include "AIBinderImpl.h"
#include "BinderLog.h"

namespace abinder {

void RefCounts::incStrong() {
    incWeak();
    const int32_t previous = mStrong.fetch_add(1, std::memory_order_relaxed);
    if (previous <= 0) fatal("incStrong on a binder without strong references (%p)", mObject);
}

void RefCounts::decStrong() {
    const int32_t previous = mStrong.fetch_sub(1, std::memory_order_acq_rel);
    if (previous <= 0) fatal("decStrong on a binder without strong references (%p)", mObject);
    if (previous == 1) delete mObject;
    decWeak();
}

void RefCounts::incWeak() {
    mWeak.fetch_add(1, std::memory_order_relaxed);
}

void RefCounts::decWeak() {
    const int32_t previous = mWeak.fetch_sub(1, std::memory_order_acq_rel);
    if (previous <= 0) fatal("decWeak on a released reference block (%p)", this);
    if (previous == 1) delete this;
}

bool RefCounts::attemptIncStrong() {
    incWeak();
    int32_t current = mStrong.load(std::memory_order_relaxed);
    while (current > 0) {
        if (mStrong.compare_exchange_weak(current, current + 1, std::memory_order_acquire,
                                          std::memory_order_relaxed)) {
            return true;
        }
    }
    decWeak();
    return false;
}

}  // namespace abinder
