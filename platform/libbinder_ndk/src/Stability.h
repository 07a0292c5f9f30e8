#pragma once

#include <android/binder_status.h>
#include <stdint.h>

struct AIBinder;

namespace abinder {

// Stability levels as they travel after each binder object.
enum : int32_t {
    kStabilityUndeclared = 0,
    kStabilityVendor = 0x03,
    kStabilitySystem = 0x0C,
    kStabilityVintf = 0x3F,
};

// The level this library gives binders that were never marked (it is a system library).
inline constexpr int32_t kLocalStability = kStabilitySystem;

bool isDeclaredStability(int32_t level);
const char* stabilityString(int32_t level);

// Whether a binder of level `provided` may serve a caller that needs `required`.
bool checkStability(int32_t provided, int32_t required);

// Sets the level of binder (null accepts only undeclared). A binder that already has another
// level is refused with STATUS_BAD_TYPE unless allowDowngrade and the new level is within the
// old one.
binder_status_t setStability(AIBinder* binder, int32_t level, bool log, bool allowDowngrade);

// Gives an unmarked binder the local level, as happens when it is first parceled.
void tryMarkCompilationUnit(AIBinder* binder);

}  // namespace abinder
