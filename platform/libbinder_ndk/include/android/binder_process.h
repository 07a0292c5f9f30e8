#pragma once

#include <android/binder_status.h>
#include <stdbool.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

void ABinderProcess_startThreadPool(void);
bool ABinderProcess_setThreadPoolMaxThreadCount(uint32_t numThreads);
bool ABinderProcess_isThreadPoolStarted(void);
// Adds the calling thread to the pool; does not return in normal operation.
void ABinderProcess_joinThreadPool(void);

binder_status_t ABinderProcess_setupPolling(int* fd);
binder_status_t ABinderProcess_handlePolledCommands(void);

#ifdef __cplusplus
}  // extern "C"
#endif
