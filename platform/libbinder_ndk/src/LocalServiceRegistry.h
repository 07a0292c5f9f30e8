#pragma once

#include <condition_variable>
#include <map>
#include <mutex>
#include <string>

#include "ServiceRegistry.h"

namespace abinder {

// Services registered and looked up within this process.
class LocalServiceRegistry : public ServiceRegistry {
public:
    LocalServiceRegistry() = default;
    ~LocalServiceRegistry() override;

    binder_exception_t addService(AIBinder* binder, const char* instance) override;
    AIBinder* checkService(const char* instance) override;
    // Waits a few seconds for the service to appear.
    AIBinder* getService(const char* instance) override;
    // Waits as long as it takes.
    AIBinder* waitForService(const char* instance) override;
    // Nothing is declared without a service manager.
    bool isDeclared(const char* instance) override;
    void forEachDeclaredInstance(const char* interface, void* context,
                                 void (*callback)(const char*, void*)) override;

private:
    AIBinder* findLocked(const std::string& instance);

    std::mutex mLock;
    std::condition_variable mAdded;              // signalled on every addService
    std::map<std::string, AIBinder*> mServices;  // guarded by mLock; strong references
};

}  // namespace abinder
