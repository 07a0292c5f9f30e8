#pragma once

#include <android/binder_auto_utils.h>
#include <android/binder_ibinder.h>
#include <android/binder_shell.h>
#include <assert.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <new>
#include <string>
#include <string_view>
#include <type_traits>

namespace ndk {

// Base of objects owned through std::shared_ptr that need to hand out new owners of themselves
// from a raw `this` (binder user data does). Create them with SharedRefBase::make only.
class SharedRefBase {
public:
    SharedRefBase() {}
    virtual ~SharedRefBase() {
        std::call_once(mFlagThis, []() {
            fprintf(stderr, "SharedRefBase: no ref created during lifetime\n");
            abort();
        });
        if (!mThis.expired()) {
            fprintf(stderr, "SharedRefBase: destroyed while still owned\n");
            abort();
        }
    }

    // The first call creates the one owning std::shared_ptr; later calls share it.
    std::shared_ptr<SharedRefBase> ref() {
        std::shared_ptr<SharedRefBase> thiz = mThis.lock();
        std::call_once(mFlagThis, [&]() { mThis = thiz = std::shared_ptr<SharedRefBase>(this); });
        return thiz;
    }

    std::shared_ptr<const SharedRefBase> ref() const {
        std::shared_ptr<const SharedRefBase> thiz = mThis.lock();
        std::call_once(mFlagThis, [&]() {
            std::shared_ptr<SharedRefBase> owner(const_cast<SharedRefBase*>(this));
            mThis = owner;
            thiz = owner;
        });
        return thiz;
    }

    template <typename CHILD>
    std::shared_ptr<CHILD> ref() {
        return std::static_pointer_cast<CHILD>(ref());
    }

    template <typename CHILD>
    std::shared_ptr<const CHILD> ref() const {
        return std::static_pointer_cast<const CHILD>(ref());
    }

    template <class T, class... Args>
    static std::shared_ptr<T> make(Args&&... args) {
        T* t = new T(std::forward<Args>(args)...);
        return t->template ref<T>();
    }

    static void operator delete(void* p) { ::operator delete(p); }

private:
    // Heap creation goes through make() so that exactly one owner group exists.
    static void* operator new(size_t s) { return ::operator new(s); }

    mutable std::once_flag mFlagThis;
    mutable std::weak_ptr<SharedRefBase> mThis;
};

// Base of every interface: a local implementation (BnCInterface) or a proxy (BpCInterface).
class ICInterface : public SharedRefBase {
public:
    ICInterface() {}
    virtual ~ICInterface() {}

    virtual SpAIBinder asBinder() = 0;
    virtual bool isRemote() = 0;

    virtual binder_status_t dump(int /*fd*/, const char** /*args*/, uint32_t /*numArgs*/) {
        return STATUS_OK;
    }

    virtual binder_status_t handleShellCommand(int /*in*/, int /*out*/, int /*err*/,
                                               const char** /*argv*/, uint32_t /*argc*/) {
        return STATUS_OK;
    }

    // The class whose user data is an ICInterfaceData for the created binder.
    static inline AIBinder_Class* defineClass(const char* interfaceDescriptor,
                                              AIBinder_Class_onTransact onTransact);

    // The local object behind binder, or null for proxies and foreign binders.
    static inline std::shared_ptr<ICInterface> asInterface(AIBinder* binder);

private:
    class ICInterfaceData {
    public:
        std::shared_ptr<ICInterface> interface;

        static inline std::shared_ptr<ICInterface> getInterface(AIBinder* binder);

        static inline void* onCreate(void* args);
        static inline void onDestroy(void* userData);
        static inline binder_status_t onDump(AIBinder* binder, int fd, const char** args,
                                             uint32_t numArgs);
        static inline binder_status_t handleShellCommand(AIBinder* binder, int in, int out, int err,
                                                         const char** argv, uint32_t argc);
    };
};

// Local implementation side. The object keeps only a weak reference to its binder, so the binder
// lives while someone holds it and a fresh one is created on demand afterwards.
template <typename INTERFACE>
class BnCInterface : public INTERFACE {
public:
    BnCInterface() {}
    virtual ~BnCInterface() {}

