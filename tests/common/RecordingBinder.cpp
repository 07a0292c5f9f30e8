#include "RecordingBinder.h"

#include <map>
#include <string>

#include "Wire.h"

namespace tps::test {

namespace {

void* passThrough(void* args) {
    return args;
}

void keep(void*) {}

// Class objects live for the process; one per descriptor.
const AIBinder_Class* classFor(const char* descriptor, AIBinder_Class_onTransact onTransact) {
    static std::mutex lock;
    // Never destroyed, like the class objects it points to.
    static auto* const classes = new std::map<std::string, AIBinder_Class*>();  // guarded by lock
    std::lock_guard<std::mutex> guard(lock);
    AIBinder_Class*& clazz = (*classes)[descriptor];
    if (clazz == nullptr) clazz = AIBinder_Class_define(descriptor, passThrough, keep, onTransact);
    return clazz;
}

}  // namespace

RecordingBinder::RecordingBinder(const char* descriptor, Handler handler)
    : mHandler(std::move(handler)), mBinder(AIBinder_new(classFor(descriptor, onTransact), this)) {}

std::vector<RecordingBinder::Request> RecordingBinder::requests() const {
    std::lock_guard<std::mutex> lock(mLock);
    return mRequests;
}

size_t RecordingBinder::countOf(transaction_code_t code) const {
    std::lock_guard<std::mutex> lock(mLock);
    size_t count = 0;
    for (const Request& request : mRequests) count += request.code == code ? 1 : 0;
    return count;
}

binder_status_t RecordingBinder::onTransact(AIBinder* binder, transaction_code_t code,
                                            const AParcel* request, AParcel* reply) {
    auto* self = static_cast<RecordingBinder*>(AIBinder_getUserData(binder));
    {
        std::lock_guard<std::mutex> lock(self->mLock);
        self->mRequests.push_back({code, parcelBytes(request)});
    }
    return self->mHandler(code, request, reply);
}

}  // namespace tps::test
