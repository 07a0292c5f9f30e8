#include <android/binder_status.h>
#include <stdlib.h>
#include <string.h>

#include <string>

#include "AStatusImpl.h"

namespace abinder {

binder_status_t pruneStatusT(int32_t status) {
    switch (status) {
        case STATUS_OK:
        case STATUS_NO_MEMORY:
        case STATUS_INVALID_OPERATION:
        case STATUS_BAD_VALUE:
        case STATUS_BAD_TYPE:
        case STATUS_NAME_NOT_FOUND:
        case STATUS_PERMISSION_DENIED:
        case STATUS_NO_INIT:
        case STATUS_ALREADY_EXISTS:
        case STATUS_DEAD_OBJECT:
        case STATUS_FAILED_TRANSACTION:
        case STATUS_BAD_INDEX:
        case STATUS_NOT_ENOUGH_DATA:
        case STATUS_WOULD_BLOCK:
        case STATUS_TIMED_OUT:
        case STATUS_UNKNOWN_TRANSACTION:
        case STATUS_FDS_NOT_ALLOWED:
        case STATUS_UNEXPECTED_NULL:
            return status;
        default:
            return STATUS_UNKNOWN_ERROR;
    }
}

binder_exception_t pruneException(int32_t exception) {
    switch (exception) {
        case EX_NONE:
        case EX_SECURITY:
        case EX_BAD_PARCELABLE:
        case EX_ILLEGAL_ARGUMENT:
        case EX_NULL_POINTER:
        case EX_ILLEGAL_STATE:
        case EX_NETWORK_MAIN_THREAD:
        case EX_UNSUPPORTED_OPERATION:
        case EX_SERVICE_SPECIFIC:
        case EX_PARCELABLE:
        case EX_TRANSACTION_FAILED:
            return exception;
        default:
            return EX_TRANSACTION_FAILED;
    }
}

std::string statusToString(int32_t status) {
    switch (status) {
        case STATUS_OK:
            return "OK";
        case STATUS_UNKNOWN_ERROR:
            return "UNKNOWN_ERROR";
        case STATUS_NO_MEMORY:
            return "NO_MEMORY";
        case STATUS_INVALID_OPERATION:
            return "INVALID_OPERATION";
        case STATUS_BAD_VALUE:
            return "BAD_VALUE";
        case STATUS_BAD_TYPE:
            return "BAD_TYPE";
        case STATUS_NAME_NOT_FOUND:
            return "NAME_NOT_FOUND";
        case STATUS_PERMISSION_DENIED:
            return "PERMISSION_DENIED";
        case STATUS_NO_INIT:
            return "NO_INIT";
        case STATUS_ALREADY_EXISTS:
            return "ALREADY_EXISTS";
        case STATUS_DEAD_OBJECT:
            return "DEAD_OBJECT";
        case STATUS_FAILED_TRANSACTION:
            return "FAILED_TRANSACTION";
        case STATUS_BAD_INDEX:
            return "BAD_INDEX";
        case STATUS_NOT_ENOUGH_DATA:
            return "NOT_ENOUGH_DATA";
        case STATUS_WOULD_BLOCK:
            return "WOULD_BLOCK";
        case STATUS_TIMED_OUT:
            return "TIMED_OUT";
        case STATUS_UNKNOWN_TRANSACTION:
            return "UNKNOWN_TRANSACTION";
        case STATUS_FDS_NOT_ALLOWED:
            return "FDS_NOT_ALLOWED";
        case STATUS_UNEXPECTED_NULL:
            return "UNEXPECTED_NULL";
    }
    if (status < 0 && status > -4096) {
        return std::to_string(status) + " (" + strerror(-status) + ")";
    }
    return std::to_string(status);
}

std::string exceptionToString(int32_t exception) {
    switch (exception) {
        case EX_NONE:
            return "EX_NONE";
        case EX_SECURITY:
            return "EX_SECURITY";
        case EX_BAD_PARCELABLE:
            return "EX_BAD_PARCELABLE";
        case EX_ILLEGAL_ARGUMENT:
            return "EX_ILLEGAL_ARGUMENT";
        case EX_NULL_POINTER:
            return "EX_NULL_POINTER";
        case EX_ILLEGAL_STATE:
            return "EX_ILLEGAL_STATE";
        case EX_NETWORK_MAIN_THREAD:
            return "EX_NETWORK_MAIN_THREAD";
        case EX_UNSUPPORTED_OPERATION:
            return "EX_UNSUPPORTED_OPERATION";
        case EX_SERVICE_SPECIFIC:
            return "EX_SERVICE_SPECIFIC";
        case EX_PARCELABLE:
            return "EX_PARCELABLE";
        case -128:
            return "EX_HAS_REPLY_HEADER";
        case EX_TRANSACTION_FAILED:
            return "EX_TRANSACTION_FAILED";
    }
    return "UNKNOWN_" + std::to_string(exception);
}

AStatus statusFromStatusT(binder_status_t status) {
    return AStatus(status == STATUS_OK ? EX_NONE : EX_TRANSACTION_FAILED, status, "");
}

}  // namespace abinder

