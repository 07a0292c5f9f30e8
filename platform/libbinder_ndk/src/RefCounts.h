#pragma once

#include <stdint.h>

#include <atomic>

struct AIBinder;

namespace abinder {

// The reference block of one AIBinder. The object dies with its last strong reference; the block
// outlives it until the last weak reference, so a weak holder can always try to promote. Every
// strong reference also counts as a weak one. The block's address is the object's stable key.
class RefCounts {
public:
    // Starts with one strong (and so one weak) reference owned by the creator.
    explicit RefCounts(AIBinder* object) : mObject(object) {}

    RefCounts(const RefCounts&) = delete;
    RefCounts& operator=(const RefCounts&) = delete;

    // Only valid while the caller holds a strong reference.
    void incStrong();
    // Destroys the object at the last strong reference (and the block at the last weak one).
    void decStrong();
    void incWeak();
    void decWeak();
    // Takes a strong reference unless the object is already gone.
    bool attemptIncStrong();

    int32_t strongCount() const { return mStrong.load(std::memory_order_relaxed); }
    int32_t weakCount() const { return mWeak.load(std::memory_order_relaxed); }

    // The object; only meaningful while a strong reference is held.
    AIBinder* object() const { return mObject; }

private:
    ~RefCounts() = default;

    std::atomic<int32_t> mStrong{1};
    std::atomic<int32_t> mWeak{1};
    AIBinder* const mObject;
};

}  // namespace abinder
