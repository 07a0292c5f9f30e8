#include "Stability.h"

#include "AIBinderImpl.h"
#include "BinderLog.h"

namespace abinder {

bool isDeclaredStability(int32_t level) {
    return level == kStabilityVendor || level == kStabilitySystem || level == kStabilityVintf;
}

const char* stabilityString(int32_t level) {
    switch (level) {
        case kStabilityUndeclared:
            return "undeclared stability";
        case kStabilityVendor:
            return "vendor stability";
        case kStabilitySystem:
            return "system stability";
        case kStabilityVintf:
            return "vintf stability";
        default:
            return "unknown stability";
    }
}

bool checkStability(int32_t provided, int32_t required) {
    if (provided != kStabilityUndeclared && !isDeclaredStability(provided)) {
        BINDER_LOGE("Unknown stability when checking interface stability %d.", provided);
        return false;
    }
    return (provided & required) == required;
}

binder_status_t setStability(AIBinder* binder, int32_t level, bool log, bool allowDowngrade) {
    if (binder == nullptr) {
        if (level == kStabilityUndeclared) return STATUS_OK;
        if (log) BINDER_LOGE("Null binder written with stability %s.", stabilityString(level));
        return STATUS_BAD_TYPE;
    }
    if (!isDeclaredStability(level)) {
        if (log) BINDER_LOGE("Can only set known stability, not %d.", level);
        return STATUS_BAD_TYPE;
    }
    const int32_t current = binder->stability();
    if (current == level) return STATUS_OK;
    const bool alreadySet = current != kStabilityUndeclared;
    const bool downgrade = allowDowngrade && checkStability(current, level);
    if (alreadySet && !downgrade) {
        if (log) {
            BINDER_LOGE("Interface being set with %s but it is already marked as %s",
                        stabilityString(level), stabilityString(current));
        }
        return STATUS_BAD_TYPE;
    }
    binder->setStability(level);
    return STATUS_OK;
}

void tryMarkCompilationUnit(AIBinder* binder) {
    (void)setStability(binder, kLocalStability, false, false);
}

}  // namespace abinder
