#pragma once

#include <linux/android/binder.h>
#include <stddef.h>
#include <stdint.h>
#include <sys/ioctl.h>

namespace abinder::driver {

// Returns newer than the UAPI headers of the kernels this runs on. Only sent for frozen targets,
// which nothing here creates, but a reader must still know their size.
inline constexpr uint32_t kBrTransactionPendingFrozen = _IO('r', 20);

// Payload bytes that follow a return code in the read buffer, or -1 for a code this layer does
// not know (the rest of that buffer cannot be parsed then).
constexpr int returnPayloadSize(uint32_t cmd) {
    switch (cmd) {
        // The kernel writes every error return, BR_ERROR included, as a bare code even though
        // BR_ERROR's number declares an int32 payload.
        case BR_ERROR:
        case BR_OK:
        case BR_DEAD_REPLY:
        case BR_TRANSACTION_COMPLETE:
        case BR_NOOP:
        case BR_SPAWN_LOOPER:
        case BR_FINISHED:
        case BR_FAILED_REPLY:
        case BR_FROZEN_REPLY:
        case BR_ONEWAY_SPAM_SUSPECT:
        case kBrTransactionPendingFrozen:
            return 0;
        case BR_TRANSACTION:
        case BR_REPLY:
            return sizeof(binder_transaction_data);
        case BR_TRANSACTION_SEC_CTX:
            return sizeof(binder_transaction_data_secctx);
        case BR_ACQUIRE_RESULT:
            return sizeof(int32_t);
        case BR_INCREFS:
        case BR_ACQUIRE:
        case BR_RELEASE:
        case BR_DECREFS:
            return sizeof(binder_ptr_cookie);
        case BR_ATTEMPT_ACQUIRE:
            return sizeof(binder_pri_ptr_cookie);
        case BR_DEAD_BINDER:
        case BR_CLEAR_DEATH_NOTIFICATION_DONE:
            return sizeof(binder_uintptr_t);
        default:
            return -1;
    }
}

const char* returnName(uint32_t cmd);

}  // namespace abinder::driver
