#include "PropertyCache.h"

#include <pthread.h>
#include <string.h>

#include <string_view>

#include "PropertyStore.h"

namespace host_properties {

PropertyCache& PropertyCache::instance() {
    static PropertyCache* const cache = [] {
        auto* created = new PropertyCache();
        // A child forked while another thread held the lock would wait forever on its first read.
        pthread_atfork([] { instance().mLock.lock(); }, [] { instance().mLock.unlock(); },
                       [] { instance().mLock.unlock(); });
        return created;
    }();
    return *cache;
}

bool PropertyCache::selectStoreLocked(const char* dir) {
    if (mDir != dir) {
        mEntries.clear();
        mArea.reset();
        mDir = dir;
    }
    // Retried on every call while missing: the first set in the store creates it.
    if (mArea == nullptr) mArea = PropertyArea::map(dir);
    return mArea != nullptr;
}

int PropertyCache::get(const char* dir, const char* name, char* value) {
    std::lock_guard<std::mutex> lock(mLock);
    if (!selectStoreLocked(dir)) return readValueFile(dir, name, value);

    // Taken before the file is read: a set that lands meanwhile moves it, so the next read
    // reads the file again.
    const uint64_t serial = mArea->serial();
    auto it = mEntries.find(std::string_view(name));
    if (it != mEntries.end() && it->second.serial == serial) {
        memcpy(value, it->second.value, static_cast<size_t>(it->second.length) + 1);
        return it->second.length;
    }

    int length = readValueFile(dir, name, value);
    if (it == mEntries.end()) {
        if (mEntries.size() >= kMaxEntries) return length;
        it = mEntries.emplace(name, Entry{}).first;
    }
    Entry& entry = it->second;
    entry.serial = serial;
    entry.length = length;
    memcpy(entry.value, value, static_cast<size_t>(length) + 1);
    return length;
}

int PropertyCache::set(const char* dir, const char* name, const char* value) {
    std::lock_guard<std::mutex> lock(mLock);
    // A value other processes could not notice would break their next read, so no area, no set.
    if (!selectStoreLocked(dir) || !mArea->writable()) return -1;
    if (writeValueFile(dir, name, value) != 0) return -1;
    mArea->bump();
    return 0;
}

}  // namespace host_properties
