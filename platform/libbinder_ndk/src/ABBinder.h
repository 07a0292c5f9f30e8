#pragma once

#include <atomic>
#include <mutex>

#include "AIBinderImpl.h"

namespace abinder {

// A binder object implemented in this process: a class plus the user data its onCreate made.
// Calls run synchronously on the calling thread (oneway included).
class ABBinder : public AIBinder {
public:
    ABBinder(const AIBinder_Class* clazz, void* userData);
    ~ABBinder() override;  // runs the class's onDestroy

    ABBinder* asABBinder() override { return this; }
    bool isRemote() const override { return false; }
    bool isAlive() const override { return true; }

    binder_status_t transact(transaction_code_t code, const AParcel& data, AParcel* reply,
                             binder_flags_t flags) override;
    std::u16string interfaceDescriptor() override;

    void* userData() const { return mUserData; }

    binder_status_t dump(int fd, const char** args, uint32_t numArgs);

    // Properties carried in the object's flags; fatal once the binder has been parceled.
    void setMinSchedulerPolicy(int policy, int priority);
    void setInheritRt(bool inheritRt);
    void setRequestingSid(bool requestingSid);
    int minSchedulerPolicy() const { return mSchedPolicy.load(std::memory_order_relaxed); }
    int minSchedulerPriority() const { return mSchedPriority.load(std::memory_order_relaxed); }
    bool inheritRt() const { return mInheritRt.load(std::memory_order_relaxed); }
    bool requestingSid() const { return mRequestingSid.load(std::memory_order_relaxed); }

    // The flags word of the flat_binder_object that describes this binder.
    uint32_t objectFlags() const;
    void markParceled() { mParceled.store(true, std::memory_order_relaxed); }

    // Holds a strong reference to ext (or drops it for null).
    void setExtension(AIBinder* ext);
    // A new strong reference, or null.
    AIBinder* extension();

private:
    binder_status_t onTransact(transaction_code_t code, const AParcel& data, AParcel* reply,
                               binder_flags_t flags);
    bool checkInterface(const AParcel& data) const;

    void* const mUserData;
    std::atomic<bool> mParceled{false};
    std::atomic<int> mSchedPolicy{0};
    std::atomic<int> mSchedPriority{0};
    std::atomic<bool> mHasSchedPolicy{false};
    std::atomic<bool> mInheritRt{false};
    std::atomic<bool> mRequestingSid{false};

    std::mutex mExtensionLock;
    AIBinder* mExtension = nullptr;  // guarded by mExtensionLock; a strong reference
};

// The special codes a binder object answers besides user transactions.
inline constexpr transaction_code_t kPingTransaction = 0x5F504E47;          // '_PNG'
inline constexpr transaction_code_t kDumpTransaction = 0x5F444D50;          // '_DMP'
inline constexpr transaction_code_t kShellCommandTransaction = 0x5F434D44;  // '_CMD'
inline constexpr transaction_code_t kInterfaceTransaction = 0x5F4E5446;     // '_NTF'
inline constexpr transaction_code_t kExtensionTransaction = 0x5F455854;     // '_EXT'
inline constexpr transaction_code_t kDebugPidTransaction = 0x5F504944;      // '_PID'

inline bool isUserCommand(transaction_code_t code) {
    return code >= FIRST_CALL_TRANSACTION && code <= LAST_CALL_TRANSACTION;
}

}  // namespace abinder