    SpAIBinder asBinder() override final;

    bool isRemote() override final { return false; }

    static std::string makeServiceName(std::string_view instance) {
        return INTERFACE::descriptor + ("/" + std::string(instance));
    }

protected:
    // Creates a new binder whose user data refers to this object.
    virtual SpAIBinder createBinder() = 0;

private:
    std::mutex mMutex;  // guards mWeakBinder
    ScopedAIBinder_Weak mWeakBinder;
};

// Proxy side: holds the remote binder strongly.
template <typename INTERFACE>
class BpCInterface : public INTERFACE {
public:
    explicit BpCInterface(const SpAIBinder& binder) : mBinder(binder) {}
    virtual ~BpCInterface() {}

    SpAIBinder asBinder() override final { return mBinder; }

    bool isRemote() override final { return AIBinder_isRemote(mBinder.get()); }

    binder_status_t dump(int fd, const char** args, uint32_t numArgs) override {
        return AIBinder_dump(asBinder().get(), fd, args, numArgs);
    }

private:
    SpAIBinder mBinder;
};

AIBinder_Class* ICInterface::defineClass(const char* interfaceDescriptor,
                                         AIBinder_Class_onTransact onTransact) {
    AIBinder_Class* clazz = AIBinder_Class_define(interfaceDescriptor, ICInterfaceData::onCreate,
                                                  ICInterfaceData::onDestroy, onTransact);
    if (clazz == nullptr) return nullptr;

    AIBinder_Class_setOnDump(clazz, ICInterfaceData::onDump);
    AIBinder_Class_setHandleShellCommand(clazz, ICInterfaceData::handleShellCommand);
    return clazz;
}

std::shared_ptr<ICInterface> ICInterface::asInterface(AIBinder* binder) {
    return ICInterfaceData::getInterface(binder);
}

std::shared_ptr<ICInterface> ICInterface::ICInterfaceData::getInterface(AIBinder* binder) {
    if (binder == nullptr) return nullptr;

    void* userData = AIBinder_getUserData(binder);
    if (userData == nullptr) return nullptr;

    return static_cast<ICInterfaceData*>(userData)->interface;
}

void* ICInterface::ICInterfaceData::onCreate(void* args) {
    std::shared_ptr<ICInterface> interface = static_cast<ICInterface*>(args)->ref<ICInterface>();
    ICInterfaceData* data = new ICInterfaceData{interface};
    return static_cast<void*>(data);
}

void ICInterface::ICInterfaceData::onDestroy(void* userData) {
    delete static_cast<ICInterfaceData*>(userData);
}

binder_status_t ICInterface::ICInterfaceData::onDump(AIBinder* binder, int fd, const char** args,
                                                     uint32_t numArgs) {
    std::shared_ptr<ICInterface> interface = getInterface(binder);
    if (interface != nullptr) return interface->dump(fd, args, numArgs);
    return STATUS_DEAD_OBJECT;
}

binder_status_t ICInterface::ICInterfaceData::handleShellCommand(AIBinder* binder, int in, int out,
                                                                 int err, const char** argv,
                                                                 uint32_t argc) {
    std::shared_ptr<ICInterface> interface = getInterface(binder);
    if (interface != nullptr) return interface->handleShellCommand(in, out, err, argv, argc);
    return STATUS_DEAD_OBJECT;
}

template <typename INTERFACE>
SpAIBinder BnCInterface<INTERFACE>::asBinder() {
    std::lock_guard<std::mutex> l(mMutex);

    SpAIBinder binder;
    if (mWeakBinder.get() != nullptr) {
        binder.set(AIBinder_Weak_promote(mWeakBinder.get()));
    }
    if (binder.get() == nullptr) {
        binder = createBinder();
        mWeakBinder.set(AIBinder_Weak_new(binder.get()));
    }
    return binder;
}

}  // namespace ndk
