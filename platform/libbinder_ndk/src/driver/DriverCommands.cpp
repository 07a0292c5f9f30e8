#include "DriverCommands.h"

namespace abinder::driver {

const char* returnName(uint32_t cmd) {
    switch (cmd) {
        case BR_ERROR:
            return "BR_ERROR";
        case BR_OK:
            return "BR_OK";
        case BR_TRANSACTION_SEC_CTX:
            return "BR_TRANSACTION_SEC_CTX";
        case BR_TRANSACTION:
            return "BR_TRANSACTION";
        case BR_REPLY:
            return "BR_REPLY";
        case BR_ACQUIRE_RESULT:
            return "BR_ACQUIRE_RESULT";
        case BR_DEAD_REPLY:
            return "BR_DEAD_REPLY";
        case BR_TRANSACTION_COMPLETE:
            return "BR_TRANSACTION_COMPLETE";
        case BR_INCREFS:
            return "BR_INCREFS";
        case BR_ACQUIRE:
            return "BR_ACQUIRE";
        case BR_RELEASE:
            return "BR_RELEASE";
        case BR_DECREFS:
            return "BR_DECREFS";
        case BR_ATTEMPT_ACQUIRE:
            return "BR_ATTEMPT_ACQUIRE";
        case BR_NOOP:
            return "BR_NOOP";
        case BR_SPAWN_LOOPER:
            return "BR_SPAWN_LOOPER";
        case BR_FINISHED:
            return "BR_FINISHED";
        case BR_DEAD_BINDER:
            return "BR_DEAD_BINDER";
        case BR_CLEAR_DEATH_NOTIFICATION_DONE:
            return "BR_CLEAR_DEATH_NOTIFICATION_DONE";
        case BR_FAILED_REPLY:
            return "BR_FAILED_REPLY";
        case BR_FROZEN_REPLY:
            return "BR_FROZEN_REPLY";
        case BR_ONEWAY_SPAM_SUSPECT:
            return "BR_ONEWAY_SPAM_SUSPECT";
        case kBrTransactionPendingFrozen:
            return "BR_TRANSACTION_PENDING_FROZEN";
        default:
            return "unknown return";
    }
}

}  // namespace abinder::driver
