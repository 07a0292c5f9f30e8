#include "AllocationCounter.h"

#include <cutils/properties.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/system_properties.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

namespace {

std::string makeStore() {
    std::string pattern = (std::filesystem::temp_directory_path() / "cutils-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) return "";
    return pattern;
}

std::string get(const char* name) {
    char value[PROP_VALUE_MAX];
    __system_property_get(name, value);
    return value;
}

// Runs `body` in a child process and returns its exit status (0 when it succeeded).
template <typename Body>
int inChild(Body body) {
    pid_t pid = fork();
    if (pid == 0) _exit(body() ? 0 : 1);
    int status = -1;
    waitpid(pid, &status, 0);
    return status;
}

bool setInChild(const char* name, const char* value) {
    return inChild([&] { return __system_property_set(name, value) == 0; }) == 0;
}

class PropertyCache : public ::testing::Test {
protected:
    void SetUp() override {
        mStore = makeStore();
        ASSERT_FALSE(mStore.empty());
        setenv("TPS_PROPERTY_DIR", mStore.c_str(), 1);
    }
    void TearDown() override {
        unsetenv("TPS_PROPERTY_DIR");
        std::error_code ignored;
        std::filesystem::remove_all(mStore, ignored);
    }

    std::string mStore;
};

TEST_F(PropertyCache, EveryProcessSeesASetAtItsNextRead) {
    EXPECT_EQ("", get("vendor.x")) << "absent, and remembered as absent";
    ASSERT_TRUE(setInChild("vendor.x", "1"));
    EXPECT_EQ("1", get("vendor.x"));
    EXPECT_EQ("1", get("vendor.x"));
    ASSERT_TRUE(setInChild("vendor.x", "2"));
    EXPECT_EQ("2", get("vendor.x"));
    ASSERT_TRUE(setInChild("vendor.y", "other"));
    EXPECT_EQ("2", get("vendor.x"));
    EXPECT_EQ("other", get("vendor.y"));
    EXPECT_EQ(7, property_get_int32("vendor.n", 7));
    ASSERT_TRUE(setInChild("vendor.n", "42"));
    EXPECT_EQ(42, property_get_int32("vendor.n", 7));

    // The other way round: a child holding copies from before the fork sees the parent's set.
    int toChild[2];
    int toParent[2];
    ASSERT_EQ(0, pipe(toChild));
    ASSERT_EQ(0, pipe(toParent));
    pid_t pid = fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
        char byte = 0;
        bool ok = get("vendor.x") == "2";
        ok = write(toParent[1], &byte, 1) == 1 && ok;
        ok = read(toChild[0], &byte, 1) == 1 && ok;
        _exit(ok && get("vendor.x") == "3" ? 0 : 1);
    }
    char byte = 0;
    ASSERT_EQ(1, read(toParent[0], &byte, 1));
    EXPECT_EQ(0, __system_property_set("vendor.x", "3"));
    ASSERT_EQ(1, write(toChild[1], &byte, 1));
    int status = -1;
    waitpid(pid, &status, 0);
    EXPECT_EQ(0, status) << "the child kept its old copy";
    for (int fd : {toChild[0], toChild[1], toParent[0], toParent[1]}) close(fd);
}

TEST_F(PropertyCache, SwitchingStoresNeverMixesTheirValues) {
    ASSERT_EQ(0, __system_property_set("vendor.s", "first"));
    EXPECT_EQ("first", get("vendor.s"));

    // A store made by hand, without the serial file, and one that does not exist yet.
    std::string other = makeStore();
    std::ofstream(other + "/vendor.s") << "by-hand";
    setenv("TPS_PROPERTY_DIR", other.c_str(), 1);
    EXPECT_EQ("by-hand", get("vendor.s"));
    std::string later = other + "/later";
    setenv("TPS_PROPERTY_DIR", later.c_str(), 1);
    EXPECT_EQ("", get("vendor.s"));
    std::filesystem::create_directory(later);
    std::ofstream(later + "/vendor.s") << "appeared";
    EXPECT_EQ("appeared", get("vendor.s")) << "an absence seen without a serial was kept";

    // While this process looked elsewhere, another one changed the first store.
    setenv("TPS_PROPERTY_DIR", mStore.c_str(), 1);
    ASSERT_TRUE(setInChild("vendor.s", "second"));
    EXPECT_EQ("second", get("vendor.s"));

    // Neither the serial file nor temporary files show up as properties.
    std::vector<std::string> listed;
    property_list(
            [](const char* key, const char*, void* cookie) {
                static_cast<std::vector<std::string>*>(cookie)->push_back(key);
            },
            &listed);
    EXPECT_EQ(std::vector<std::string>{"vendor.s"}, listed);
    std::filesystem::remove_all(other);
}

TEST_F(PropertyCache, RepeatedReadsAllocateNothing) {
    ASSERT_EQ(0, __system_property_set("persist.vendor.tavix.loglevel", "3"));
    EXPECT_EQ(3, property_get_int32("persist.vendor.tavix.loglevel", 2));
    EXPECT_EQ(2, property_get_int32("persist.vendor.absent.for.a.long.name", 2));

    size_t before = threadAllocations();
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(3, property_get_int32("persist.vendor.tavix.loglevel", 2));
        EXPECT_EQ(2, property_get_int32("persist.vendor.absent.for.a.long.name", 2));
    }
    EXPECT_EQ(before, threadAllocations());

    // Nor does the read again after another process's set.
    ASSERT_TRUE(setInChild("persist.vendor.tavix.loglevel", "4"));
    before = threadAllocations();
    EXPECT_EQ(4, property_get_int32("persist.vendor.tavix.loglevel", 2));
    EXPECT_EQ(before, threadAllocations());
}

// Readers on several threads while one thread counts up: no thread ever sees the count go back,
// and each sees the last value once the writer is done.
TEST_F(PropertyCache, ThreadsReadingDuringSetsSeeTheValuesInOrder) {
    constexpr int kLast = 200;
    ASSERT_EQ(0, __system_property_set("vendor.count", "0"));
    std::atomic<bool> done{false};
    std::atomic<int> regressions{0};
    std::vector<std::thread> readers;
    for (int r = 0; r < 3; ++r) {
        readers.emplace_back([&] {
            int seen = 0;
            while (!done.load()) {
                int now = property_get_int32("vendor.count", -1);
                if (now < seen) ++regressions;
                seen = now;
            }
            if (property_get_int32("vendor.count", -1) != kLast) ++regressions;
        });
    }
    for (int i = 1; i <= kLast; ++i) {
        ASSERT_EQ(0, __system_property_set("vendor.count", std::to_string(i).c_str()));
    }
    done = true;
    for (std::thread& t : readers) t.join();
    EXPECT_EQ(0, regressions.load());
}

}  // namespace
