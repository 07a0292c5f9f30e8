#pragma once

// Test helpers shared by every test area: a log capture installed through the platform logger hook
// and a private property store per test.

#include <android/log.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tps::test {

struct LogLine {
    int priority;
    std::string tag;
    std::string text;
};

// While alive, every message that passes the platform's loggable check is recorded instead of
// being printed. Only one capture may be alive at a time; the destructor restores the default
// logger. Safe to use while other threads log.
class LogCapture {
public:
    // With `echo` the lines are also written to stderr as usual, which helps when debugging.
    explicit LogCapture(bool echo = false);
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    std::vector<LogLine> lines() const;
    std::vector<LogLine> linesWithTag(const std::string& tag) const;
    void clear();

    // Number of lines equal in all three fields.
    size_t count(int priority, const std::string& tag, const std::string& text) const;
    // Number of lines whose text contains `fragment`, whatever their priority and tag.
    size_t countContaining(const std::string& fragment) const;

    // For EXPECT_TRUE: on failure the message lists everything captured.
    ::testing::AssertionResult has(int priority, const std::string& tag,
                                   const std::string& text) const;
    ::testing::AssertionResult hasOnce(int priority, const std::string& tag,
                                       const std::string& text) const;
    ::testing::AssertionResult hasNoneContaining(const std::string& fragment) const;

    // All captured lines, one per line, as "P/TAG: text".
    std::string dump() const;

private:
    static void record(const __android_log_message* message);

    bool mEcho;
    std::vector<LogLine> mLines;  // GUARDED_BY(gCaptureLock in LogCapture.cpp)
};

// Points the property store at a fresh temporary directory for the object's lifetime, then
// restores the previous TPS_PROPERTY_DIR and deletes the directory. Create it before anything
// reads a property.
class ScopedPropertyDir {
public:
    ScopedPropertyDir();
    ~ScopedPropertyDir();
    ScopedPropertyDir(const ScopedPropertyDir&) = delete;
    ScopedPropertyDir& operator=(const ScopedPropertyDir&) = delete;

    const std::string& path() const { return mPath; }
    // Fails the current test if the store refuses the value.
    void set(const std::string& name, const std::string& value);
    std::string get(const std::string& name) const;
    void setLogLevel(int level);

private:
    std::string mPath;
    bool mHadPrevious = false;
    std::string mPrevious;
};

// Fixture for tests that look at log output under a known log level.
class LoggingTest : public ::testing::Test {
protected:
    ScopedPropertyDir mProperties;
    LogCapture mLog;
};

}  // namespace tps::test
