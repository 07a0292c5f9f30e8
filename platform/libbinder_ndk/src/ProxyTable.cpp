#include "ProxyTable.h"

#include "ABpBinder.h"
#include "RefCounts.h"
#include "Transport.h"

namespace abinder {

ProxyTable::~ProxyTable() {
    std::lock_guard<std::mutex> lock(mLock);
    for (auto& [handle, refs] : mEntries) refs->decWeak();
    mEntries.clear();
}

AIBinder* ProxyTable::getOrCreate(const std::shared_ptr<Transport>& transport, uint32_t handle) {
    std::lock_guard<std::mutex> lock(mLock);
    auto it = mEntries.find(handle);
    if (it != mEntries.end()) {
        if (it->second->attemptIncStrong()) return it->second->object();
        // The old proxy is being destroyed; its own remove() will find the new entry.
        it->second->decWeak();
        mEntries.erase(it);
    }
    AIBinder* proxy = new ABpBinder(transport, handle);
    proxy->refs()->incWeak();
    mEntries.emplace(handle, proxy->refs());
    return proxy;
}

void ProxyTable::remove(uint32_t handle, RefCounts* refs) {
    RefCounts* dropped = nullptr;
    {
        std::lock_guard<std::mutex> lock(mLock);
        auto it = mEntries.find(handle);
        if (it == mEntries.end() || it->second != refs) return;
        dropped = it->second;
        mEntries.erase(it);
    }
    dropped->decWeak();
}

size_t ProxyTable::size() {
    std::lock_guard<std::mutex> lock(mLock);
    return mEntries.size();
}

}  // namespace abinder
