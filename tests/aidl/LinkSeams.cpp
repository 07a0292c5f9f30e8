#include "LinkSeams.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <mutex>

extern "C" {
binder_status_t __real_AIBinder_transact(AIBinder* binder, transaction_code_t code, AParcel** in,
                                         AParcel** out, binder_flags_t flags);
AIBinder_Class* __real_AIBinder_Class_define(const char* descriptor,
                                             AIBinder_Class_onCreate onCreate,
                                             AIBinder_Class_onDestroy onDestroy,
                                             AIBinder_Class_onTransact onTransact);
}

namespace aidl::vendor::tavix::tps::test {

namespace {

std::mutex gTransactLock;
std::vector<TransactRecord> gTransacts;  // guarded by gTransactLock

struct DefinedClass {
    std::atomic<const AIBinder_Class*> clazz;
    AIBinder_Class_onTransact onTransact;
};

// Classes are defined during static initialisation, possibly before the dynamic initialisers of
// this file, so the table is constant-initialised and filled without locks: a slot is claimed
// with fetch_add and published by the store of clazz.
constexpr size_t kMaxClasses = 32;
std::array<DefinedClass, kMaxClasses> gClasses{};
std::atomic<size_t> gClassCount{0};

}  // namespace

std::vector<TransactRecord> takeTransactions() {
    std::lock_guard<std::mutex> lock(gTransactLock);
    std::vector<TransactRecord> taken;
    taken.swap(gTransacts);
    return taken;
}

AIBinder_Class_onTransact onTransactOf(const AIBinder_Class* clazz) {
    const size_t count = std::min(gClassCount.load(), kMaxClasses);
    for (size_t i = 0; i < count; ++i) {
        if (gClasses[i].clazz.load() == clazz) return gClasses[i].onTransact;
    }
    return nullptr;
}

extern "C" binder_status_t __wrap_AIBinder_transact(AIBinder* binder, transaction_code_t code,
                                                    AParcel** in, AParcel** out,
                                                    binder_flags_t flags) {
    {
        std::lock_guard<std::mutex> lock(gTransactLock);
        gTransacts.push_back({code, flags});
    }
    return __real_AIBinder_transact(binder, code, in, out, flags);
}

extern "C" AIBinder_Class* __wrap_AIBinder_Class_define(const char* descriptor,
                                                        AIBinder_Class_onCreate onCreate,
                                                        AIBinder_Class_onDestroy onDestroy,
                                                        AIBinder_Class_onTransact onTransact) {
    AIBinder_Class* clazz =
            __real_AIBinder_Class_define(descriptor, onCreate, onDestroy, onTransact);
    const size_t slot = gClassCount.fetch_add(1);
    if (clazz != nullptr && slot < kMaxClasses) {
        gClasses[slot].onTransact = onTransact;
        gClasses[slot].clazz.store(clazz);
    }
    return clazz;
}

}  // namespace aidl::vendor::tavix::tps::test
