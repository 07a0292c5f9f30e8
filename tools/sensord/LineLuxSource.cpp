#include "LineLuxSource.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include "TextParsing.h"

namespace sensord {

LineLuxSource::LineLuxSource(int fd, std::string name, ErrorSink errorSink)
    : mFd(fd), mName(std::move(name)), mErrorSink(std::move(errorSink)) {
    int stopPipe[2];
    if (pipe(stopPipe) != 0) {
        // Without it the reader could never be stopped.
        perror("sensord: pipe");
        abort();
    }
    mStopRead.set(stopPipe[0]);
    mStopWrite.set(stopPipe[1]);
    mReader = std::thread([this] { readLoop(); });
}

LineLuxSource::~LineLuxSource() {
    const char stop = 1;
    (void)!write(mStopWrite.get(), &stop, 1);
    mReader.join();
}

std::optional<float> LineLuxSource::luxAt(std::chrono::nanoseconds) {
    std::lock_guard<std::mutex> lock(mLock);
    return mLux;
}

void LineLuxSource::takeLine(const std::string& line) {
    const int lineNumber = mLinesRead.load() + 1;
    const std::string_view text = trim(line);
    float lux = 0;
    if (text.empty() || text.front() == '#') {
        // Nothing to take.
    } else if (!parseFloat(text, &lux)) {
        mErrorSink(mName + ":" + std::to_string(lineNumber) + ": lux is not a number: '" +
                   std::string(text) + "'");
    } else {
        std::lock_guard<std::mutex> lock(mLock);
        mLux = lux;
    }
    mLinesRead.store(lineNumber);
}

void LineLuxSource::readLoop() {
    std::string pending;
    char buffer[256];
    for (;;) {
        pollfd fds[2] = {{mFd.get(), POLLIN, 0}, {mStopRead.get(), POLLIN, 0}};
        if (poll(fds, 2, -1) < 0) {
            if (errno == EINTR) continue;
            break;
        }
        if (fds[1].revents != 0) break;
        if (fds[0].revents == 0) continue;

        const ssize_t n = read(mFd.get(), buffer, sizeof(buffer));
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) {
            // End of input: a last line without a newline still counts.
            if (!pending.empty()) takeLine(pending);
            break;
        }
        pending.append(buffer, static_cast<size_t>(n));
        size_t newline;
        while ((newline = pending.find('\n')) != std::string::npos) {
            takeLine(pending.substr(0, newline));
            pending.erase(0, newline + 1);
        }
    }
}

}  // namespace sensord
