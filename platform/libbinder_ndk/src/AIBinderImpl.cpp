#include "AIBinderImpl.h"

#include "AIBinderClass.h"
#include "BinderLog.h"
#include "Unicode.h"

AIBinder_Class::AIBinder_Class(const char* interfaceDescriptor, AIBinder_Class_onCreate onCreate,
                               AIBinder_Class_onDestroy onDestroy,
                               AIBinder_Class_onTransact onTransact)
    : onCreate(onCreate),
      onDestroy(onDestroy),
      onTransact(onTransact),
      mDescriptor(interfaceDescriptor),
      mDescriptor16(abinder::utf8ToUtf16String(interfaceDescriptor)) {}

AIBinder::AIBinder(const AIBinder_Class* clazz)
    : mClazz(clazz), mRefs(new abinder::RefCounts(this)) {}

AIBinder::~AIBinder() = default;

bool AIBinder::associateClass(const AIBinder_Class* clazz) {
    if (clazz == nullptr) return false;

    // Asked before taking the lock: for a proxy this is a remote call.
    const std::u16string descriptor = interfaceDescriptor();

    std::lock_guard<std::mutex> lock(mClazzLock);
    const AIBinder_Class* current = getClass();
    if (current == clazz) return true;

    if (current != nullptr && asABpBinder() == nullptr) {
        if (clazz->descriptor16() == current->descriptor16()) {
            BINDER_LOGE(
                    "associateClass: Class descriptors '%s' match during associateClass, but "
                    "they are different class objects (%p vs %p). Class descriptor "
                    "collision?",
                    current->descriptor().c_str(), clazz, current);
        } else {
            BINDER_LOGE(
                    "associateClass: Class cannot be associated on object which already has "
                    "a class. Trying to associate to '%s' but already set to '%s'.",
                    clazz->descriptor().c_str(), current->descriptor().c_str());
        }
        return false;
    }

    if (descriptor != clazz->descriptor16()) {
        const std::string actual = abinder::utf16ToUtf8String(descriptor);
        if (isAlive()) {
            BINDER_LOGE(
                    "associateClass: Expecting binder to have class '%s' but descriptor is "
                    "actually '%s'.",
                    clazz->descriptor().c_str(), actual.c_str());
        } else {
            BINDER_LOGE(
                    "associateClass: Cannot associate class '%s' to dead binder with cached "
                    "descriptor '%s'.",
                    clazz->descriptor().c_str(), actual.c_str());
        }
        return false;
    }

    // A proxy keeps the first class it was associated with as its canonical one.
    if (current == nullptr) mClazz.store(clazz, std::memory_order_release);
    return true;
}
