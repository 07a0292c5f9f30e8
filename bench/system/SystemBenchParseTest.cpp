// The two readers whose mistakes would silently skew the figures: smaps classification and the
// binder trace lines.
#include <gtest/gtest.h>

#include "ProcessMemory.h"
#include "TransactionTrace.h"

namespace sysbench {
namespace {

std::string mapping(const std::string& header, long rss, long pss = 0, long dirty = 0) {
    return header + "\nSize: 99 kB\nRss: " + std::to_string(rss) +
           " kB\nPss: " + std::to_string(pss) + " kB\nPrivate_Dirty: " + std::to_string(dirty) +
           " kB\n";
}

TEST(ProcessMemoryTest, SplitsMappingsByWhatTheyHold) {
    const std::string smaps =
            mapping("55d0-55d1 r-xp 00009000 00:16 10717067  /srv/tps-service", 400, 200) +
            mapping("55e0-55f0 rw-p 00000000 00:00 0  [heap]", 24, 24, 24) +
            // A malloc arena and its reserve: the mapping after the reserve is no stack.
            mapping("7f5710000000-7f5710021000 rw-p 00000000 00:00 0", 32, 32, 32) +
            mapping("7f5710021000-7f5714000000 ---p 00000000 00:00 0", 0) +
            mapping("7f5714000000-7f5714010000 rw-p 00000000 00:00 0", 8, 8, 8) +
            // A thread stack above its guard page.
            mapping("7f571d44a000-7f571d44b000 ---p 00000000 00:00 0", 0) +
            mapping("7f571d44b000-7f571dc4b000 rw-p 00000000 00:00 0", 2064, 2064, 2064) +
            "AnonHugePages: 2048 kB\n" +
            mapping("7f571e44c000-7f571e54a000 r--p 00000000 00:05 97  /dev/binder", 4, 4) +
            mapping("7fff828dc000-7fff828fd000 rw-p 00000000 00:00 0  [stack]", 20, 20, 20);
    const ProcessMemory m =
            ProcessMemory::parse(smaps, "Name:\tsvc\nVmRSS:\t    1932 kB\nThreads:\t3\n");
    EXPECT_EQ(m.vmRss, 1932);
    EXPECT_EQ(m.threads, 3);
    EXPECT_EQ(m.heap, 24);
    EXPECT_EQ(m.otherAnon, 40);
    EXPECT_EQ(m.stacks, 2084);
    EXPECT_EQ(m.hugePages, 2048);
    EXPECT_EQ(m.files, 404);
    EXPECT_EQ(m.rss, 2552);
    EXPECT_EQ(m.pss, 2352);
    EXPECT_EQ(m.privateDirty, 2148);
}

TEST(ProcessMemoryTest, MissingProcessReadsAsNothing) {
    const ProcessMemory m = ProcessMemory::read(-1);
    EXPECT_EQ(m.rss, 0);
    EXPECT_EQ(m.vmRss, 0);
}

TEST(TransactionTraceTest, KeepsOnlyOnewaySendTimesInNanoseconds) {
    const std::string trace =
            "# tracer: nop\n"
            "#           TASK-PID     CPU#  |||||  TIMESTAMP  FUNCTION\n"
            "  sensord-57  [001] ....   812.004211: binder_transaction: transaction=9 "
            "dest_node=3 dest_proc=45 dest_thread=0 reply=0 flags=0x11 code=0x1\n"
            "  system_bench-60 [000] .... 812.004300: binder_transaction: transaction=10 "
            "dest_node=2 dest_proc=45 dest_thread=0 reply=0 flags=0x10 code=0x1\n"
            "  sensord-57  [001] ....   813.000001: binder_transaction_received: "
            "transaction=9\n"
            "  sensord-57  [001] ....     garbage: binder_transaction: transaction=11 "
            "flags=0x1 code=0x1\n"
            "  sensord-57  [000] d..1. 9.123456789: binder_transaction: transaction=12 "
            "dest_node=3 dest_proc=45 dest_thread=0 reply=0 flags=0x1 code=0x1\n";
    EXPECT_EQ(TransactionTrace::parse(trace), (std::vector<int64_t>{812004211000, 9123456789}));
}

}  // namespace
}  // namespace sysbench
