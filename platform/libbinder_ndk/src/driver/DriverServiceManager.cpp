#include "DriverServiceManager.h"

#include <android/binder_parcel.h>
#include <android/binder_status.h>
#include <string.h>

#include <chrono>
#include <condition_variable>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "../AIBinderImpl.h"
#include "../BinderLog.h"
#include "../Parcel.h"
#include "../RefCounts.h"
#include "../Stability.h"
#include "DriverTransport.h"

namespace abinder::driver {

namespace {

// The platform's IServiceManager and IServiceCallback.
enum : transaction_code_t {
    kGetService = FIRST_CALL_TRANSACTION + 0,
    kCheckService = FIRST_CALL_TRANSACTION + 1,
    kAddService = FIRST_CALL_TRANSACTION + 2,
    kRegisterForNotifications = FIRST_CALL_TRANSACTION + 4,
    kUnregisterForNotifications = FIRST_CALL_TRANSACTION + 5,
    kIsDeclared = FIRST_CALL_TRANSACTION + 6,
    kGetDeclaredInstances = FIRST_CALL_TRANSACTION + 7,
    kOnRegistration = FIRST_CALL_TRANSACTION + 0,
};
constexpr int32_t kDumpFlagPriorityDefault = 1 << 3;
constexpr transaction_code_t kPingTransaction = 0x5F504E47;

binder_status_t noTransact(AIBinder*, transaction_code_t, const AParcel*, AParcel*) {
    return STATUS_UNKNOWN_TRANSACTION;
}

void* noCreate(void* args) {
    return args;
}

void noDestroy(void*) {}

const AIBinder_Class* managerClass() {
    static const AIBinder_Class* clazz =
            AIBinder_Class_define("android.os.IServiceManager", noCreate, noDestroy, noTransact);
    return clazz;
}

bool stringAllocator(void* data, int32_t length, char** buffer) {
    auto* str = static_cast<std::string*>(data);
    if (length < 0) return false;
    str->resize(static_cast<size_t>(length > 0 ? length - 1 : 0));
    *buffer = str->data();
    return true;
}

// Waits for IServiceCallback.onRegistration of one name. Shared by the waiting call and the
// callback binder, which the manager may call (and hold) after the wait is over.
struct Waiter {
    ~Waiter() {
        if (binder != nullptr) AIBinder_decStrong(binder);
    }
    std::mutex lock;
    std::condition_variable arrived;
    AIBinder* binder = nullptr;  // guarded by lock; a strong reference
};

void* createWaiter(void* args) {
    return new std::shared_ptr<Waiter>(*static_cast<std::shared_ptr<Waiter>*>(args));
}

void destroyWaiter(void* userData) {
    delete static_cast<std::shared_ptr<Waiter>*>(userData);
}

binder_status_t waiterTransact(AIBinder* self, transaction_code_t code, const AParcel* in,
                               AParcel*) {
    if (code != kOnRegistration) return STATUS_UNKNOWN_TRANSACTION;
    Waiter* waiter = static_cast<std::shared_ptr<Waiter>*>(AIBinder_getUserData(self))->get();
    std::string name;
    if (binder_status_t status = AParcel_readString(in, &name,
                                                    [](void* data, int32_t length, char** buffer) {
                                                        return stringAllocator(data, length,
                                                                               buffer);
                                                    });
        status != STATUS_OK) {
        return status;
    }
    AIBinder* binder = nullptr;
    if (binder_status_t status = AParcel_readStrongBinder(in, &binder); status != STATUS_OK) {
        return status;
    }
    {
        std::lock_guard<std::mutex> lock(waiter->lock);
        if (waiter->binder == nullptr) {
            waiter->binder = binder;
            binder = nullptr;
        }
        waiter->arrived.notify_all();
    }
    if (binder != nullptr) AIBinder_decStrong(binder);
    return STATUS_OK;
}

const AIBinder_Class* callbackClass() {
    static const AIBinder_Class* clazz = AIBinder_Class_define(
            "android.os.IServiceCallback", createWaiter, destroyWaiter, waiterTransact);
    return clazz;
}

binder_status_t writeName(AParcel* parcel, const char* name) {
    return AParcel_writeString(parcel, name, static_cast<int32_t>(strlen(name)));
}

// Owns one parcel for the duration of a call.
struct ParcelOwner {
    AParcel* parcel = nullptr;
    ~ParcelOwner() { AParcel_delete(parcel); }
};

binder_exception_t readException(const AParcel* reply, binder_status_t transportStatus) {
    if (transportStatus != STATUS_OK) return EX_TRANSACTION_FAILED;
    AStatus* status = nullptr;
    if (AParcel_readStatusHeader(reply, &status) != STATUS_OK) return EX_TRANSACTION_FAILED;
    const binder_exception_t exception = AStatus_getExceptionCode(status);
    AStatus_delete(status);
    return exception;
}

}  // namespace

DriverServiceManager::DriverServiceManager(DriverTransport& transport) : mTransport(transport) {}

DriverServiceManager::~DriverServiceManager() {
    if (mManager != nullptr) AIBinder_decStrong(mManager);
}

AIBinder* DriverServiceManager::manager(bool wait) {
    bool logged = false;
    for (;;) {
        {
            std::lock_guard<std::mutex> lock(mLock);
            if (mManager != nullptr) {
                AIBinder_incStrong(mManager);
                return mManager;
            }
        }
        // A reference to handle 0 can only be taken while a manager exists, so ask first.
        AParcel empty;
        AParcel reply;
        if (mTransport.transact(0, kPingTransaction, empty, &reply, 0) == STATUS_OK) {
            AIBinder* proxy = mTransport.proxyForHandle(0);
            // The manager is built with this process, as the platform treats it.
            (void)setStability(proxy, kLocalStability, false, false);
            (void)AIBinder_associateClass(proxy, managerClass());
            std::lock_guard<std::mutex> lock(mLock);
            if (mManager == nullptr) {
                mManager = proxy;
                AIBinder_incStrong(proxy);
            }
            return proxy;
        }
        if (!wait) return nullptr;
        if (!logged) {
            BINDER_LOGI("Waiting for the service manager on %s",
                        mTransport.process().device().path().c_str());
            logged = true;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
}

void DriverServiceManager::dropManager(AIBinder* manager) {
    std::lock_guard<std::mutex> lock(mLock);
    if (mManager == manager) {
        AIBinder_decStrong(mManager);
        mManager = nullptr;
    }
}

binder_status_t DriverServiceManager::lookup(uint32_t code, const char* instance,
                                             AIBinder** binder) {
    *binder = nullptr;
    AIBinder* sm = manager(false);
    if (sm == nullptr) return STATUS_DEAD_OBJECT;
    ParcelOwner in;
    ParcelOwner out;
    binder_status_t status = AIBinder_prepareTransaction(sm, &in.parcel);
    if (status == STATUS_OK) status = writeName(in.parcel, instance);
    if (status == STATUS_OK) status = AIBinder_transact(sm, code, &in.parcel, &out.parcel, 0);
    if (status == STATUS_DEAD_OBJECT) dropManager(sm);
    if (status == STATUS_OK && readException(out.parcel, status) != EX_NONE) {
        status = STATUS_FAILED_TRANSACTION;
    }
    if (status == STATUS_OK) status = AParcel_readStrongBinder(out.parcel, binder);
    AIBinder_decStrong(sm);
    return status;
}

binder_status_t DriverServiceManager::callWithBinder(uint32_t code, const char* instance,
                                                     AIBinder* binder,
                                                     binder_exception_t* exception) {
    *exception = EX_TRANSACTION_FAILED;
    AIBinder* sm = manager(true);
    ParcelOwner in;
    ParcelOwner out;
    binder_status_t status = AIBinder_prepareTransaction(sm, &in.parcel);
    if (status == STATUS_OK) status = writeName(in.parcel, instance);
    if (status == STATUS_OK) status = AParcel_writeStrongBinder(in.parcel, binder);
    if (status == STATUS_OK && code == kAddService) {
        status = AParcel_writeBool(in.parcel, false);  // allowIsolated
        if (status == STATUS_OK) status = AParcel_writeInt32(in.parcel, kDumpFlagPriorityDefault);
    }
    if (status == STATUS_OK) status = AIBinder_transact(sm, code, &in.parcel, &out.parcel, 0);
    if (status == STATUS_DEAD_OBJECT) dropManager(sm);
    *exception = readException(out.parcel, status);
    AIBinder_decStrong(sm);
    return status;
}

binder_exception_t DriverServiceManager::addService(AIBinder* binder, const char* instance) {
    binder_exception_t exception;
    (void)callWithBinder(kAddService, instance, binder, &exception);
    return exception;
}

AIBinder* DriverServiceManager::checkService(const char* instance) {
    AIBinder* binder = nullptr;
    (void)lookup(kCheckService, instance, &binder);
    return binder;
}

AIBinder* DriverServiceManager::getService(const char* instance) {
    // As the platform: poll for a few seconds.
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    for (;;) {
        AIBinder* binder = nullptr;
        if (lookup(kGetService, instance, &binder) == STATUS_OK && binder != nullptr) return binder;
        if (std::chrono::steady_clock::now() >= deadline) return nullptr;
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
}

AIBinder* DriverServiceManager::waitForService(const char* instance) {
    AIBinder* binder = nullptr;
    manager(true)->refs()->decStrong();
    if (lookup(kGetService, instance, &binder) == STATUS_OK && binder != nullptr) return binder;

    // Be told when it arrives (this needs a thread pool), and look again every second in case
    // there is none or the manager restarted.
    auto waiter = std::make_shared<Waiter>();
    AIBinder* callback = AIBinder_new(callbackClass(), &waiter);
    binder_exception_t exception = EX_NONE;
    (void)callWithBinder(kRegisterForNotifications, instance, callback, &exception);
    const bool registered = exception == EX_NONE;
    for (;;) {
        {
            std::unique_lock<std::mutex> lock(waiter->lock);
            if (waiter->arrived.wait_for(lock, std::chrono::seconds(1),
                                         [&] { return waiter->binder != nullptr; })) {
                binder = std::exchange(waiter->binder, nullptr);
                break;
            }
        }
        BINDER_LOGI(
                "Waited one second for %s (is service started? Number of threads started in the "
                "threadpool: %zu. Are binder threads started and available?)",
                instance, mTransport.process().poolThreadCount());
        if (lookup(kGetService, instance, &binder) == STATUS_OK && binder != nullptr) break;
    }
    if (registered) {
        (void)callWithBinder(kUnregisterForNotifications, instance, callback, &exception);
    }
    AIBinder_decStrong(callback);
    return binder;
}

bool DriverServiceManager::isDeclared(const char* instance) {
    AIBinder* sm = manager(false);
    if (sm == nullptr) return false;
    ParcelOwner in;
    ParcelOwner out;
    binder_status_t status = AIBinder_prepareTransaction(sm, &in.parcel);
    if (status == STATUS_OK) status = writeName(in.parcel, instance);
    if (status == STATUS_OK)
        status = AIBinder_transact(sm, kIsDeclared, &in.parcel, &out.parcel, 0);
    bool declared = false;
    if (readException(out.parcel, status) == EX_NONE) (void)AParcel_readBool(out.parcel, &declared);
    AIBinder_decStrong(sm);
    return declared;
}

void DriverServiceManager::forEachDeclaredInstance(const char* interface, void* context,
                                                   void (*callback)(const char*, void*)) {
    AIBinder* sm = manager(false);
    if (sm == nullptr) return;
    ParcelOwner in;
    ParcelOwner out;
    binder_status_t status = AIBinder_prepareTransaction(sm, &in.parcel);
    if (status == STATUS_OK) status = writeName(in.parcel, interface);
    if (status == STATUS_OK) {
        status = AIBinder_transact(sm, kGetDeclaredInstances, &in.parcel, &out.parcel, 0);
    }
    AIBinder_decStrong(sm);
    if (readException(out.parcel, status) != EX_NONE) return;
    int32_t count = 0;
    if (AParcel_readInt32(out.parcel, &count) != STATUS_OK) return;
    for (int32_t i = 0; i < count; ++i) {
        std::string instance;
        if (AParcel_readString(out.parcel, &instance,
                               [](void* data, int32_t length, char** buffer) {
                                   return stringAllocator(data, length, buffer);
                               }) != STATUS_OK) {
            return;
        }
        callback(instance.c_str(), context);
    }
}

}  // namespace abinder::driver
