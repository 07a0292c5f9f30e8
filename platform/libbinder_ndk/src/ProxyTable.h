#pragma once

#include <stdint.h>

#include <map>
#include <memory>
#include <mutex>

struct AIBinder;

namespace abinder {

class RefCounts;
class Transport;

// Handle -> proxy map of one transport, so each remote object has at most one live proxy. Entries
// hold a weak reference; a proxy whose last strong reference is gone is replaced on next lookup.
class ProxyTable {
public:
    ProxyTable() = default;
    ~ProxyTable();

    ProxyTable(const ProxyTable&) = delete;
    ProxyTable& operator=(const ProxyTable&) = delete;

    // A new strong reference to the proxy for handle.
    AIBinder* getOrCreate(const std::shared_ptr<Transport>& transport, uint32_t handle);
    // Called by a dying proxy; ignored if the entry already belongs to a newer proxy.
    void remove(uint32_t handle, RefCounts* refs);
    size_t size();

private:
    std::mutex mLock;
    std::map<uint32_t, RefCounts*> mEntries;  // guarded by mLock; each holds one weak reference
};

}  // namespace abinder
