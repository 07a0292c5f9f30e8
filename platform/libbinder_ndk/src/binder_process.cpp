#include <android/binder_process.h>
#include <unistd.h>

#include <atomic>

#include "Transport.h"

using abinder::processTransport;

namespace {

// Without a transport nothing ever arrives, so the pool is only bookkeeping.
std::atomic<bool> gThreadPoolStarted{false};

}  // namespace

void ABinderProcess_startThreadPool(void) {
    if (auto transport = processTransport(); transport != nullptr) {
        transport->startThreadPool();
        return;
    }
    gThreadPoolStarted.store(true);
}

bool ABinderProcess_setThreadPoolMaxThreadCount(uint32_t numThreads) {
    if (auto transport = processTransport(); transport != nullptr) {
        return transport->setThreadPoolMaxThreadCount(numThreads);
    }
    return true;
}

bool ABinderProcess_isThreadPoolStarted(void) {
    if (auto transport = processTransport(); transport != nullptr) {
        return transport->isThreadPoolStarted();
    }
    return gThreadPoolStarted.load();
}

void ABinderProcess_joinThreadPool(void) {
    if (auto transport = processTransport(); transport != nullptr) {
        transport->joinThreadPool();
        return;
    }
    // Nothing can arrive in-process: serve nothing, forever.
    for (;;) pause();
}

binder_status_t ABinderProcess_setupPolling(int* fd) {
    if (fd != nullptr) *fd = -1;
    return STATUS_INVALID_OPERATION;
}

binder_status_t ABinderProcess_handlePolledCommands(void) {
    return STATUS_INVALID_OPERATION;
}
