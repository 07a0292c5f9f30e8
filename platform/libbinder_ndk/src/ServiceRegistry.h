#pragma once

#include <android/binder_ibinder.h>
#include <android/binder_status.h>

#include <string_view>

namespace abinder {

// The service manager as this process sees it. The in-process registry serves when there is no
// transport; a transport may provide one that talks to the real service manager.
class ServiceRegistry {
public:
    virtual ~ServiceRegistry() = default;

    // binder and instance are non-null; the registry takes its own reference.
    virtual binder_exception_t addService(AIBinder* binder, const char* instance) = 0;
    // These return a new strong reference or null.
    virtual AIBinder* checkService(const char* instance) = 0;
    virtual AIBinder* getService(const char* instance) = 0;
    virtual AIBinder* waitForService(const char* instance) = 0;
    virtual bool isDeclared(const char* instance) = 0;
    virtual void forEachDeclaredInstance(const char* interface, void* context,
                                         void (*callback)(const char*, void*)) = 0;
};

// Names are 1..127 characters from [A-Za-z0-9_-./].
bool isValidServiceName(std::string_view name);

// The registry the AServiceManager_* calls use.
ServiceRegistry& processServiceRegistry();

}  // namespace abinder
