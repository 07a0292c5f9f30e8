#include <android/binder_manager.h>

#include "ServiceRegistry.h"

using abinder::processServiceRegistry;

binder_exception_t AServiceManager_addService(AIBinder* binder, const char* instance) {
    if (binder == nullptr || instance == nullptr) return EX_ILLEGAL_ARGUMENT;
    return processServiceRegistry().addService(binder, instance);
}

binder_exception_t AServiceManager_addServiceWithFlags(AIBinder* binder, const char* instance,
                                                       const AServiceManager_AddServiceFlag) {
    return AServiceManager_addService(binder, instance);
}

AIBinder* AServiceManager_checkService(const char* instance) {
    if (instance == nullptr) return nullptr;
    return processServiceRegistry().checkService(instance);
}

AIBinder* AServiceManager_getService(const char* instance) {
    if (instance == nullptr) return nullptr;
    return processServiceRegistry().getService(instance);
}

AIBinder* AServiceManager_waitForService(const char* instance) {
    if (instance == nullptr) return nullptr;
    return processServiceRegistry().waitForService(instance);
}

bool AServiceManager_isDeclared(const char* instance) {
    if (instance == nullptr) return false;
    return processServiceRegistry().isDeclared(instance);
}

void AServiceManager_forEachDeclaredInstance(const char* interface, void* context,
                                             void (*callback)(const char*, void*)) {
    if (interface == nullptr || callback == nullptr) return;
    processServiceRegistry().forEachDeclaredInstance(interface, context, callback);
}
