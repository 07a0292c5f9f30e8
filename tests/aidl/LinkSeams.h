#pragma once

#include <android/binder_ibinder.h>

#include <functional>
#include <vector>

#include "Wire.h"

// The test executable is linked with --wrap=AIBinder_transact and --wrap=AIBinder_Class_define:
// every transaction's code and flags are recorded, and the on-transact hook of every class
// defined in the process can be looked up, so a dispatcher can be driven with hand-made parcels.
namespace aidl::vendor::tavix::tps::test {

using ::tps::test::hex;
using ::tps::test::parcelBytes;
using ::tps::test::Wire;

struct TransactRecord {
    transaction_code_t code;
    binder_flags_t flags;
};

// Transactions since the last call, oldest first; clears the record.
std::vector<TransactRecord> takeTransactions();

struct Outcome {
    binder_status_t result;
    std::vector<uint8_t> reply;
};

// Runs the on-transact hook of the binder's class on a request holding only the arguments: the
// library checks and skips the interface token before the hook runs.
Outcome dispatch(AIBinder* binder, transaction_code_t code,
                 const std::function<void(AParcel*)>& writeArgs);
Outcome dispatch(AIBinder* binder, transaction_code_t code, const Wire& args = Wire());

}  // namespace aidl::vendor::tavix::tps::test
