#pragma once

#include <unistd.h>

namespace host_properties {

// Owns one file descriptor; -1 means none.
class UniqueFd {
public:
    explicit UniqueFd(int fd = -1) : mFd(fd) {}
    ~UniqueFd() { reset(); }
    UniqueFd(const UniqueFd&) = delete;
    UniqueFd& operator=(const UniqueFd&) = delete;

    int get() const { return mFd; }
    bool ok() const { return mFd >= 0; }
    void reset(int fd = -1) {
        if (mFd >= 0) close(mFd);
        mFd = fd;
    }

private:
    int mFd;
};

}  // namespace host_properties
