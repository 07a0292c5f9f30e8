#pragma once

#include <android/binder_status.h>

#include <string>

// A transport error or an exception with its optional message and service-specific code.
struct AStatus {
    AStatus() = default;
    AStatus(binder_exception_t exception, int32_t errorCode, std::string message)
        : exception(exception), errorCode(errorCode), message(std::move(message)) {}

    // Stored as received; readers prune unknown values.
    binder_exception_t exception = EX_NONE;
    // A binder_status_t for EX_TRANSACTION_FAILED, the service code for EX_SERVICE_SPECIFIC.
    int32_t errorCode = STATUS_OK;
    std::string message;
};

namespace abinder {

// Maps any code outside the public list to STATUS_UNKNOWN_ERROR.
binder_status_t pruneStatusT(int32_t status);
// Maps any exception outside the public list to EX_TRANSACTION_FAILED.
binder_exception_t pruneException(int32_t exception);

std::string statusToString(int32_t status);
std::string exceptionToString(int32_t exception);

// EX_NONE for STATUS_OK, else EX_TRANSACTION_FAILED carrying the (pruned) status.
AStatus statusFromStatusT(binder_status_t status);

}  // namespace abinder
