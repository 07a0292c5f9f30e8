#include "ServiceManager.h"

#define LOG_TAG "servicemanager"

#include <android/binder_parcel_utils.h>
#include <android/binder_status.h>
#include <android/log.h>

#include <algorithm>

#include "AIBinderImpl.h"
#include "Parcel.h"
#include "ServiceRegistry.h"
#include "Stability.h"

namespace {

enum : transaction_code_t {
    kGetService = FIRST_CALL_TRANSACTION,
    kCheckService,
    kAddService,
    kListServices,
    kRegisterForNotifications,
    kUnregisterForNotifications,
    kIsDeclared,
    kGetDeclaredInstances,
    kUpdatableViaApex,
    kGetUpdatableNames,
    kGetConnectionInfo,
    kRegisterClientCallback,
    kTryUnregisterService,
    kGetServiceDebugInfo,
};
constexpr transaction_code_t kOnRegistration = FIRST_CALL_TRANSACTION;
constexpr uid_t kFirstAppUid = 10000;

#define SM_LOGI(...) __android_log_print(ANDROID_LOG_INFO, LOG_TAG, __VA_ARGS__)
#define SM_LOGW(...) __android_log_print(ANDROID_LOG_WARN, LOG_TAG, __VA_ARGS__)

binder_status_t transactHook(AIBinder* binder, transaction_code_t code, const AParcel* in,
                             AParcel* out) {
    return static_cast<ServiceManager*>(AIBinder_getUserData(binder))->onTransact(code, in, out);
}

void* createHook(void* args) {
    return args;
}

void destroyHook(void*) {}

const AIBinder_Class* managerClass() {
    static const AIBinder_Class* clazz = AIBinder_Class_define(
            "android.os.IServiceManager", createHook, destroyHook, transactHook);
    return clazz;
}

ndk::ScopedAStatus error(binder_exception_t exception, const std::string& message) {
    SM_LOGW("%s", message.c_str());
    return ndk::ScopedAStatus::fromExceptionCodeWithMessage(exception, message.c_str());
}

binder_status_t writeStrings(AParcel* out, const std::vector<std::string>& strings) {
    return ndk::AParcel_writeVector(out, strings);
}

}  // namespace

ServiceManager::ServiceManager(VintfManifest manifest)
    : mManifest(std::move(manifest)),
      mBinder(AIBinder_new(managerClass(), this)),
      mDeathRecipient(AIBinder_DeathRecipient_new(onBinderDied)) {
    AIBinder_DeathRecipient_setOnUnlinked(mDeathRecipient.get(), onUnlinked);
}

ServiceManager::~ServiceManager() = default;

// ---- registry
// ------------------------------------------------------------------------------------

struct ServiceManager::DeathCookie {
    ServiceManager* self;
    // Only compared, never followed: a proxy keeps its address while the registry holds it.
    AIBinder* who;
};

ndk::ScopedAStatus ServiceManager::addService(const std::string& name, AIBinder* binder,
                                              bool allowIsolated, int32_t dumpPriority) {
    if (AIBinder_getCallingUid() >= kFirstAppUid) {
        return error(EX_SECURITY, "App UIDs cannot add services.");
    }
    if (binder == nullptr) return error(EX_ILLEGAL_ARGUMENT, "Null binder.");
    if (!abinder::isValidServiceName(name)) {
        return error(EX_ILLEGAL_ARGUMENT, "Invalid service name: " + name);
    }
    if (binder->stability() == abinder::kStabilityVintf && !mManifest.isDeclared(name)) {
        return error(EX_ILLEGAL_ARGUMENT,
                     "VINTF declaration error: " + name + " is not declared in a VINTF manifest.");
    }
    if (!watch(binder)) return error(EX_ILLEGAL_STATE, "Could not linkToDeath.");

    std::vector<ndk::SpAIBinder> callbacks;
    {
        std::lock_guard<std::mutex> lock(mLock);
        AIBinder_incStrong(binder);
        mServices[name] = Service{ndk::SpAIBinder(binder), allowIsolated, dumpPriority,
                                  AIBinder_getCallingPid()};
        if (auto it = mCallbacks.find(name); it != mCallbacks.end()) callbacks = it->second;
    }
    SM_LOGI("addService %s", name.c_str());
    for (const ndk::SpAIBinder& callback : callbacks) notify(callback.get(), name, binder);
    return ndk::ScopedAStatus::ok();
}

