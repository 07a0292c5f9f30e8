#pragma once

#include <android/binder_ibinder.h>

#include <memory>
#include <mutex>
#include <vector>

namespace abinder {

class RefCounts;
struct RecipientCore;

// One (binder, cookie) registration of a death recipient. Shared by the recipient and the proxy
// it is linked to; onUnlinked runs when the last of them lets go, whether the link was made,
// refused, removed or consumed by a death.
class DeathLink {
public:
    DeathLink(const std::shared_ptr<RecipientCore>& parent, RefCounts* who, void* cookie,
              AIBinder_DeathRecipient_onBinderDied onDied,
              AIBinder_DeathRecipient_onBinderUnlinked onUnlinked);
    ~DeathLink();

    DeathLink(const DeathLink&) = delete;
    DeathLink& operator=(const DeathLink&) = delete;

    RefCounts* who() const { return mWho; }
    void* cookie() const { return mCookie; }

    // Runs onDied if the recipient still exists, then drops the recipient's hold on this link.
    void binderDied();

private:
    const std::weak_ptr<RecipientCore> mParent;
    RefCounts* const mWho;  // one weak reference
    void* const mCookie;
    const AIBinder_DeathRecipient_onBinderDied mOnDied;
    const AIBinder_DeathRecipient_onBinderUnlinked mOnUnlinked;
};

// State of an AIBinder_DeathRecipient that links may outlive.
struct RecipientCore {
    explicit RecipientCore(AIBinder_DeathRecipient_onBinderDied onDied) : onDied(onDied) {}

    void remove(const DeathLink* link);

    const AIBinder_DeathRecipient_onBinderDied onDied;

    std::mutex lock;
    AIBinder_DeathRecipient_onBinderUnlinked onUnlinked = nullptr;  // guarded by lock
    std::vector<std::shared_ptr<DeathLink>> links;                  // guarded by lock
};

}  // namespace abinder

struct AIBinder_DeathRecipient {
    explicit AIBinder_DeathRecipient(AIBinder_DeathRecipient_onBinderDied onDied);
    // Unlinks from every binder.
    ~AIBinder_DeathRecipient();

    binder_status_t linkToDeath(AIBinder* binder, void* cookie);
    binder_status_t unlinkToDeath(AIBinder* binder, void* cookie);
    void setOnUnlinked(AIBinder_DeathRecipient_onBinderUnlinked onUnlinked);

private:
    const std::shared_ptr<abinder::RecipientCore> mCore;
};
