#pragma once

#include <android/binder_ibinder.h>
#include <android/binder_status.h>
#include <stdbool.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

enum AServiceManager_AddServiceFlag : uint32_t {
    ADD_SERVICE_ALLOW_ISOLATED = 1 << 0,
};

// Does not take ownership of binder.
binder_exception_t AServiceManager_addService(AIBinder* binder, const char* instance);
binder_exception_t AServiceManager_addServiceWithFlags(AIBinder* binder, const char* instance,
                                                       const AServiceManager_AddServiceFlag flag);

// The lookups return a strong reference owned by the caller, or null.
AIBinder* AServiceManager_checkService(const char* instance);
AIBinder* AServiceManager_getService(const char* instance);
AIBinder* AServiceManager_waitForService(const char* instance);

bool AServiceManager_isDeclared(const char* instance);
void AServiceManager_forEachDeclaredInstance(const char* interface, void* context,
                                             void (*callback)(const char*, void*));

#ifdef __cplusplus
}  // extern "C"
#endif
