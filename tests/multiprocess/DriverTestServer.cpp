#include "DriverTestServer.h"

#include <pthread.h>
#include <sched.h>
#include <unistd.h>

#include <atomic>
#include <thread>
#include <vector>

namespace drivertest {

namespace {

class TestServer : public RecordingHandler {
public:
    explicit TestServer(const ServerOptions& options) : mOptions(options) {
        onCall = [this](DriverThread& thread, IncomingTransaction& txn) { serve(thread, txn); };
    }

    abinder::driver::SchedPolicy minSchedulerPolicy(binder_uintptr_t ptr,
                                                    binder_uintptr_t) override {
        if (ptr == kRtNodePtr) return {SCHED_FIFO, kRtPriority};
        return {};
    }

    std::shared_ptr<DriverProcess> process;

private:
    void serve(DriverThread& thread, IncomingTransaction& txn) {
        RawReader in(txn.data);
        RawParcel out;
        switch (txn.code) {
            case kPing: {
                const int32_t x = in.int32();
                out.int32(x + 1).int32(txn.senderPid).int32(static_cast<int32_t>(txn.senderEuid));
                break;
            }
            case kStatusReply: {
                const int32_t status = in.int32();
                txn.data.reset();
                (void)thread.sendStatusReply(status);
                return;
            }
            case kNoAnswer:
                return;
            case kCallBack: {
                const flat_binder_object* node = in.object(0);
                if (node == nullptr || node->hdr.type != BINDER_TYPE_HANDLE) {
                    (void)thread.sendStatusReply(STATUS_BAD_TYPE);
                    return;
                }
                RawParcel request;
                request.int32(21);
                ReceivedBuffer reply;
                const binder_status_t status = thread.transact(
                        node->handle, RecordingHandler::kCallbackCode, request.buffer(), 0, &reply);
                RawReader result(reply);
                const int32_t doubled = result.int32();
                const int32_t tid = result.int32();
                out.int32(status).int32(doubled).int32(tid);
                break;
            }
            case kBarrier: {
                const int32_t n = in.int32();
                std::unique_lock<std::mutex> lock(mBarrierLock);
                ++mInside;
                mBarrierChanged.notify_all();
                const bool all =
                        mBarrierChanged.wait_for(lock, kPatience, [&] { return mInside >= n; });
                lock.unlock();
                out.int32(all ? 1 : 0);
                break;
            }
            case kOneway: {
                std::lock_guard<std::mutex> lock(mOnewayLock);
                mOneways.push_back(in.int32());
                mOnewayChanged.notify_all();
                return;
            }
            case kOnewayLog: {
                const size_t n = static_cast<size_t>(in.int32());
                std::unique_lock<std::mutex> lock(mOnewayLock);
                mOnewayChanged.wait_for(lock, kPatience, [&] { return mOneways.size() >= n; });
                bool inOrder = true;
                for (size_t i = 0; i < mOneways.size(); ++i) {
                    inOrder = inOrder && mOneways[i] == static_cast<int32_t>(i);
                }
                out.int32(static_cast<int32_t>(mOneways.size())).int32(inOrder ? 1 : 0);
                break;
            }
            case kExitNow:
                _exit(0);
            case kGetNode:
                out.node(kRtNodePtr, kRtNodeCookie);
                break;
            case kSchedInfo: {
                int policy = 0;
                sched_param param{};
                pthread_getschedparam(pthread_self(), &policy, &param);
                out.int32(policy).int32(param.sched_priority);
                break;
            }
            case kReport: {
                txn.data.reset();
                (void)thread.flushCommands();
                const ProcState state = binderProcState(getpid());
                int deaths = 0;
                for (const auto& [cookie, n] : counts().deaths) deaths += n;
                out.int32(state.buffers)
                        .int32(static_cast<int32_t>(process->poolThreadCount()))
                        .int32(deaths)
                        .int32(mCallToDeadStatus.load());
                break;
            }
            case kWatchAndWait: {
                const flat_binder_object* node = in.object(0);
                if (node == nullptr || node->hdr.type != BINDER_TYPE_HANDLE) {
                    (void)thread.sendStatusReply(STATUS_BAD_TYPE);
                    return;
                }
                const uint32_t handle = node->handle;
                // Keep the handle past the buffer, then watch it.
                thread.incWeakHandle(handle);
                thread.incStrongHandle(handle);
                watch(0xdead, handle);
                (void)thread.requestDeathNotification(handle, 0xdead);
                txn.data.reset();
                if (mOptions.watching != nullptr) mOptions.watching->signal();
                waitFor([](const Counts& c) { return c.deaths.count(0xdead) != 0; });
                RawParcel request;
                request.int32(1);
                ReceivedBuffer reply;
                mCallToDeadStatus = thread.transact(handle, RecordingHandler::kCallbackCode,
                                                    request.buffer(), 0, &reply);
                thread.decStrongHandle(handle);
                thread.decWeakHandle(handle);
                break;
            }
            default:
                (void)thread.sendStatusReply(STATUS_UNKNOWN_TRANSACTION);
                return;
        }
        if (!txn.oneway()) {
            txn.data.reset();
            (void)thread.sendReply(out.buffer());
        }
    }

    const ServerOptions mOptions;
    std::mutex mBarrierLock;
    std::condition_variable mBarrierChanged;
    int mInside = 0;  // guarded by mBarrierLock
    std::mutex mOnewayLock;
    std::condition_variable mOnewayChanged;
    std::vector<int32_t> mOneways;  // guarded by mOnewayLock
    std::atomic<int32_t> mCallToDeadStatus{1};
};

}  // namespace

int runTestServer(const ServerOptions& options) {
    TestServer server(options);
    server.process = DriverProcess::open(&server);
    if (server.process == nullptr) return 2;
    if (!becomeContextManager(*server.process)) return 3;
    if (!server.process->setMaxThreads(options.maxThreads)) return 4;
    if (options.ready != nullptr) options.ready->signal();
    if (options.startPool) server.process->startThreadPool();
    // Serve until killed or told to exit.
    server.process->joinThreadPool();
    return 0;
}

}  // namespace drivertest
