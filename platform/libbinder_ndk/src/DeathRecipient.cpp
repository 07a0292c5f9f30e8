#include "DeathRecipient.h"

#include <algorithm>

#include "ABpBinder.h"
#include "RefCounts.h"

namespace abinder {

DeathLink::DeathLink(const std::shared_ptr<RecipientCore>& parent, RefCounts* who, void* cookie,
                     AIBinder_DeathRecipient_onBinderDied onDied,
                     AIBinder_DeathRecipient_onBinderUnlinked onUnlinked)
    : mParent(parent), mWho(who), mCookie(cookie), mOnDied(onDied), mOnUnlinked(onUnlinked) {
    mWho->incWeak();
}

DeathLink::~DeathLink() {
    mWho->decWeak();
    if (mOnUnlinked != nullptr) mOnUnlinked(mCookie);
}

void DeathLink::binderDied() {
    std::shared_ptr<RecipientCore> parent = mParent.lock();
    if (parent == nullptr) return;
    if (mOnDied != nullptr) mOnDied(mCookie);
    parent->remove(this);
}

void RecipientCore::remove(const DeathLink* link) {
    std::shared_ptr<DeathLink> removed;  // released after the lock: its destructor calls out
    std::lock_guard<std::mutex> guard(lock);
    auto it = std::find_if(links.begin(), links.end(),
                           [link](const std::shared_ptr<DeathLink>& l) { return l.get() == link; });
    if (it == links.end()) return;
    removed = *it;
    links.erase(it);
}

}  // namespace abinder

using abinder::ABpBinder;
using abinder::DeathLink;

AIBinder_DeathRecipient::AIBinder_DeathRecipient(AIBinder_DeathRecipient_onBinderDied onDied)
    : mCore(std::make_shared<abinder::RecipientCore>(onDied)) {}

AIBinder_DeathRecipient::~AIBinder_DeathRecipient() {
    std::vector<std::shared_ptr<DeathLink>> links;
    {
        std::lock_guard<std::mutex> guard(mCore->lock);
        links.swap(mCore->links);
    }
    for (const std::shared_ptr<DeathLink>& link : links) {
        if (!link->who()->attemptIncStrong()) continue;
        AIBinder* binder = link->who()->object();
        if (ABpBinder* proxy = binder->asABpBinder(); proxy != nullptr) proxy->unlinkToDeath(link);
        binder->refs()->decStrong();
    }
}

void AIBinder_DeathRecipient::setOnUnlinked(AIBinder_DeathRecipient_onBinderUnlinked onUnlinked) {
    std::lock_guard<std::mutex> guard(mCore->lock);
    mCore->onUnlinked = onUnlinked;
}

binder_status_t AIBinder_DeathRecipient::linkToDeath(AIBinder* binder, void* cookie) {
    AIBinder_DeathRecipient_onBinderUnlinked onUnlinked;
    {
        std::lock_guard<std::mutex> guard(mCore->lock);
        onUnlinked = mCore->onUnlinked;
    }
    auto link =
            std::make_shared<DeathLink>(mCore, binder->refs(), cookie, mCore->onDied, onUnlinked);
    // Local objects never die on their own: there is nothing to link to.
    ABpBinder* proxy = binder->asABpBinder();
    if (proxy == nullptr) return STATUS_INVALID_OPERATION;

    {
        std::lock_guard<std::mutex> guard(mCore->lock);
        mCore->links.push_back(link);
    }
    binder_status_t status = proxy->linkToDeath(link);
    if (status != STATUS_OK) mCore->remove(link.get());
    return status;
}

binder_status_t AIBinder_DeathRecipient::unlinkToDeath(AIBinder* binder, void* cookie) {
    std::shared_ptr<DeathLink> link;
    {
        std::lock_guard<std::mutex> guard(mCore->lock);
        auto it = std::find_if(mCore->links.begin(), mCore->links.end(),
                               [&](const std::shared_ptr<DeathLink>& l) {
                                   return l->who() == binder->refs() && l->cookie() == cookie;
                               });
        if (it == mCore->links.end()) return STATUS_NAME_NOT_FOUND;
        link = *it;
        mCore->links.erase(it);
    }
    if (ABpBinder* proxy = binder->asABpBinder(); proxy != nullptr) proxy->unlinkToDeath(link);
    return STATUS_OK;
}
