#pragma once

#include <android/binder_ibinder.h>

#ifdef __cplusplus
extern "C" {
#endif

// The reply buffer is zeroed once the caller is done with it.
#define FLAG_CLEAR_BUF 0x20

// Must be called on a local binder before it is first sent anywhere.
void AIBinder_setRequestingSid(AIBinder* binder, bool requestingSid);
const char* AIBinder_getCallingSid(void);

// Must be called on a local binder before it is first sent anywhere. Aborts on invalid values.
void AIBinder_setMinSchedulerPolicy(AIBinder* binder, int policy, int priority);
void AIBinder_setInheritRt(AIBinder* binder, bool inheritRt);

#ifdef __cplusplus
}  // extern "C"
#endif
