#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <vector>

namespace sysbench {

// When one-way binder transactions to one process were sent, from the kernel's binder
// tracepoint on the monotonic trace clock (comparable with CLOCK_MONOTONIC). Needs root and
// tracefs; restores the tracer on destruction.
class TransactionTrace {
public:
    explicit TransactionTrace(pid_t destination);
    ~TransactionTrace();
    TransactionTrace(const TransactionTrace&) = delete;
    TransactionTrace& operator=(const TransactionTrace&) = delete;

    bool ok() const { return mOk; }
    void clear();
    // Send times in nanoseconds, oldest first, since the last clear().
    std::vector<int64_t> onewaySendTimes() const;

    static std::vector<int64_t> parse(const std::string& trace);

private:
    bool write(const std::string& file, const std::string& text) const;

    std::string mRoot;
    std::string mOldClock;
    bool mOk = false;
};

}  // namespace sysbench