ndk::SpAIBinder ServiceManager::checkService(const std::string& name) {
    std::lock_guard<std::mutex> lock(mLock);
    auto it = mServices.find(name);
    return it == mServices.end() ? ndk::SpAIBinder() : it->second.binder;
}

std::vector<std::string> ServiceManager::listServices(int32_t dumpPriority) {
    std::vector<std::string> names;
    std::lock_guard<std::mutex> lock(mLock);
    for (const auto& [name, service] : mServices) {
        if ((service.dumpPriority & dumpPriority) != 0) names.push_back(name);
    }
    return names;
}

ndk::ScopedAStatus ServiceManager::registerForNotifications(const std::string& name,
                                                            AIBinder* callback) {
    if (!abinder::isValidServiceName(name)) {
        return error(EX_ILLEGAL_ARGUMENT, "Invalid service name: " + name);
    }
    if (callback == nullptr) return error(EX_NULL_POINTER, "Null callback.");
    if (!watch(callback)) return error(EX_ILLEGAL_STATE, "Could not linkToDeath.");
    ndk::SpAIBinder existing;
    {
        std::lock_guard<std::mutex> lock(mLock);
        AIBinder_incStrong(callback);
        mCallbacks[name].emplace_back(callback);
        if (auto it = mServices.find(name); it != mServices.end()) existing = it->second.binder;
    }
    if (existing.get() != nullptr) notify(callback, name, existing.get());
    return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus ServiceManager::unregisterForNotifications(const std::string& name,
                                                              AIBinder* callback) {
    std::lock_guard<std::mutex> lock(mLock);
    auto it = mCallbacks.find(name);
    if (it != mCallbacks.end()) {
        auto& list = it->second;
        auto match = std::find_if(list.begin(), list.end(),
                                  [&](const ndk::SpAIBinder& b) { return b.get() == callback; });
        if (match != list.end()) {
            list.erase(match);
            if (list.empty()) mCallbacks.erase(it);
            return ndk::ScopedAStatus::ok();
        }
    }
    return error(EX_ILLEGAL_STATE, "Trying to unregister callback, but none exists " + name);
}

bool ServiceManager::watch(AIBinder* binder) {
    if (!AIBinder_isRemote(binder)) return true;
    // The recipient's onUnlinked frees the cookie, whether the link is made or not.
    return AIBinder_linkToDeath(binder, mDeathRecipient.get(), new DeathCookie{this, binder}) ==
           STATUS_OK;
}

void ServiceManager::onBinderDied(void* cookie) {
    auto* death = static_cast<DeathCookie*>(cookie);
    death->self->binderDied(death->who);
}

void ServiceManager::onUnlinked(void* cookie) {
    delete static_cast<DeathCookie*>(cookie);
}

void ServiceManager::binderDied(AIBinder* who) {
    std::vector<ndk::SpAIBinder> released;  // dropped outside the lock
    std::lock_guard<std::mutex> lock(mLock);
    for (auto it = mServices.begin(); it != mServices.end();) {
        if (it->second.binder.get() == who) {
            SM_LOGI("service %s died", it->first.c_str());
            released.push_back(it->second.binder);
            it = mServices.erase(it);
        } else {
            ++it;
        }
    }
    for (auto it = mCallbacks.begin(); it != mCallbacks.end();) {
        std::erase_if(it->second, [&](const ndk::SpAIBinder& b) {
            if (b.get() != who) return false;
            released.push_back(b);
            return true;
        });
        it = it->second.empty() ? mCallbacks.erase(it) : std::next(it);
    }
}

void ServiceManager::notify(AIBinder* callback, const std::string& name, AIBinder* binder) {
    // Built by hand: associating a class with the proxy would ask the client for its descriptor
    // with a two-way call, and the manager only ever makes oneway calls.
    AParcel data(callback);
    binder_status_t status = data.writeInterfaceToken(u"android.os.IServiceCallback");
    if (status == STATUS_OK) status = ndk::AParcel_writeString(&data, name);
    if (status == STATUS_OK) status = AParcel_writeStrongBinder(&data, binder);
    if (status == STATUS_OK)
        status = callback->transact(kOnRegistration, data, nullptr, FLAG_ONEWAY);
    if (status != STATUS_OK) SM_LOGW("onRegistration of %s failed: %d", name.c_str(), status);
}

// ---- dispatch
// ------------------------------------------------------------------------------------

binder_status_t ServiceManager::onTransact(transaction_code_t code, const AParcel* in,
                                           AParcel* out) {
    std::string name;
    switch (code) {
        case kGetService:
        case kCheckService: {
            if (binder_status_t s = ndk::AParcel_readString(in, &name); s != STATUS_OK) return s;
            ndk::SpAIBinder binder = checkService(name);
            if (binder_status_t s = AParcel_writeStatusHeader(out, ndk::ScopedAStatus::ok().get());
                s != STATUS_OK) {
                return s;
            }
            return AParcel_writeStrongBinder(out, binder.get());
        }
        case kAddService: {
            AIBinder* binder = nullptr;
            bool allowIsolated = false;
            int32_t dumpPriority = 0;
            binder_status_t s = ndk::AParcel_readString(in, &name);
            if (s == STATUS_OK) s = AParcel_readStrongBinder(in, &binder);
            ndk::SpAIBinder owner(binder);
            if (s == STATUS_OK) s = AParcel_readBool(in, &allowIsolated);
            if (s == STATUS_OK) s = AParcel_readInt32(in, &dumpPriority);
            if (s != STATUS_OK) return s;
            return AParcel_writeStatusHeader(
                    out, addService(name, binder, allowIsolated, dumpPriority).get());
        }
        case kListServices: {
            int32_t dumpPriority = 0;
            if (binder_status_t s = AParcel_readInt32(in, &dumpPriority); s != STATUS_OK) return s;
            if (binder_status_t s = AParcel_writeStatusHeader(out, ndk::ScopedAStatus::ok().get());
                s != STATUS_OK) {
                return s;
            }
            return writeStrings(out, listServices(dumpPriority));
        }
        case kRegisterForNotifications:
        case kUnregisterForNotifications: {
            AIBinder* callback = nullptr;
            binder_status_t s = ndk::AParcel_readString(in, &name);
            if (s == STATUS_OK) s = AParcel_readStrongBinder(in, &callback);
            ndk::SpAIBinder owner(callback);
            if (s != STATUS_OK) return s;
            ndk::ScopedAStatus status = code == kRegisterForNotifications
                                                ? registerForNotifications(name, callback)
                                                : unregisterForNotifications(name, callback);
            return AParcel_writeStatusHeader(out, status.get());
        }
        case kIsDeclared: {
            if (binder_status_t s = ndk::AParcel_readString(in, &name); s != STATUS_OK) return s;
            if (binder_status_t s = AParcel_writeStatusHeader(out, ndk::ScopedAStatus::ok().get());
                s != STATUS_OK) {
                return s;
            }
            return AParcel_writeBool(out, isDeclared(name));
        }
        case kGetDeclaredInstances: {
            if (binder_status_t s = ndk::AParcel_readString(in, &name); s != STATUS_OK) return s;
            if (binder_status_t s = AParcel_writeStatusHeader(out, ndk::ScopedAStatus::ok().get());
                s != STATUS_OK) {
                return s;
            }
            return writeStrings(out, mManifest.instancesOf(name));
        }
        case kUpdatableViaApex:
        case kGetConnectionInfo: {
            if (binder_status_t s = ndk::AParcel_readString(in, &name); s != STATUS_OK) return s;
            if (binder_status_t s = AParcel_writeStatusHeader(out, ndk::ScopedAStatus::ok().get());
                s != STATUS_OK) {
                return s;
            }
            // No APEX here and no RPC services: a null string or a null parcelable.
            return code == kUpdatableViaApex ? AParcel_writeString(out, nullptr, -1)
                                             : AParcel_writeInt32(out, 0);
        }
        case kGetUpdatableNames: {
            if (binder_status_t s = ndk::AParcel_readString(in, &name); s != STATUS_OK) return s;
            if (binder_status_t s = AParcel_writeStatusHeader(out, ndk::ScopedAStatus::ok().get());
                s != STATUS_OK) {
                return s;
            }
            return writeStrings(out, {});
        }
        case kRegisterClientCallback:
        case kTryUnregisterService:
        case kGetServiceDebugInfo:
            // Lazy services and debug listings are not supported by this manager.
            return AParcel_writeStatusHeader(
                    out, error(EX_UNSUPPORTED_OPERATION, "not supported on this host").get());
        default:
            return STATUS_UNKNOWN_TRANSACTION;
    }
}
