#include "DriverTransport.h"

#include <string.h>
#include <unistd.h>

#include <vector>

#include "../ABBinder.h"
#include "../ABpBinder.h"
#include "../AIBinderImpl.h"
#include "../BinderLog.h"
#include "../Parcel.h"
#include "../RefCounts.h"
#include "../ThreadState.h"
#include "DriverServiceManager.h"
#include "SchedulerBoost.h"

// Referenced through the linker (see sources.cmake) so that this file, and with it the strong
// openProcessTransport below, is taken from the static library.
extern "C" int abinder_driver_transport_anchor;
int abinder_driver_transport_anchor = 0;

namespace abinder {

// The process transport is never destroyed: its loopers may be inside calls at exit.
std::shared_ptr<Transport>* gKeptProcessTransport = nullptr;

std::shared_ptr<Transport> openProcessTransport() {
    std::shared_ptr<Transport> transport = driver::DriverTransport::open();
    gKeptProcessTransport = new std::shared_ptr<Transport>(transport);
    return transport;
}

}  // namespace abinder

namespace abinder::driver {

namespace {

RefCounts* refsOf(binder_uintptr_t ptr) {
    return reinterpret_cast<RefCounts*>(static_cast<uintptr_t>(ptr));
}

OutgoingBuffer outgoing(const AParcel& parcel) {
    OutgoingBuffer out;
    out.data = parcel.data();
    out.size = parcel.dataSize();
    out.offsets = parcel.objectOffsets().data();
    out.offsetCount = parcel.objectOffsets().size();
    return out;
}

// Calls to a node that asks for the caller's security context fail outright on kernels whose
// security module cannot name the caller, so the request is dropped before it reaches the kernel.
bool stripSecurityContextRequests(const AParcel& parcel, std::vector<uint8_t>* copy) {
    bool found = false;
    for (binder_size_t offset : parcel.objectOffsets()) {
        if (offset + sizeof(flat_binder_object) > parcel.dataSize()) continue;
        flat_binder_object object;
        memcpy(&object, parcel.data() + offset, sizeof(object));
        if (object.hdr.type != BINDER_TYPE_BINDER ||
            (object.flags & FLAT_BINDER_FLAG_TXN_SECURITY_CTX) == 0) {
            continue;
        }
        if (!found) copy->assign(parcel.data(), parcel.data() + parcel.dataSize());
        found = true;
        object.flags &= ~static_cast<uint32_t>(FLAT_BINDER_FLAG_TXN_SECURITY_CTX);
        memcpy(copy->data() + offset, &object, sizeof(object));
    }
    return found;
}

}  // namespace

std::shared_ptr<DriverTransport> DriverTransport::open(const std::string& path) {
    std::shared_ptr<DriverTransport> transport(new DriverTransport());
    transport->mProcess = DriverProcess::open(transport.get(), path);
    if (transport->mProcess == nullptr) return nullptr;
    return transport;
}

std::shared_ptr<DriverTransport> DriverTransport::current() {
    return std::dynamic_pointer_cast<DriverTransport>(processTransport());
}

DriverTransport::~DriverTransport() {
    if (mProcess != nullptr) mProcess->shutdown();
    if (AIBinder* object = mContextObject.load(); object != nullptr) object->refs()->decStrong();
}

int DriverTransport::becomeContextManager(AIBinder* object) {
    if (int err = mProcess->becomeContextManager(); err != 0) return err;
    object->refs()->incStrong();
    AIBinder* expected = nullptr;
    if (!mContextObject.compare_exchange_strong(expected, object)) object->refs()->decStrong();
    return 0;
}

// ---- received buffers
// ----------------------------------------------------------------------------

void DriverTransport::adoptReceived(AParcel& parcel, ReceivedBuffer&& received) {
    parcel.adopt(shared_from_this(), received.data(), received.size(), received.offsets(),
                 received.offsetCount(), releaseReceived);
    received.release();
}

// Descriptors the kernel installed for the buffer are this process's to close.
void DriverTransport::releaseReceived(Transport& transport, const uint8_t* data, size_t size,
                                      const binder_size_t* objects, size_t objectCount) {
    for (size_t i = 0; i < objectCount; ++i) {
        const binder_size_t offset = objects[i];
        if (offset + sizeof(flat_binder_object) > size) continue;
        flat_binder_object object;
        memcpy(&object, data + offset, sizeof(object));
        if (object.hdr.type == BINDER_TYPE_FD) close(static_cast<int>(object.handle));
    }
    static_cast<DriverTransport&>(transport).mProcess->freeBuffer(data);
}

// ---- outgoing
// ------------------------------------------------------------------------------------

binder_status_t DriverTransport::transact(uint32_t handle, transaction_code_t code,
                                          const AParcel& data, AParcel* reply,
                                          binder_flags_t flags) {
    OutgoingBuffer out = outgoing(data);
    std::vector<uint8_t> copy;
    if (stripSecurityContextRequests(data, &copy)) out.data = copy.data();

    ReceivedBuffer received;
    const bool oneway = (flags & FLAG_ONEWAY) != 0;
    const binder_status_t status = mProcess->thread().transact(
            handle, code, out, flags, oneway || reply == nullptr ? nullptr : &received);
    if (status != STATUS_OK || oneway || reply == nullptr || received.empty()) return status;

    adoptReceived(*reply, std::move(received));
    return STATUS_OK;
}

void DriverTransport::acquireHandle(uint32_t handle) {
    // The manager has no reference to its own node; asking for one fails the whole write.
    if (handle == 0 && isContextManager()) return;
    DriverThread& thread = mProcess->thread();
    thread.incWeakHandle(handle);
    thread.incStrongHandle(handle);
}

void DriverTransport::releaseHandle(uint32_t handle) {
    if (handle == 0 && isContextManager()) return;
    DriverThread& thread = mProcess->thread();
    thread.decStrongHandle(handle);
    thread.decWeakHandle(handle);
}

binder_status_t DriverTransport::requestDeathNotification(uint32_t handle, RefCounts* proxyRefs) {
    const auto cookie = static_cast<binder_uintptr_t>(reinterpret_cast<uintptr_t>(proxyRefs));
    {
        std::lock_guard<std::mutex> lock(mLock);
        mDeathHandles[cookie] = handle;
    }
    const binder_status_t status = mProcess->thread().requestDeathNotification(handle, cookie);
    if (status != STATUS_OK) {
        std::lock_guard<std::mutex> lock(mLock);
        mDeathHandles.erase(cookie);
    }
    return status;
}

binder_status_t DriverTransport::clearDeathNotification(uint32_t handle, RefCounts* proxyRefs) {
    const auto cookie = static_cast<binder_uintptr_t>(reinterpret_cast<uintptr_t>(proxyRefs));
    {
        std::lock_guard<std::mutex> lock(mLock);
        // Gone already: the death arrived and cleared it.
        if (mDeathHandles.erase(cookie) == 0) return STATUS_OK;
    }
    return mProcess->thread().clearDeathNotification(handle, cookie);
}

// ---- thread pool and service manager
// ---------------------------------------------------------------

bool DriverTransport::setThreadPoolMaxThreadCount(uint32_t count) {
    return mProcess->setMaxThreads(count);
}

void DriverTransport::startThreadPool() {
    mProcess->startThreadPool();
}

bool DriverTransport::isThreadPoolStarted() {
    return mProcess->isThreadPoolStarted();
}

void DriverTransport::joinThreadPool() {
    mProcess->joinThreadPool();
}

ServiceRegistry* DriverTransport::serviceRegistry() {
    // The manager itself keeps its registry in its own objects, not behind handle 0.
    if (isContextManager()) return nullptr;
    std::lock_guard<std::mutex> lock(mLock);
    if (mServiceManager == nullptr) mServiceManager = std::make_unique<DriverServiceManager>(*this);
    return mServiceManager.get();
}

// ---- incoming
// ------------------------------------------------------------------------------------

AIBinder* DriverTransport::callTarget(const IncomingTransaction& txn) {
    if (txn.ptr == 0 && txn.cookie == 0) {
        AIBinder* object = mContextObject.load();
        if (object != nullptr) object->refs()->incStrong();
        return object;
    }
    // The kernel's weak reference keeps the block, not necessarily the object.
    RefCounts* refs = refsOf(txn.ptr);
    if (!refs->attemptIncStrong()) return nullptr;
    AIBinder* object = refs->object();
    if (reinterpret_cast<uintptr_t>(object) != txn.cookie) {
        refs->decStrong();
        return nullptr;
    }
    return object;
}

void DriverTransport::onTransaction(DriverThread& thread, IncomingTransaction& txn) {
    AIBinder* target = callTarget(txn);
    if (target == nullptr) {
        BINDER_LOGE("binder call 0x%x for an object that is gone", txn.code);
        if (!txn.oneway()) (void)thread.sendStatusReply(STATUS_UNKNOWN_TRANSACTION);
        return;
    }
    SchedPolicy policy;
    if (ABBinder* local = target->asABBinder(); local != nullptr) {
        policy = {local->minSchedulerPolicy(), local->minSchedulerPriority()};
    }
    {
        SchedulerBoost boost(policy);
        AParcel data;
        adoptReceived(data, std::move(txn.data));
        AParcel reply;
        binder_status_t status;
        {
            IncomingTransactionScope scope(txn.senderPid, txn.senderEuid, nullptr, txn.flags);
            status = target->transact(txn.code, data, txn.oneway() ? nullptr : &reply, txn.flags);
        }
        // The request goes back first, so the free and the reply share one write.
        data.freeData();
        if (!txn.oneway()) {
            if (status == STATUS_OK) {
                (void)thread.sendReply(outgoing(reply));
            } else {
                (void)thread.sendStatusReply(status);
            }
        }
    }
    target->refs()->decStrong();
}

void DriverTransport::onIncRefs(binder_uintptr_t ptr, binder_uintptr_t) {
    refsOf(ptr)->incWeak();
}

void DriverTransport::onAcquire(binder_uintptr_t ptr, binder_uintptr_t) {
    // Only sent while some strong reference exists (the parcel that carried the object, or a
    // remote one), so the object is alive.
    refsOf(ptr)->incStrong();
}

void DriverTransport::onRelease(binder_uintptr_t ptr, binder_uintptr_t) {
    refsOf(ptr)->decStrong();
}

void DriverTransport::onDecRefs(binder_uintptr_t ptr, binder_uintptr_t) {
    refsOf(ptr)->decWeak();
}

void DriverTransport::onDeadBinder(DriverThread& thread, binder_uintptr_t cookie) {
    uint32_t handle = 0;
    bool watched = false;
    {
        std::lock_guard<std::mutex> lock(mLock);
        if (auto it = mDeathHandles.find(cookie); it != mDeathHandles.end()) {
            handle = it->second;
            watched = true;
            mDeathHandles.erase(it);
        }
    }
    // Cleared before the recipients run, as the platform does; the weak reference on the proxy
    // goes when the kernel confirms.
    if (watched) (void)thread.clearDeathNotification(handle, cookie);
    ABpBinder::sendObituary(refsOf(cookie));
}

void DriverTransport::onDeathNotificationCleared(binder_uintptr_t cookie) {
    refsOf(cookie)->decWeak();
}

}  // namespace abinder::driver
