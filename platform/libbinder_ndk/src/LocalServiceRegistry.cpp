#include "LocalServiceRegistry.h"

#include <chrono>

#include "AIBinderImpl.h"
#include "BinderLog.h"
#include "Transport.h"

namespace abinder {

bool isValidServiceName(std::string_view name) {
    if (name.empty() || name.size() > 127) return false;
    for (char c : name) {
        const bool ok = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                        (c >= '0' && c <= '9') || c == '_' || c == '-' || c == '.' || c == '/';
        if (!ok) return false;
    }
    return true;
}

LocalServiceRegistry::~LocalServiceRegistry() {
    for (auto& [name, binder] : mServices) binder->refs()->decStrong();
}

binder_exception_t LocalServiceRegistry::addService(AIBinder* binder, const char* instance) {
    if (!isValidServiceName(instance)) {
        BINDER_LOGE("Invalid service name: %s", instance);
        return EX_ILLEGAL_ARGUMENT;
    }
    binder->refs()->incStrong();
    AIBinder* replaced = nullptr;
    {
        std::lock_guard<std::mutex> lock(mLock);
        auto [it, inserted] = mServices.try_emplace(instance, binder);
        if (!inserted) {
            replaced = it->second;
            it->second = binder;
        }
    }
    mAdded.notify_all();
    if (replaced != nullptr) replaced->refs()->decStrong();
    return EX_NONE;
}

AIBinder* LocalServiceRegistry::findLocked(const std::string& instance) {
    auto it = mServices.find(instance);
    if (it == mServices.end()) return nullptr;
    it->second->refs()->incStrong();
    return it->second;
}

AIBinder* LocalServiceRegistry::checkService(const char* instance) {
    std::lock_guard<std::mutex> lock(mLock);
    return findLocked(instance);
}

AIBinder* LocalServiceRegistry::getService(const char* instance) {
    std::unique_lock<std::mutex> lock(mLock);
    AIBinder* binder = nullptr;
    mAdded.wait_for(lock, std::chrono::seconds(5),
                    [&] { return (binder = findLocked(instance)) != nullptr; });
    return binder;
}

AIBinder* LocalServiceRegistry::waitForService(const char* instance) {
    std::unique_lock<std::mutex> lock(mLock);
    AIBinder* binder = nullptr;
    mAdded.wait(lock, [&] { return (binder = findLocked(instance)) != nullptr; });
    return binder;
}

bool LocalServiceRegistry::isDeclared(const char* /*instance*/) {
    return false;
}

void LocalServiceRegistry::forEachDeclaredInstance(const char* /*interface*/, void* /*context*/,
                                                   void (* /*callback*/)(const char*, void*)) {}

ServiceRegistry& processServiceRegistry() {
    static LocalServiceRegistry* const local = new LocalServiceRegistry();
    if (std::shared_ptr<Transport> transport = processTransport(); transport != nullptr) {
        if (ServiceRegistry* remote = transport->serviceRegistry(); remote != nullptr) {
            return *remote;
        }
    }
    return *local;
}

}  // namespace abinder
