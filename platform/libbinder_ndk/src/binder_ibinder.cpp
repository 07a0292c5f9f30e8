#include <android/binder_ibinder.h>
#include <android/binder_ibinder_platform.h>
#include <android/binder_shell.h>
#include <android/binder_stability.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "ABBinder.h"
#include "ABpBinder.h"
#include "AIBinderClass.h"
#include "AStatusImpl.h"
#include "BinderLog.h"
#include "DeathRecipient.h"
#include "Parcel.h"
#include "ThreadState.h"
#include "Unicode.h"

using namespace abinder;

struct AIBinder_Weak {
    AIBinder* binder;  // address only; may be dead
    RefCounts* refs;   // one weak reference
};

// ---- classes ------------------------------------------------------------------------------

AIBinder_Class* AIBinder_Class_define(const char* interfaceDescriptor,
                                      AIBinder_Class_onCreate onCreate,
                                      AIBinder_Class_onDestroy onDestroy,
                                      AIBinder_Class_onTransact onTransact) {
    if (interfaceDescriptor == nullptr || onCreate == nullptr || onDestroy == nullptr ||
        onTransact == nullptr) {
        return nullptr;
    }
    return new AIBinder_Class(interfaceDescriptor, onCreate, onDestroy, onTransact);
}

void AIBinder_Class_setOnDump(AIBinder_Class* clazz, AIBinder_onDump onDump) {
    if (clazz == nullptr) fatal("setOnDump requires non-null clazz");
    clazz->onDump = onDump;
}

void AIBinder_Class_setHandleShellCommand(AIBinder_Class* clazz,
                                          AIBinder_handleShellCommand handleShellCommand) {
    if (clazz == nullptr) fatal("setHandleShellCommand requires non-null clazz");
    clazz->handleShellCommand = handleShellCommand;
}

void AIBinder_Class_disableInterfaceTokenHeader(AIBinder_Class* clazz) {
    if (clazz == nullptr) fatal("disableInterfaceTokenHeader requires non-null clazz");
    clazz->writeHeader = false;
}

const char* AIBinder_Class_getDescriptor(const AIBinder_Class* clazz) {
    if (clazz == nullptr) fatal("getDescriptor requires non-null clazz");
    return clazz->descriptor().c_str();
}

// ---- objects ------------------------------------------------------------------------------

AIBinder* AIBinder_new(const AIBinder_Class* clazz, void* args) {
    if (clazz == nullptr) {
        BINDER_LOGE("AIBinder_new: Must provide class to construct local binder.");
        return nullptr;
    }
    void* userData = clazz->onCreate(args);
    return new ABBinder(clazz, userData);
}

bool AIBinder_isRemote(const AIBinder* binder) {
    return binder != nullptr && binder->isRemote();
}

bool AIBinder_isAlive(const AIBinder* binder) {
    return binder != nullptr && binder->isAlive();
}

binder_status_t AIBinder_ping(AIBinder* binder) {
    if (binder == nullptr) return STATUS_UNEXPECTED_NULL;
    AParcel data(binder);
    AParcel reply(binder);
    return pruneStatusT(binder->transact(kPingTransaction, data, &reply, 0));
}

binder_status_t AIBinder_dump(AIBinder* binder, int fd, const char** args, uint32_t numArgs) {
    if (binder == nullptr) return STATUS_UNEXPECTED_NULL;
    if (ABBinder* local = binder->asABBinder(); local != nullptr) {
        return local->dump(fd, args, numArgs);
    }
    if (numArgs > static_cast<uint32_t>(INT32_MAX)) return STATUS_BAD_VALUE;
    AParcel data(binder);
    binder_status_t status = data.writeFileDescriptor(fd, false);
    if (status == STATUS_OK) status = data.writeInt32(static_cast<int32_t>(numArgs));
    for (uint32_t i = 0; status == STATUS_OK && i < numArgs; i++) {
        const std::u16string arg = utf8ToUtf16String(args[i] != nullptr ? args[i] : "");
        status = data.writeString16(arg.data(), arg.size());
    }
    if (status != STATUS_OK) return pruneStatusT(status);
    AParcel reply(binder);
    return pruneStatusT(binder->transact(kDumpTransaction, data, &reply, 0));
}

binder_status_t AIBinder_linkToDeath(AIBinder* binder, AIBinder_DeathRecipient* recipient,
                                     void* cookie) {
    if (binder == nullptr || recipient == nullptr) return STATUS_UNEXPECTED_NULL;
    return pruneStatusT(recipient->linkToDeath(binder, cookie));
}

