#include <android/binder_stability.h>

#include "ABBinder.h"
#include "BinderLog.h"
#include "Stability.h"

using namespace abinder;

namespace {

void mark(AIBinder* binder, int32_t level) {
    if (setStability(binder, level, true, false) != STATUS_OK) {
        fatal("Should only mark known object.");
    }
}

void downgrade(AIBinder* binder, int32_t level) {
    if (binder == nullptr || binder->asABBinder() == nullptr) {
        fatal("Can only downgrade the stability of local binders.");
    }
    if (setStability(binder, level, true, true) != STATUS_OK) {
        fatal("Cannot downgrade to %s.", stabilityString(level));
    }
}

}  // namespace

void AIBinder_markVendorStability(AIBinder* binder) {
    mark(binder, kStabilityVendor);
}

void AIBinder_markSystemStability(AIBinder* binder) {
    mark(binder, kStabilitySystem);
}

void AIBinder_markVintfStability(AIBinder* binder) {
    mark(binder, kStabilityVintf);
}

void AIBinder_forceDowngradeToVendorStability(AIBinder* binder) {
    downgrade(binder, kStabilityVendor);
}

void AIBinder_forceDowngradeToSystemStability(AIBinder* binder) {
    downgrade(binder, kStabilitySystem);
}

void AIBinder_forceDowngradeToLocalStability(AIBinder* binder) {
    downgrade(binder, kLocalStability);
}
