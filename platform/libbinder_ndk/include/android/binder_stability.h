#pragma once

#include <android/binder_ibinder.h>

#ifdef __cplusplus
extern "C" {
#endif

enum {
    // Marks a transaction made from vendor code; it selects the stability a remote binder must
    // have and is never sent to the other side.
    FLAG_PRIVATE_VENDOR = 0x10000000,
};

void AIBinder_markVendorStability(AIBinder* binder);
void AIBinder_markSystemStability(AIBinder* binder);
void AIBinder_markVintfStability(AIBinder* binder);

// Local binders only.
void AIBinder_forceDowngradeToVendorStability(AIBinder* binder);
void AIBinder_forceDowngradeToSystemStability(AIBinder* binder);
void AIBinder_forceDowngradeToLocalStability(AIBinder* binder);

#if defined(__ANDROID_VENDOR__)

enum {
    FLAG_PRIVATE_LOCAL = FLAG_PRIVATE_VENDOR,
};

static inline void AIBinder_markCompilationUnitStability(AIBinder* binder) {
    AIBinder_markVendorStability(binder);
}

#else

enum {
    FLAG_PRIVATE_LOCAL = 0,
};

static inline void AIBinder_markCompilationUnitStability(AIBinder* binder) {
    AIBinder_markSystemStability(binder);
}

#endif

#ifdef __cplusplus
}  // extern "C"
#endif
