#include "BinderDevice.h"

#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace abinder::driver {

namespace {

int ioctlResult(int ret) {
    return ret < 0 ? -errno : 0;
}

std::string describe(const std::string& what, const std::string& path, int err) {
    return what + " " + path + ": " + strerror(err);
}

}  // namespace

std::unique_ptr<BinderDevice> BinderDevice::open(const std::string& path, std::string* error,
                                                 bool* missing) {
    *missing = false;
    UniqueFd fd(::open(path.c_str(), O_RDWR | O_CLOEXEC));
    if (fd.get() < 0) {
        *missing = errno == ENOENT;
        *error = describe("cannot open", path, errno);
        return nullptr;
    }
    binder_version version{};
    if (ioctl(fd.get(), BINDER_VERSION, &version) < 0) {
        *error = describe("BINDER_VERSION failed on", path, errno);
        return nullptr;
    }
    if (version.protocol_version != BINDER_CURRENT_PROTOCOL_VERSION) {
        *error = path + " speaks binder protocol " + std::to_string(version.protocol_version) +
                 ", not " + std::to_string(BINDER_CURRENT_PROTOCOL_VERSION);
        return nullptr;
    }
    // Replies to this process's own calls land here too, so even a pure client needs it.
    const size_t mappingSize = 1024 * 1024 - 2 * static_cast<size_t>(sysconf(_SC_PAGE_SIZE));
    void* mapping = mmap(nullptr, mappingSize, PROT_READ, MAP_PRIVATE | MAP_NORESERVE, fd.get(), 0);
    if (mapping == MAP_FAILED) {
        *error = describe("cannot map", path, errno);
        return nullptr;
    }
    std::unique_ptr<BinderDevice> device(
            new BinderDevice(path, std::move(fd), mapping, mappingSize));
    if (int err = device->setMaxThreads(kDefaultMaxThreads); err != 0) {
        *error = describe("BINDER_SET_MAX_THREADS failed on", path, -err);
        return nullptr;
    }
    // Optional: only changes which return a suspected oneway flood produces.
    uint32_t enable = 1;
    (void)ioctl(device->mFd.get(), BINDER_ENABLE_ONEWAY_SPAM_DETECTION, &enable);
    return device;
}

BinderDevice::BinderDevice(std::string path, UniqueFd fd, void* mapping, size_t mappingSize)
    : mPath(std::move(path)), mFd(std::move(fd)), mMapping(mapping), mMappingSize(mappingSize) {}

BinderDevice::~BinderDevice() {
    if (mMapping != nullptr) munmap(mMapping, mMappingSize);
}

std::string BinderDevice::name() const {
    const size_t slash = mPath.rfind('/');
    return slash == std::string::npos ? mPath : mPath.substr(slash + 1);
}

int BinderDevice::writeRead(binder_write_read* bwr) const {
    int ret;
    do {
        ret = ioctl(mFd.get(), BINDER_WRITE_READ, bwr);
    } while (ret < 0 && errno == EINTR);
    return ioctlResult(ret);
}

int BinderDevice::setMaxThreads(uint32_t count) const {
    return ioctlResult(ioctl(mFd.get(), BINDER_SET_MAX_THREADS, &count));
}

int BinderDevice::becomeContextManager() const {
    // The plain form: asking for security contexts on calls makes every call to the manager fail
    // on kernels whose security module cannot name the caller.
    int unused = 0;
    return ioctlResult(ioctl(mFd.get(), BINDER_SET_CONTEXT_MGR, &unused));
}

int BinderDevice::threadExit() const {
    int unused = 0;
    return ioctlResult(ioctl(mFd.get(), BINDER_THREAD_EXIT, &unused));
}

bool BinderDevice::extendedError(binder_extended_error* error) const {
    *error = {};
    return ioctl(mFd.get(), BINDER_GET_EXTENDED_ERROR, error) == 0;
}

void BinderDevice::wakeAll() const {
    UniqueFd copy(fcntl(mFd.get(), F_DUPFD_CLOEXEC, 0));
}

void BinderDevice::abandonAfterFork() {
    mMapping = nullptr;
    mFd.reset();
}

}  // namespace abinder::driver
