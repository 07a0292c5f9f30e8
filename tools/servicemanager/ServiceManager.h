#pragma once

#include <android/binder_auto_utils.h>
#include <android/binder_ibinder.h>
#include <sys/types.h>

#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "VintfManifest.h"

// The context manager's registry, serving the platform's IServiceManager: services by name, the
// callbacks waiting for names, and the VINTF declarations. It forgets whatever belonged to a
// process when that process dies. Calls arrive on the manager's one looper thread; the lock only
// makes that assumption unnecessary.
class ServiceManager {
public:
    explicit ServiceManager(VintfManifest manifest);
    ~ServiceManager();

    ServiceManager(const ServiceManager&) = delete;
    ServiceManager& operator=(const ServiceManager&) = delete;

    // The binder that answers IServiceManager calls.
    AIBinder* binder() const { return mBinder.get(); }

    binder_status_t onTransact(transaction_code_t code, const AParcel* in, AParcel* out);

    // Exposed for tests.
    ndk::ScopedAStatus addService(const std::string& name, AIBinder* binder, bool allowIsolated,
                                  int32_t dumpPriority);
    ndk::SpAIBinder checkService(const std::string& name);
    std::vector<std::string> listServices(int32_t dumpPriority);
    ndk::ScopedAStatus registerForNotifications(const std::string& name, AIBinder* callback);
    ndk::ScopedAStatus unregisterForNotifications(const std::string& name, AIBinder* callback);
    bool isDeclared(const std::string& name) const { return mManifest.isDeclared(name); }

private:
    struct Service {
        ndk::SpAIBinder binder;
        bool allowIsolated;
        int32_t dumpPriority;
        pid_t debugPid;
    };

    struct DeathCookie;
    static void onBinderDied(void* cookie);
    static void onUnlinked(void* cookie);
    void binderDied(AIBinder* who);
    // Links to the death of a remote binder; local ones never die.
    bool watch(AIBinder* binder);
    // Tells one callback that name now has binder (oneway).
    void notify(AIBinder* callback, const std::string& name, AIBinder* binder);

    const VintfManifest mManifest;
    ndk::SpAIBinder mBinder;
    ndk::ScopedAIBinder_DeathRecipient mDeathRecipient;

    std::mutex mLock;
    std::map<std::string, Service> mServices;                        // guarded by mLock
    std::map<std::string, std::vector<ndk::SpAIBinder>> mCallbacks;  // guarded by mLock
};