binder_status_t AIBinder_unlinkToDeath(AIBinder* binder, AIBinder_DeathRecipient* recipient,
                                       void* cookie) {
    if (binder == nullptr || recipient == nullptr) return STATUS_UNEXPECTED_NULL;
    return pruneStatusT(recipient->unlinkToDeath(binder, cookie));
}

uid_t AIBinder_getCallingUid(void) {
    return ThreadState::self().callingUid;
}

pid_t AIBinder_getCallingPid(void) {
    return ThreadState::self().callingPid;
}

const char* AIBinder_getCallingSid(void) {
    return ThreadState::self().callingSid;
}

bool AIBinder_isHandlingTransaction(void) {
    return ThreadState::self().handlingTransaction;
}

void AIBinder_incStrong(AIBinder* binder) {
    if (binder == nullptr) return;
    binder->refs()->incStrong();
}

void AIBinder_decStrong(AIBinder* binder) {
    if (binder == nullptr) {
        BINDER_LOGE("AIBinder_decStrong: on null binder");
        return;
    }
    binder->refs()->decStrong();
}

int32_t AIBinder_debugGetRefCount(AIBinder* binder) {
    if (binder == nullptr) return -1;
    return binder->refs()->strongCount();
}

bool AIBinder_associateClass(AIBinder* binder, const AIBinder_Class* clazz) {
    if (binder == nullptr) return false;
    return binder->associateClass(clazz);
}

const AIBinder_Class* AIBinder_getClass(AIBinder* binder) {
    if (binder == nullptr) return nullptr;
    return binder->getClass();
}

void* AIBinder_getUserData(AIBinder* binder) {
    if (binder == nullptr) return nullptr;
    ABBinder* local = binder->asABBinder();
    return local != nullptr ? local->userData() : nullptr;
}

// ---- transactions -------------------------------------------------------------------------

binder_status_t AIBinder_prepareTransaction(AIBinder* binder, AParcel** in) {
    if (binder == nullptr || in == nullptr) return STATUS_UNEXPECTED_NULL;
    const AIBinder_Class* clazz = binder->getClass();
    if (clazz == nullptr) {
        BINDER_LOGE(
                "AIBinder_prepareTransaction: Class must be defined for a remote binder "
                "transaction. See AIBinder_associateClass.");
        return STATUS_INVALID_OPERATION;
    }
    *in = new AParcel(binder);
    binder_status_t status = STATUS_OK;
    if (clazz->writeHeader) status = (*in)->writeInterfaceToken(clazz->descriptor16());
    status = pruneStatusT(status);
    if (status != STATUS_OK) {
        delete *in;
        *in = nullptr;
    }
    return status;
}

binder_status_t AIBinder_transact(AIBinder* binder, transaction_code_t code, AParcel** in,
                                  AParcel** out, binder_flags_t flags) {
    if (in == nullptr) {
        BINDER_LOGE("AIBinder_transact: requires non-null in parameter");
        return STATUS_UNEXPECTED_NULL;
    }
    // The request is consumed whatever happens.
    std::unique_ptr<AParcel> request(*in);
    *in = nullptr;

    if (!isUserCommand(code)) {
        BINDER_LOGE(
                "AIBinder_transact: Only user-defined transactions can be made from the "
                "NDK, but requested: %u",
                code);
        return STATUS_UNKNOWN_TRANSACTION;
    }
    constexpr binder_flags_t kAllFlags = FLAG_PRIVATE_VENDOR | FLAG_ONEWAY | FLAG_CLEAR_BUF;
    if ((flags & ~kAllFlags) != 0) {
        BINDER_LOGE("AIBinder_transact: Unrecognized flags sent: %u", flags);
        return STATUS_BAD_VALUE;
    }
    if (binder == nullptr || request == nullptr || out == nullptr) {
        BINDER_LOGE("AIBinder_transact: requires non-null parameters binder, in, and out.");
        return STATUS_UNEXPECTED_NULL;
    }
    if (request->boundBinder() != binder) {
        BINDER_LOGE(
                "AIBinder_transact: parcel is associated with binder object %p but called "
                "with %p",
                request->boundBinder(), binder);
        return STATUS_BAD_VALUE;
    }

    *out = new AParcel(binder);
    const binder_status_t status = pruneStatusT(binder->transact(code, *request, *out, flags));
    if (status != STATUS_OK) {
        delete *out;
        *out = nullptr;
    }
    return status;
}

// ---- weak references ----------------------------------------------------------------------

