#include "DriverThread.h"

#include <errno.h>
#include <string.h>

#include <atomic>

#include "../BinderLog.h"
#include "DriverCommands.h"
#include "DriverProcess.h"
#include "SchedulerBoost.h"

namespace abinder::driver {

namespace {

template <typename T>
T readPayload(const uint8_t* payload) {
    T value;
    memcpy(&value, payload, sizeof(T));
    return value;
}

// Objects travel between this process's threads through the kernel (a node sent by one thread,
// released by another), which orders them but is invisible to race detectors. Every exchange with
// the driver also goes through this counter, so what one thread wrote before its ioctl is seen as
// happening before what another thread does after its own.
std::atomic<uint64_t> gDriverExchanges{0};

binder_uintptr_t toAddress(const void* p) {
    return static_cast<binder_uintptr_t>(reinterpret_cast<uintptr_t>(p));
}

}  // namespace

DriverThread::DriverThread(DriverProcess& process) : mProcess(process) {
    mOut.reserve(256);
}

DriverThread::~DriverThread() {
    if (mAbandoned || mProcess.forked()) return;
    processPendingDerefs();
    (void)flushCommands();
    (void)mProcess.device().threadExit();
}

// ---- queueing --------------------------------------------------------------------------------

template <typename T>
void DriverThread::queue(uint32_t cmd, const T& payload) {
    const size_t at = mOut.size();
    mOut.resize(at + sizeof(cmd) + sizeof(T));
    memcpy(mOut.data() + at, &cmd, sizeof(cmd));
    memcpy(mOut.data() + at + sizeof(cmd), &payload, sizeof(T));
}

void DriverThread::queue(uint32_t cmd) {
    const size_t at = mOut.size();
    mOut.resize(at + sizeof(cmd));
    memcpy(mOut.data() + at, &cmd, sizeof(cmd));
}

void DriverThread::queueHandleCommand(uint32_t cmd, uint32_t handle) {
    queue(cmd, handle);
    flushIfNeeded();
}

void DriverThread::queueTransaction(uint32_t cmd, uint32_t flags, uint32_t handle, uint32_t code,
                                    const OutgoingBuffer& data) {
    binder_transaction_data tr{};
    tr.target.handle = handle;
    tr.code = code;
    tr.flags = flags;
    tr.data_size = data.size;
    tr.offsets_size = data.offsetCount * sizeof(binder_size_t);
    tr.data.ptr.buffer = toAddress(data.data);
    tr.data.ptr.offsets = toAddress(data.offsets);
    queue(cmd, tr);
}

void DriverThread::flushIfNeeded() {
    // A looper or a thread inside a call sends the queue with its next read anyway.
    if (mIsLooper || !mServing.empty()) return;
    (void)flushCommands();
}

binder_status_t DriverThread::flushCommands() {
    binder_status_t status = talk(false);
    // A write that stopped after a failed transaction leaves the rest queued; one more try
    // sends it once that error has been read.
    if (status == STATUS_OK && !mOut.empty()) status = talk(false);
    return status;
}

void DriverThread::freeBuffer(binder_uintptr_t address) {
    queue(BC_FREE_BUFFER, address);
    flushIfNeeded();
}

binder_status_t DriverThread::requestDeathNotification(uint32_t handle, binder_uintptr_t cookie) {
    queue(BC_REQUEST_DEATH_NOTIFICATION, binder_handle_cookie{handle, cookie});
    return flushCommands();
}

binder_status_t DriverThread::clearDeathNotification(uint32_t handle, binder_uintptr_t cookie) {
    queue(BC_CLEAR_DEATH_NOTIFICATION, binder_handle_cookie{handle, cookie});
    return flushCommands();
}

// ---- talking to the driver -------------------------------------------------------------------

binder_status_t DriverThread::talk(bool doReceive) {
    const bool needRead = mInPos >= mInSize;
    binder_write_read bwr{};
    // Write only once the returns read earlier have been handled: they may change what is queued.
    if (!doReceive || needRead) {
        bwr.write_size = mOut.size();
        bwr.write_buffer = toAddress(mOut.data());
    }
    if (doReceive && needRead) {
        bwr.read_size = sizeof(mIn);
        bwr.read_buffer = toAddress(mIn);
    }
    if (bwr.write_size == 0 && bwr.read_size == 0) return STATUS_OK;
    gDriverExchanges.fetch_add(1, std::memory_order_release);
    const int err = mProcess.device().writeRead(&bwr);
    (void)gDriverExchanges.load(std::memory_order_acquire);
    if (err < 0) return err;
    if (bwr.write_consumed > 0) {
        mOut.erase(mOut.begin(), mOut.begin() + static_cast<ptrdiff_t>(bwr.write_consumed));
    }
    if (bwr.read_consumed > 0) {
        mInSize = bwr.read_consumed;
        mInPos = 0;
    }
    return STATUS_OK;
}

bool DriverThread::nextReturn(uint32_t* cmd, const uint8_t** payload) {
    if (mInSize - mInPos < sizeof(uint32_t)) {
        mInPos = mInSize;
        return false;
    }
    memcpy(cmd, mIn + mInPos, sizeof(uint32_t));
    const int size = returnPayloadSize(*cmd);
    if (size < 0 || mInSize - mInPos - sizeof(uint32_t) < static_cast<size_t>(size)) {
        // Nothing after an unparsable return can be found again: drop the rest of this read.
        BINDER_LOGE("binder driver sent %s 0x%x with %zu bytes left; dropping them",
                    returnName(*cmd), *cmd, mInSize - mInPos);
        mInPos = mInSize;
        return false;
    }
    *payload = mIn + mInPos + sizeof(uint32_t);
    mInPos += sizeof(uint32_t) + static_cast<size_t>(size);
    return true;
}

// ---- outgoing calls ----------------------------------------------------------------------------

binder_status_t DriverThread::transact(uint32_t handle, uint32_t code, const OutgoingBuffer& data,
                                       uint32_t flags, ReceivedBuffer* reply) {
    flags |= TF_ACCEPT_FDS;
    queueTransaction(BC_TRANSACTION, flags, handle, code, data);
    const bool oneway = (flags & TF_ONE_WAY) != 0;
    ReceivedBuffer ignored;
    const binder_status_t status =
            waitForResponse(oneway ? nullptr : (reply != nullptr ? reply : &ignored), !oneway);
    if (!mIsLooper && mServing.empty() && mInPos >= mInSize) processPendingDerefs();
    return status;
}

binder_status_t DriverThread::sendReply(const OutgoingBuffer& data) {
    if (mServing.empty() || (mServing.back().flags & TF_ONE_WAY) != 0 || mServing.back().replied) {
        BINDER_LOGE("binder reply without a two-way call to answer");
        return STATUS_INVALID_OPERATION;
    }
    mServing.back().replied = true;
    queueTransaction(BC_REPLY, mServing.back().flags & TF_CLEAR_BUF, 0, 0, data);
    return waitForResponse(nullptr, false);
}

binder_status_t DriverThread::sendStatusReply(binder_status_t status) {
    if (mServing.empty() || (mServing.back().flags & TF_ONE_WAY) != 0 || mServing.back().replied) {
        BINDER_LOGE("binder reply without a two-way call to answer");
        return STATUS_INVALID_OPERATION;
    }
    mServing.back().replied = true;
    OutgoingBuffer data;
    data.data = &status;
    data.size = sizeof(status);
    queueTransaction(BC_REPLY, TF_STATUS_CODE | (mServing.back().flags & TF_CLEAR_BUF), 0, 0, data);
    return waitForResponse(nullptr, false);
}

binder_status_t DriverThread::waitForResponse(ReceivedBuffer* reply, bool expectReply) {
    for (;;) {
        if (binder_status_t status = talk(true); status != STATUS_OK) return status;
        uint32_t cmd;
        const uint8_t* payload;
        if (!nextReturn(&cmd, &payload)) continue;
        switch (cmd) {
            case BR_ONEWAY_SPAM_SUSPECT:
                BINDER_LOGE("Process seems to be sending too many oneway calls.");
                [[fallthrough]];
            case BR_TRANSACTION_COMPLETE:
                if (!expectReply) return STATUS_OK;
                break;
            case kBrTransactionPendingFrozen:
                return STATUS_OK;
            case BR_DEAD_REPLY:
                return STATUS_DEAD_OBJECT;
            case BR_FAILED_REPLY:
                logExtendedError();
                return STATUS_FAILED_TRANSACTION;
            case BR_FROZEN_REPLY:
                return STATUS_FAILED_TRANSACTION;
            case BR_REPLY: {
                const auto tr = readPayload<binder_transaction_data>(payload);
                ReceivedBuffer buffer(mProcess.shared_from_this(), tr);
                if (!expectReply) {
                    BINDER_LOGE("binder driver sent a reply nobody waits for");
                    break;  // freed
                }
                if ((tr.flags & TF_STATUS_CODE) != 0) {
                    int32_t status = STATUS_FAILED_TRANSACTION;
                    if (buffer.size() >= sizeof(status))
                        memcpy(&status, buffer.data(), sizeof(status));
                    return status;
                }
                *reply = std::move(buffer);
                return STATUS_OK;
            }
            default:
                if (binder_status_t status = executeReturn(cmd, payload); status != STATUS_OK) {
                    return status;
                }
                break;
        }
    }
}

void DriverThread::logExtendedError() {
    binder_extended_error error;
    if (mProcess.device().extendedError(&error) && error.command != BR_OK) {
        BINDER_LOGW("binder transaction failed: %s, error %d (debug id %u)",
                    returnName(error.command), error.param, error.id);
    }
}

// ---- incoming work -----------------------------------------------------------------------------

binder_status_t DriverThread::executeReturn(uint32_t cmd, const uint8_t* payload) {
    DriverHandler& handler = mProcess.handler();
    switch (cmd) {
        case BR_NOOP:
        case BR_OK:
            return STATUS_OK;
        case BR_ERROR:
            // Only sent when the driver ran out of memory for a death notification.
            BINDER_LOGE("binder driver reported an internal error");
            return STATUS_OK;
        case BR_SPAWN_LOOPER:
            mProcess.spawnPooledThread(false);
            return STATUS_OK;
        case BR_FINISHED:
            return STATUS_TIMED_OUT;
        case BR_TRANSACTION:
            executeTransaction(readPayload<binder_transaction_data>(payload));
            return STATUS_OK;
        case BR_TRANSACTION_SEC_CTX:
            // Never requested by this layer; serve the call without the context.
            executeTransaction(
                    readPayload<binder_transaction_data_secctx>(payload).transaction_data);
            return STATUS_OK;
        case BR_INCREFS: {
            const auto node = readPayload<binder_ptr_cookie>(payload);
            handler.onIncRefs(node.ptr, node.cookie);
            queue(BC_INCREFS_DONE, node);
            return STATUS_OK;
        }
        case BR_ACQUIRE: {
            const auto node = readPayload<binder_ptr_cookie>(payload);
            handler.onAcquire(node.ptr, node.cookie);
            queue(BC_ACQUIRE_DONE, node);
            return STATUS_OK;
        }
        case BR_RELEASE: {
            const auto node = readPayload<binder_ptr_cookie>(payload);
            mPendingStrongDerefs.emplace_back(node.ptr, node.cookie);
            return STATUS_OK;
        }
        case BR_DECREFS: {
            const auto node = readPayload<binder_ptr_cookie>(payload);
            mPendingWeakDerefs.emplace_back(node.ptr, node.cookie);
            return STATUS_OK;
        }
        case BR_DEAD_BINDER: {
            const auto cookie = readPayload<binder_uintptr_t>(payload);
            handler.onDeadBinder(*this, cookie);
            queue(BC_DEAD_BINDER_DONE, cookie);
            return STATUS_OK;
        }
        case BR_CLEAR_DEATH_NOTIFICATION_DONE:
            handler.onDeathNotificationCleared(readPayload<binder_uintptr_t>(payload));
            return STATUS_OK;
        case BR_REPLY: {
            BINDER_LOGE("binder driver sent a reply nobody waits for");
            ReceivedBuffer unused(mProcess.shared_from_this(),
                                  readPayload<binder_transaction_data>(payload));
            return STATUS_OK;
        }
        default:
            BINDER_LOGE("unexpected %s 0x%x from the binder driver", returnName(cmd), cmd);
            return STATUS_OK;
    }
}

void DriverThread::executeTransaction(const binder_transaction_data& tr) {
    IncomingTransaction txn;
    txn.ptr = tr.target.ptr;
    txn.cookie = tr.cookie;
    txn.code = tr.code;
    txn.flags = tr.flags;
    txn.senderPid = tr.sender_pid;
    txn.senderEuid = tr.sender_euid;
    txn.data = ReceivedBuffer(mProcess.shared_from_this(), tr);

    const size_t depth = mServing.size();
    mServing.push_back({tr.flags, false});
    {
        SchedulerBoost boost(mProcess.handler().minSchedulerPolicy(txn.ptr, txn.cookie));
        mProcess.handler().onTransaction(*this, txn);
        if (!txn.oneway() && !mServing[depth].replied) {
            txn.data.reset();
            BINDER_LOGE("binder call 0x%x to node 0x%llx was not answered", txn.code,
                        static_cast<unsigned long long>(txn.ptr));
            (void)sendStatusReply(STATUS_FAILED_TRANSACTION);
        }
    }
    mServing.pop_back();
    // A oneway call's buffer goes back only now: the next oneway to the node waits for it.
}

void DriverThread::processPendingDerefs() {
    DriverHandler& handler = mProcess.handler();
    // Handlers may run calls that queue more.
    while (!mPendingStrongDerefs.empty() || !mPendingWeakDerefs.empty()) {
        auto strong = std::move(mPendingStrongDerefs);
        auto weak = std::move(mPendingWeakDerefs);
        mPendingStrongDerefs.clear();
        mPendingWeakDerefs.clear();
        for (const auto& [ptr, cookie] : strong) handler.onRelease(ptr, cookie);
        for (const auto& [ptr, cookie] : weak) handler.onDecRefs(ptr, cookie);
    }
}

void DriverThread::joinThreadPool(bool isMain) {
    mIsLooper = true;
    queue(isMain ? BC_ENTER_LOOPER : BC_REGISTER_LOOPER);
    while (!mProcess.stopping()) {
        if (mInPos >= mInSize) processPendingDerefs();
        binder_status_t status = talk(true);
        if (status == -EBADF || status == -ECONNREFUSED) break;
        if (status != STATUS_OK) {
            BINDER_LOGE("binder looper read failed: %s", strerror(-status));
            break;
        }
        uint32_t cmd;
        const uint8_t* payload;
        if (!nextReturn(&cmd, &payload)) continue;
        status = executeReturn(cmd, payload);
        if (status == STATUS_TIMED_OUT && !isMain) break;
    }
    processPendingDerefs();
    queue(BC_EXIT_LOOPER);
    (void)flushCommands();
    mIsLooper = false;
}

}  // namespace abinder::driver
