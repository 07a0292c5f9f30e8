#include "LinkSeams.h"

#include <android/binder_auto_utils.h>
#include <gtest/gtest.h>

#include <map>
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

struct Seams {
    std::mutex lock;
    std::vector<TransactRecord> transacts;                             // guarded by lock
    std::map<const AIBinder_Class*, AIBinder_Class_onTransact> hooks;  // guarded by lock
};

// Classes are defined during static initialisation, possibly before this file's own dynamic
// initialisers run, so the record is created on first use and never destroyed.
Seams& seams() {
    static auto* const instance = new Seams();
    return *instance;
}

}  // namespace

std::vector<TransactRecord> takeTransactions() {
    std::lock_guard<std::mutex> lock(seams().lock);
    std::vector<TransactRecord> taken;
    taken.swap(seams().transacts);
    return taken;
}

Outcome dispatch(AIBinder* binder, transaction_code_t code,
                 const std::function<void(AParcel*)>& writeArgs) {
    AIBinder_Class_onTransact onTransact = nullptr;
    {
        std::lock_guard<std::mutex> lock(seams().lock);
        auto found = seams().hooks.find(AIBinder_getClass(binder));
        if (found != seams().hooks.end()) onTransact = found->second;
    }
    if (onTransact == nullptr) {
        ADD_FAILURE() << "no on-transact hook recorded for the binder's class";
        return {STATUS_INVALID_OPERATION, {}};
    }
    ::ndk::ScopedAParcel request(AParcel_create());
    ::ndk::ScopedAParcel reply(AParcel_create());
    writeArgs(request.get());
    AParcel_setDataPosition(request.get(), 0);
    const binder_status_t result = onTransact(binder, code, request.get(), reply.get());
    return {result, parcelBytes(reply.get())};
}

Outcome dispatch(AIBinder* binder, transaction_code_t code, const Wire& args) {
    return dispatch(binder, code, [&](AParcel* in) {
        AParcel_unmarshal(in, args.bytes().data(), args.bytes().size());
    });
}

extern "C" binder_status_t __wrap_AIBinder_transact(AIBinder* binder, transaction_code_t code,
                                                    AParcel** in, AParcel** out,
                                                    binder_flags_t flags) {
    {
        std::lock_guard<std::mutex> lock(seams().lock);
        seams().transacts.push_back({code, flags});
    }
    return __real_AIBinder_transact(binder, code, in, out, flags);
}

extern "C" AIBinder_Class* __wrap_AIBinder_Class_define(const char* descriptor,
                                                        AIBinder_Class_onCreate onCreate,
                                                        AIBinder_Class_onDestroy onDestroy,
                                                        AIBinder_Class_onTransact onTransact) {
    AIBinder_Class* clazz =
            __real_AIBinder_Class_define(descriptor, onCreate, onDestroy, onTransact);
    std::lock_guard<std::mutex> lock(seams().lock);
    if (clazz != nullptr) seams().hooks[clazz] = onTransact;
    return clazz;
}

}  // namespace aidl::vendor::tavix::tps::test
