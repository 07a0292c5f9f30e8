#pragma once

#include <android/binder_auto_utils.h>

#include <atomic>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "LuxSource.h"

namespace sensord {

// Reports the latest lux read from a file descriptor, one value per line (standard input for
// --stdin). Nothing is reported before the first valid line. Bad lines are reported through the
// error sink as "<name>:<line>: <problem>" and skipped; end of input keeps the last value.
class LineLuxSource : public LuxSource {
public:
    using ErrorSink = std::function<void(const std::string&)>;

    // Takes ownership of fd and starts the reader thread.
    LineLuxSource(int fd, std::string name, ErrorSink errorSink);
    // Stops and joins the reader, even while it waits for input.
    ~LineLuxSource() override;
    LineLuxSource(const LineLuxSource&) = delete;
    LineLuxSource& operator=(const LineLuxSource&) = delete;

    std::optional<float> luxAt(std::chrono::nanoseconds elapsed) override;

    // Lines taken so far, valid or not; lets callers wait for input to be consumed.
    int linesRead() const { return mLinesRead.load(); }

private:
    void readLoop();
    void takeLine(const std::string& line);

    const ::ndk::ScopedFileDescriptor mFd;
    ::ndk::ScopedFileDescriptor mStopRead;  // readable once the reader must stop
    ::ndk::ScopedFileDescriptor mStopWrite;
    const std::string mName;
    const ErrorSink mErrorSink;

    std::mutex mLock;
    std::optional<float> mLux;  // guarded by mLock

    std::atomic<int> mLinesRead{0};
    std::thread mReader;
};

}  // namespace sensord
