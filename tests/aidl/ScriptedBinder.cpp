#include "ScriptedBinder.h"

#include <map>
#include <string>

#include "Wire.h"

namespace aidl::vendor::tavix::tps::test {

namespace {

void* passThrough(void* args) {
    return args;
}

void keep(void*) {}

// Class objects live for the process, so one per descriptor is enough.
const AIBinder_Class* classFor(const char* descriptor, AIBinder_Class_onTransact onTransact) {
    static std::mutex lock;
    static std::map<std::string, AIBinder_Class*> classes;  // guarded by lock
    std::lock_guard<std::mutex> guard(lock);
    AIBinder_Class*& clazz = classes[descriptor];
    if (clazz == nullptr) clazz = AIBinder_Class_define(descriptor, passThrough, keep, onTransact);
    return clazz;
}

}  // namespace

ScriptedBinder::ScriptedBinder(const char* descriptor, Handler handler)
    : mHandler(std::move(handler)), mBinder(AIBinder_new(classFor(descriptor, onTransact), this)) {}

// The binder's user data points here, so no proxy may outlive this object.
ScriptedBinder::~ScriptedBinder() = default;

std::vector<ScriptedBinder::Request> ScriptedBinder::requests() const {
    std::lock_guard<std::mutex> lock(mLock);
    return mRequests;
}

size_t ScriptedBinder::countOf(transaction_code_t code) const {
    std::lock_guard<std::mutex> lock(mLock);
    size_t count = 0;
    for (const Request& request : mRequests) count += request.code == code ? 1 : 0;
    return count;
}

binder_status_t ScriptedBinder::onTransact(AIBinder* binder, transaction_code_t code,
                                           const AParcel* request, AParcel* reply) {
    auto* self = static_cast<ScriptedBinder*>(AIBinder_getUserData(binder));
    {
        std::lock_guard<std::mutex> lock(self->mLock);
        self->mRequests.push_back({code, parcelBytes(request)});
    }
    return self->mHandler(code, request, reply);
}

}  // namespace aidl::vendor::tavix::tps::test
