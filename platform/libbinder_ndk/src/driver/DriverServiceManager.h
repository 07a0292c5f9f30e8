#pragma once

#include <android/binder_ibinder.h>

#include <mutex>

#include "../ServiceRegistry.h"

namespace abinder::driver {

class DriverTransport;

// The service manager of the driver's context (handle 0), reached through the object model like
// any other remote object. Until a manager is running, lookups find nothing and the calls that
// must reach it (addService, waitForService) wait for it.
class DriverServiceManager : public ServiceRegistry {
public:
    explicit DriverServiceManager(DriverTransport& transport);
    ~DriverServiceManager() override;

    binder_exception_t addService(AIBinder* binder, const char* instance) override;
    AIBinder* checkService(const char* instance) override;
    AIBinder* getService(const char* instance) override;
    AIBinder* waitForService(const char* instance) override;
    bool isDeclared(const char* instance) override;
    void forEachDeclaredInstance(const char* interface, void* context,
                                 void (*callback)(const char*, void*)) override;

private:
    // A new strong reference to the manager's proxy; null if none is running (wait: retry until
    // one is).
    AIBinder* manager(bool wait);
    // Forgets a manager that died, so the next call looks for a new one.
    void dropManager(AIBinder* manager);
    // One call that sends a name and reads a nullable binder back.
    binder_status_t lookup(uint32_t code, const char* instance, AIBinder** binder);
    binder_status_t callWithBinder(uint32_t code, const char* instance, AIBinder* binder,
                                   binder_exception_t* exception);

    DriverTransport& mTransport;
    std::mutex mLock;
    AIBinder* mManager = nullptr;  // guarded by mLock; a strong reference
};

}  // namespace abinder::driver
