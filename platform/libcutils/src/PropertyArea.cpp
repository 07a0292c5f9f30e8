#include "PropertyArea.h"

#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <stdio.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>

#include "UniqueFd.h"

namespace host_properties {

namespace {

constexpr char kAreaName[] = ".serial";
constexpr size_t kAreaSize = sizeof(uint64_t);

// Other processes touch the serial through their own mappings, so only a lock-free atomic works.
static_assert(std::atomic_ref<uint64_t>::is_always_lock_free);

// Publishes a zeroed area under its final name in one step: link() fails when a racing process
// published first, and then both use that one.
bool createArea(const char* dir, const char* path) {
    static std::atomic<unsigned> counter{0};
    char tmp[PATH_MAX];
    int n = snprintf(tmp, sizeof(tmp), "%s/.tmp-serial-%d-%ld-%u", dir, getpid(),
                     static_cast<long>(syscall(SYS_gettid)), counter.fetch_add(1));
    if (n < 0 || static_cast<size_t>(n) >= sizeof(tmp)) return false;
    UniqueFd fd(open(tmp, O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    if (!fd.ok()) return false;
    // Whoever may replace property files in the directory must be able to bump the serial too.
    bool made = fchmod(fd.get(), 0666) == 0 && ftruncate(fd.get(), kAreaSize) == 0 &&
                (link(tmp, path) == 0 || errno == EEXIST);
    unlink(tmp);
    return made;
}

}  // namespace

std::unique_ptr<PropertyArea> PropertyArea::map(const char* dir) {
    char path[PATH_MAX];
    int n = snprintf(path, sizeof(path), "%s/%s", dir, kAreaName);
    if (n < 0 || static_cast<size_t>(n) >= sizeof(path)) return nullptr;

    bool writable = true;
    UniqueFd fd(open(path, O_RDWR | O_CLOEXEC));
    if (!fd.ok() && errno == ENOENT) {
        if (!createArea(dir, path)) return nullptr;
        fd.reset(open(path, O_RDWR | O_CLOEXEC));
    }
    if (!fd.ok() && (errno == EACCES || errno == EROFS)) {
        writable = false;
        fd.reset(open(path, O_RDONLY | O_CLOEXEC));
    }
    if (!fd.ok()) return nullptr;

    // A shorter file would fault on access; a damaged area means no caching, not a crash.
    struct stat st {};
    if (fstat(fd.get(), &st) != 0 || !S_ISREG(st.st_mode) ||
        st.st_size < static_cast<off_t>(kAreaSize)) {
        return nullptr;
    }
    int protection = PROT_READ | (writable ? PROT_WRITE : 0);
    void* base = mmap(nullptr, kAreaSize, protection, MAP_SHARED, fd.get(), 0);
    if (base == MAP_FAILED) return nullptr;
    return std::unique_ptr<PropertyArea>(new PropertyArea(static_cast<uint64_t*>(base), writable));
}

PropertyArea::~PropertyArea() {
    munmap(mSerial, kAreaSize);
}

uint64_t PropertyArea::serial() const {
    return std::atomic_ref<uint64_t>(*mSerial).load();
}

void PropertyArea::bump() {
    std::atomic_ref<uint64_t>(*mSerial).fetch_add(1);
}

}  // namespace host_properties