AIBinder_Weak* AIBinder_Weak_new(AIBinder* binder) {
    if (binder == nullptr) return nullptr;
    binder->refs()->incWeak();
    return new AIBinder_Weak{binder, binder->refs()};
}

void AIBinder_Weak_delete(AIBinder_Weak* weakBinder) {
    if (weakBinder == nullptr) return;
    weakBinder->refs->decWeak();
    delete weakBinder;
}

AIBinder* AIBinder_Weak_promote(AIBinder_Weak* weakBinder) {
    if (weakBinder == nullptr) return nullptr;
    if (!weakBinder->refs->attemptIncStrong()) return nullptr;
    return weakBinder->binder;
}

AIBinder_Weak* AIBinder_Weak_clone(const AIBinder_Weak* weak) {
    if (weak == nullptr) return nullptr;
    weak->refs->incWeak();
    return new AIBinder_Weak{weak->binder, weak->refs};
}

bool AIBinder_lt(const AIBinder* lhs, const AIBinder* rhs) {
    return std::less<const AIBinder*>()(lhs, rhs);
}

bool AIBinder_Weak_lt(const AIBinder_Weak* lhs, const AIBinder_Weak* rhs) {
    if (lhs == nullptr || rhs == nullptr) fatal("AIBinder_Weak_lt requires non-null weak refs");
    if (lhs->binder == rhs->binder) return std::less<const RefCounts*>()(lhs->refs, rhs->refs);
    return std::less<const AIBinder*>()(lhs->binder, rhs->binder);
}

// ---- death recipients ---------------------------------------------------------------------

AIBinder_DeathRecipient* AIBinder_DeathRecipient_new(
        AIBinder_DeathRecipient_onBinderDied onBinderDied) {
    if (onBinderDied == nullptr) {
        BINDER_LOGE("AIBinder_DeathRecipient_new: requires non-null onBinderDied parameter.");
        return nullptr;
    }
    return new AIBinder_DeathRecipient(onBinderDied);
}

void AIBinder_DeathRecipient_setOnUnlinked(AIBinder_DeathRecipient* recipient,
                                           AIBinder_DeathRecipient_onBinderUnlinked onUnlinked) {
    if (recipient == nullptr) fatal("setOnUnlinked requires non-null recipient");
    recipient->setOnUnlinked(onUnlinked);
}

void AIBinder_DeathRecipient_delete(AIBinder_DeathRecipient* recipient) {
    delete recipient;
}

// ---- local-object properties --------------------------------------------------------------

namespace {

ABBinder* requireLocal(AIBinder* binder, const char* what) {
    ABBinder* local = binder != nullptr ? binder->asABBinder() : nullptr;
    if (local == nullptr) fatal("%s is only valid on local binders", what);
    return local;
}

}  // namespace

void AIBinder_setMinSchedulerPolicy(AIBinder* binder, int policy, int priority) {
    requireLocal(binder, "AIBinder_setMinSchedulerPolicy")->setMinSchedulerPolicy(policy, priority);
}

void AIBinder_setInheritRt(AIBinder* binder, bool inheritRt) {
    requireLocal(binder, "AIBinder_setInheritRt")->setInheritRt(inheritRt);
}

void AIBinder_setRequestingSid(AIBinder* binder, bool requestingSid) {
    requireLocal(binder, "AIBinder_setRequestingSid")->setRequestingSid(requestingSid);
}

binder_status_t AIBinder_getExtension(AIBinder* binder, AIBinder** outExt) {
    if (binder == nullptr || outExt == nullptr) {
        if (outExt != nullptr) *outExt = nullptr;
        return STATUS_UNEXPECTED_NULL;
    }
    if (ABBinder* local = binder->asABBinder(); local != nullptr) {
        *outExt = local->extension();
        return STATUS_OK;
    }
    AParcel data(binder);
    AParcel reply(binder);
    binder_status_t status = binder->transact(kExtensionTransaction, data, &reply, 0);
    if (status == STATUS_OK) status = reply.readStrongBinder(outExt);
    if (status != STATUS_OK) *outExt = nullptr;
    return pruneStatusT(status);
}

binder_status_t AIBinder_setExtension(AIBinder* binder, AIBinder* ext) {
    if (binder == nullptr || ext == nullptr) return STATUS_UNEXPECTED_NULL;
    ABBinder* local = binder->asABBinder();
    if (local == nullptr) return STATUS_INVALID_OPERATION;
    local->setExtension(ext);
    return STATUS_OK;
}