using abinder::pruneException;
using abinder::pruneStatusT;

namespace {

// Handed out by AStatus_newOk and never freed.
AStatus gOkStatus;

}  // namespace

AStatus* AStatus_newOk(void) {
    return &gOkStatus;
}

AStatus* AStatus_fromExceptionCode(binder_exception_t exception) {
    return AStatus_fromExceptionCodeWithMessage(exception, nullptr);
}

AStatus* AStatus_fromExceptionCodeWithMessage(binder_exception_t exception, const char* message) {
    exception = pruneException(exception);
    const int32_t errorCode =
            exception == EX_TRANSACTION_FAILED ? STATUS_FAILED_TRANSACTION : STATUS_OK;
    return new AStatus(exception, errorCode, message != nullptr ? message : "");
}

AStatus* AStatus_fromServiceSpecificError(int32_t serviceSpecific) {
    return AStatus_fromServiceSpecificErrorWithMessage(serviceSpecific, nullptr);
}

AStatus* AStatus_fromServiceSpecificErrorWithMessage(int32_t serviceSpecific, const char* message) {
    return new AStatus(EX_SERVICE_SPECIFIC, serviceSpecific, message != nullptr ? message : "");
}

AStatus* AStatus_fromStatus(binder_status_t status) {
    return new AStatus(abinder::statusFromStatusT(pruneStatusT(status)));
}

bool AStatus_isOk(const AStatus* status) {
    return status->exception == EX_NONE;
}

binder_exception_t AStatus_getExceptionCode(const AStatus* status) {
    return pruneException(status->exception);
}

int32_t AStatus_getServiceSpecificError(const AStatus* status) {
    return status->exception == EX_SERVICE_SPECIFIC ? status->errorCode : 0;
}

binder_status_t AStatus_getStatus(const AStatus* status) {
    return status->exception == EX_TRANSACTION_FAILED ? pruneStatusT(status->errorCode) : STATUS_OK;
}

const char* AStatus_getMessage(const AStatus* status) {
    return status->message.c_str();
}

const char* AStatus_getDescription(const AStatus* status) {
    std::string text;
    if (status->exception == EX_NONE) {
        text = "No error";
    } else {
        text = "Status(" + std::to_string(status->exception) + ", " +
               abinder::exceptionToString(status->exception) + "): '";
        if (status->exception == EX_SERVICE_SPECIFIC) {
            text += std::to_string(status->errorCode) + ": ";
        } else if (status->exception == EX_TRANSACTION_FAILED) {
            text += abinder::statusToString(status->errorCode) + ": ";
        }
        text += status->message + "'";
    }
    return strdup(text.c_str());
}

void AStatus_deleteDescription(const char* description) {
    free(const_cast<char*>(description));
}

void AStatus_delete(AStatus* status) {
    if (status != &gOkStatus) delete status;
}
