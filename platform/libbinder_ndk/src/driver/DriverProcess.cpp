#include "DriverProcess.h"

#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>

#include "../BinderLog.h"

namespace abinder::driver {

namespace {

std::atomic<uint64_t> gNextProcessId{1};

// Every open process object, so a forked child can let go of its parent's devices.
std::mutex gProcessesLock;
std::vector<DriverProcess*> gProcesses;  // guarded by gProcessesLock

// The calling thread's state for each process object it has used. A state whose process object
// is gone is dropped on the next lookup; one whose process lives is closed at thread exit.
struct ThreadSlot {
    uint64_t processId;
    std::weak_ptr<DriverProcess> process;
    std::unique_ptr<DriverThread> state;
};

struct ThreadSlots {
    std::vector<ThreadSlot> slots;

    ~ThreadSlots() {
        for (ThreadSlot& slot : slots) {
            // Keeps the process object alive while its thread state says goodbye.
            std::shared_ptr<DriverProcess> process = slot.process.lock();
            if (process == nullptr) slot.state->abandon();  // its process and device are gone
            slot.state.reset();
        }
    }
};

thread_local ThreadSlots tSlots;

}  // namespace

std::string DriverProcess::defaultDevicePath() {
    const char* path = getenv("TPS_BINDER_DEVICE");
    return path != nullptr && path[0] != '\0' ? path : "/dev/binder";
}

std::shared_ptr<DriverProcess> DriverProcess::open(DriverHandler* handler,
                                                   const std::string& path) {
    std::string error;
    bool missing = false;
    std::unique_ptr<BinderDevice> device = BinderDevice::open(path, &error, &missing);
    if (device == nullptr) {
        if (!missing) BINDER_LOGE("%s", error.c_str());
        return nullptr;
    }
    registerForkHandlers();
    std::shared_ptr<DriverProcess> process(new DriverProcess(std::move(device), handler));
    std::lock_guard<std::mutex> lock(gProcessesLock);
    gProcesses.push_back(process.get());
    return process;
}

DriverProcess::DriverProcess(std::unique_ptr<BinderDevice> device, DriverHandler* handler)
    : mDevice(std::move(device)), mHandler(handler), mId(gNextProcessId.fetch_add(1)) {}

DriverProcess::~DriverProcess() {
    {
        std::lock_guard<std::mutex> lock(gProcessesLock);
        gProcesses.erase(std::find(gProcesses.begin(), gProcesses.end(), this));
    }
    if (forked()) {
        // The parent's threads do not exist here; their objects can only be let go.
        for (std::unique_ptr<std::thread>& thread : mThreads) (void)thread.release();
        return;
    }
    shutdown();
}

void DriverProcess::registerForkHandlers() {
    static std::once_flag once;
    std::call_once(once, [] {
        pthread_atfork([] { gProcessesLock.lock(); }, [] { gProcessesLock.unlock(); },
                       [] {
                           for (DriverProcess* process : gProcesses) process->forgetAfterFork();
                           gProcessesLock.unlock();
                       });
    });
}

void DriverProcess::forgetAfterFork() {
    // The child has none of the parent's threads and must not act as the parent's binder
    // process; keeping the device open would also hide the parent's death from its peers.
    mForked.store(true);
    mDevice->abandonAfterFork();
}

void DriverProcess::freeBuffer(const uint8_t* data) {
    // The kernel identifies a buffer by the address of its data.
    if (!forked()) thread().freeBuffer(reinterpret_cast<uintptr_t>(data));
}

DriverThread& DriverProcess::thread() {
    if (forked()) fatal("binder used in a forked child");
    std::vector<ThreadSlot>& slots = tSlots.slots;
    for (ThreadSlot& slot : slots) {
        if (slot.processId == mId) return *slot.state;
    }
    std::erase_if(slots, [](ThreadSlot& slot) {
        if (!slot.process.expired()) return false;
        slot.state->abandon();
        return true;
    });
    slots.push_back({mId, weak_from_this(), std::make_unique<DriverThread>(*this)});
    return *slots.back().state;
}

bool DriverProcess::setMaxThreads(uint32_t count) {
    if (int err = mDevice->setMaxThreads(count); err != 0) {
        BINDER_LOGE("BINDER_SET_MAX_THREADS %u failed: %d", count, err);
        return false;
    }
    return true;
}

void DriverProcess::startThreadPool() {
    if (mPoolStarted.exchange(true)) return;
    spawnPooledThread(true);
}

void DriverProcess::spawnPooledThread(bool isMain) {
    std::lock_guard<std::mutex> lock(mPoolLock);
    if (stopping()) return;
    char name[16];
    snprintf(name, sizeof(name), "%s:%d_%X", mDevice->name().c_str(), getpid(), mSpawnSeq++);
    ++mActiveLoopers;
    mThreads.push_back(
            std::make_unique<std::thread>([this, isMain, threadName = std::string(name)] {
                pthread_setname_np(pthread_self(), threadName.c_str());
                thread().joinThreadPool(isMain);
                std::lock_guard<std::mutex> lock(mPoolLock);
                --mActiveLoopers;
                mPoolChanged.notify_all();
            }));
}

void DriverProcess::joinThreadPool() {
    {
        std::lock_guard<std::mutex> lock(mPoolLock);
        if (stopping()) return;
        ++mActiveLoopers;
    }
    thread().joinThreadPool(true);
    std::lock_guard<std::mutex> lock(mPoolLock);
    --mActiveLoopers;
    mPoolChanged.notify_all();
}

size_t DriverProcess::poolThreadCount() {
    std::lock_guard<std::mutex> lock(mPoolLock);
    return mThreads.size();
}

void DriverProcess::shutdown() {
    mStopping.store(true, std::memory_order_release);
    std::unique_lock<std::mutex> lock(mPoolLock);
    // A looper checks the flag between reads; one that was about to block when the device was
    // flushed needs another flush.
    while (mActiveLoopers > 0) {
        mDevice->wakeAll();
        mPoolChanged.wait_for(lock, std::chrono::milliseconds(20));
    }
    std::vector<std::unique_ptr<std::thread>> threads = std::move(mThreads);
    mThreads.clear();
    lock.unlock();
    for (std::unique_ptr<std::thread>& thread : threads) {
        // A pool thread that dropped the last reference cannot join itself.
        if (thread->get_id() == std::this_thread::get_id()) {
            thread->detach();
        } else {
            thread->join();
        }
    }
}

}  // namespace abinder::driver
