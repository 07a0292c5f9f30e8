#include "ABBinder.h"

#include <android/binder_ibinder_platform.h>
#include <sched.h>
#include <unistd.h>

#include <optional>
#include <string>
#include <vector>

#include "AIBinderClass.h"
#include "AStatusImpl.h"
#include "BinderLog.h"
#include "Parcel.h"
#include "ThreadState.h"
#include "Unicode.h"

namespace abinder {

namespace {

constexpr uid_t kShellUid = 2000;
constexpr const char16_t kResultReceiverDescriptor[] = u"com.android.internal.os.IResultReceiver";

// Reports a shell command's result to the caller's result receiver (one oneway call).
void sendShellResult(AIBinder* receiver, binder_status_t result) {
    AParcel data(receiver);
    if (data.writeInterfaceToken(kResultReceiverDescriptor) != STATUS_OK) return;
    if (data.writeInt32(result) != STATUS_OK) return;
    AParcel reply(receiver);
    (void)receiver->transact(FIRST_CALL_TRANSACTION, data, &reply, FLAG_ONEWAY);
}

}  // namespace

ABBinder::ABBinder(const AIBinder_Class* clazz, void* userData)
    : AIBinder(clazz), mUserData(userData) {}

ABBinder::~ABBinder() {
    getClass()->onDestroy(mUserData);
    if (mExtension != nullptr) mExtension->refs()->decStrong();
}

std::u16string ABBinder::interfaceDescriptor() {
    return getClass()->descriptor16();
}

binder_status_t ABBinder::transact(transaction_code_t code, const AParcel& data, AParcel* reply,
                                   binder_flags_t flags) {
    // Handlers always get a reply to write into, even for oneway calls.
    std::optional<AParcel> scratch;
    if (reply == nullptr) reply = &scratch.emplace(this);

    data.setDataPosition(0);
    if ((flags & FLAG_CLEAR_BUF) != 0) reply->markSensitive();

    binder_status_t status;
    switch (code) {
        case kPingTransaction:
            status = STATUS_OK;
            break;
        case kExtensionTransaction: {
            AIBinder* ext = extension();
            status = reply->writeStrongBinder(ext);
            if (ext != nullptr) ext->refs()->decStrong();
            break;
        }
        case kDebugPidTransaction:
            status = reply->writeInt32(getpid());
            break;
        default:
            status = onTransact(code, data, reply, flags);
            break;
    }
    reply->setDataPosition(0);
    return status;
}

binder_status_t ABBinder::onTransact(transaction_code_t code, const AParcel& data, AParcel* reply,
                                     binder_flags_t /*flags*/) {
    const AIBinder_Class* clazz = getClass();
    if (isUserCommand(code)) {
        if (clazz->writeHeader && !checkInterface(data)) return STATUS_BAD_TYPE;
        return pruneStatusT(clazz->onTransact(this, code, &data, reply));
    }

    if (code == kShellCommandTransaction && clazz->handleShellCommand != nullptr) {
        const uid_t uid = ThreadState::self().callingUid;
        if (uid != 0 && uid != kShellUid) return STATUS_PERMISSION_DENIED;
        int fds[3] = {-1, -1, -1};
        for (int& fd : fds) {
            if (binder_status_t status = data.readFileDescriptor(&fd); status != STATUS_OK) {
                return status;
            }
        }
        int32_t argc = 0;
        if (binder_status_t status = data.readInt32(&argc); status != STATUS_OK) return status;
        if (argc < 0 || static_cast<size_t>(argc) > data.dataAvail()) return STATUS_BAD_VALUE;
        std::vector<std::string> args;
        for (int32_t i = 0; i < argc; i++) {
            size_t len = 0;
            const char16_t* arg = data.readString16Inplace(&len);
            args.push_back(arg != nullptr ? utf16ToUtf8String(std::u16string_view(arg, len))
                                          : std::string());
        }
        std::vector<const char*> argv;
        for (const std::string& arg : args) argv.push_back(arg.c_str());
        AIBinder* shellCallback = nullptr;
        if (data.readStrongBinder(&shellCallback) == STATUS_OK && shellCallback != nullptr) {
            shellCallback->refs()->decStrong();
        }
        AIBinder* resultReceiver = nullptr;
        (void)data.readStrongBinder(&resultReceiver);
        const binder_status_t status = clazz->handleShellCommand(
                this, fds[0], fds[1], fds[2], argv.data(), static_cast<uint32_t>(argv.size()));
        if (resultReceiver != nullptr) {
            sendShellResult(resultReceiver, status);
            resultReceiver->refs()->decStrong();
        }
        return status;
    }

    switch (code) {
        case kInterfaceTransaction: {
            const std::u16string& descriptor = clazz->descriptor16();
            return reply->writeString16(descriptor.data(), descriptor.size());
        }
        case kDumpTransaction: {
            int fd = -1;
            if (binder_status_t status = data.readFileDescriptor(&fd); status != STATUS_OK) {
                return status;
            }
            int32_t argc = 0;
            if (binder_status_t status = data.readInt32(&argc); status != STATUS_OK) {
                return status;
            }
            std::vector<std::string> args;
            for (int32_t i = 0; i < argc && data.dataAvail() > 0; i++) {
                size_t len = 0;
                const char16_t* arg = data.readString16Inplace(&len);
                args.push_back(arg != nullptr ? utf16ToUtf8String(std::u16string_view(arg, len))
                                              : std::string());
            }
            std::vector<const char*> argv;
            for (const std::string& arg : args) argv.push_back(arg.c_str());
            return dump(fd, argv.data(), static_cast<uint32_t>(argv.size()));
        }
        default:
            return STATUS_UNKNOWN_TRANSACTION;
    }
}

bool ABBinder::checkInterface(const AParcel& data) const {
    return data.enforceInterface(getClass()->descriptor16());
}

binder_status_t ABBinder::dump(int fd, const char** args, uint32_t numArgs) {
    AIBinder_onDump onDump = getClass()->onDump;
    if (onDump == nullptr) return STATUS_OK;
    if (numArgs > static_cast<uint32_t>(INT32_MAX)) return STATUS_BAD_VALUE;
    return pruneStatusT(onDump(this, fd, args, numArgs));
}

void ABBinder::setMinSchedulerPolicy(int policy, int priority) {
    if (mParceled.load(std::memory_order_relaxed)) {
        fatal("setMinSchedulerPolicy() should not be called after a binder object is "
              "parceled/sent to another process");
    }
    switch (policy) {
        case SCHED_OTHER:
            if (priority < -20 || priority > 19) {
                fatal("Invalid priority for SCHED_NORMAL: %d", priority);
            }
            break;
        case SCHED_FIFO:
        case SCHED_RR:
            if (priority < 1 || priority > 99) {
                fatal("Invalid priority for sched %d: %d", policy, priority);
            }
            break;
        default:
            fatal("Unrecognized scheduling policy: %d", policy);
    }
    mSchedPolicy.store(policy, std::memory_order_relaxed);
    mSchedPriority.store(priority, std::memory_order_relaxed);
    mHasSchedPolicy.store(policy != 0 || priority != 0, std::memory_order_relaxed);
}

void ABBinder::setInheritRt(bool inheritRt) {
    if (mParceled.load(std::memory_order_relaxed)) {
        fatal("setInheritRt() should not be called after a binder object is parceled/sent to "
              "another process");
    }
    mInheritRt.store(inheritRt, std::memory_order_relaxed);
}

void ABBinder::setRequestingSid(bool requestingSid) {
    if (mParceled.load(std::memory_order_relaxed)) {
        fatal("setRequestingSid() should not be called after a binder object is parceled/sent "
              "to another process");
    }
    mRequestingSid.store(requestingSid, std::memory_order_relaxed);
}

uint32_t ABBinder::objectFlags() const {
    uint32_t schedBits = kDefaultSchedBits;
    if (mHasSchedPolicy.load(std::memory_order_relaxed)) {
        const uint32_t policy = static_cast<uint32_t>(minSchedulerPolicy());
        const uint32_t priority = static_cast<uint32_t>(minSchedulerPriority());
        schedBits = (priority & FLAT_BINDER_FLAG_PRIORITY_MASK) |
                    ((policy & 3) << kFlagSchedPolicyShift);
    }
    uint32_t flags = schedBits | FLAT_BINDER_FLAG_ACCEPTS_FDS;
    if (requestingSid()) flags |= FLAT_BINDER_FLAG_TXN_SECURITY_CTX;
    if (inheritRt()) flags |= kFlagInheritRt;
    return flags;
}

void ABBinder::setExtension(AIBinder* ext) {
    if (ext != nullptr) ext->refs()->incStrong();
    AIBinder* old;
    {
        std::lock_guard<std::mutex> lock(mExtensionLock);
        old = mExtension;
        mExtension = ext;
    }
    if (old != nullptr) old->refs()->decStrong();
}

AIBinder* ABBinder::extension() {
    std::lock_guard<std::mutex> lock(mExtensionLock);
    if (mExtension != nullptr) mExtension->refs()->incStrong();
    return mExtension;
}

}  // namespace abinder
