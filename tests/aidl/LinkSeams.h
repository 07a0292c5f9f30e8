#pragma once

#include <android/binder_ibinder.h>

#include <vector>

// The test executable is linked with --wrap=AIBinder_transact and --wrap=AIBinder_Class_define:
// every transaction's code and flags are recorded, and the on-transact hook of every class
// defined in the process can be looked up, so a dispatcher can be driven with hand-made parcels.
namespace aidl::vendor::tavix::tps::test {

struct TransactRecord {
    transaction_code_t code;
    binder_flags_t flags;
};

// Transactions since the last call, oldest first; clears the record.
std::vector<TransactRecord> takeTransactions();

// The on-transact hook given when clazz was defined; nullptr for an unknown class.
AIBinder_Class_onTransact onTransactOf(const AIBinder_Class* clazz);

}  // namespace aidl::vendor::tavix::tps::test
