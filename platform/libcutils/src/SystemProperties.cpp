// Host property store. Every property is one file named after it in a directory shared by all
// processes of the machine. Writers build the value in a private temporary file and rename it into
// place, so a reader sees either the old or the new value in full, whichever process wrote it.
// "ro.*" values are published with link(), which fails if the name exists: of two racing writers
// exactly one wins and the value can never change afterwards.
//
// The store survives process restarts, so "persist.*" properties behave as on a device. Unlike a
// device, every other property survives too until the directory is removed: a fresh directory is
// the host's equivalent of a reboot.
//
// Reads are answered from this process's copies while the store's serial (PropertyArea) holds
// still; every set bumps it once the value is in place. A process whose store directory is
// removed and made again under the same name has missed that reboot: it keeps its copies until it
// uses another store. Tests give each store a fresh name.

#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/system_properties.h>
#include <unistd.h>

#include <atomic>
#include <string>

#include "PropertyCache.h"
#include "PropertyStore.h"
#include "UniqueFd.h"

#ifndef TPS_DEFAULT_PROPERTY_DIR
#error "TPS_DEFAULT_PROPERTY_DIR must name the default property directory"
#endif

namespace {

using host_properties::UniqueFd;

// Mirrors the character set init accepts, which also keeps names safe as file names: no "/",
// and no leading "." (temporary files start with one).
bool isValidName(const char* name) {
    size_t len = strlen(name);
    if (len == 0 || name[0] == '.' || name[len - 1] == '.') return false;
    for (size_t i = 0; i < len; ++i) {
        char c = name[i];
        if (c == '.') {
            if (name[i + 1] == '.') return false;
            continue;
        }
        bool ok = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                  c == '_' || c == '-' || c == '@' || c == ':';
        if (!ok) return false;
    }
    return true;
}

bool isReadOnlyName(const char* name) {
    return strncmp(name, "ro.", 3) == 0;
}

bool makeDirectories(const std::string& path) {
    std::string partial;
    size_t pos = 0;
    while (pos != std::string::npos) {
        pos = path.find('/', pos + 1);
        partial = path.substr(0, pos);
        if (partial.empty()) continue;
        if (mkdir(partial.c_str(), 0777) != 0 && errno != EEXIST) return false;
    }
    struct stat st {};
    return stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

bool writeAll(int fd, const char* data, size_t size) {
    size_t done = 0;
    while (done < size) {
        ssize_t n = write(fd, data + done, size - done);
        if (n < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        done += static_cast<size_t>(n);
    }
    return true;
}

std::string temporaryName(const std::string& dir) {
    static std::atomic<unsigned> counter{0};
    return dir + "/.tmp-" + std::to_string(getpid()) + "-" + std::to_string(syscall(SYS_gettid)) +
           "-" + std::to_string(counter.fetch_add(1));
}

}  // namespace

namespace host_properties {

const char* storeDirectoryPath() {
    const char* env = getenv("TPS_PROPERTY_DIR");
    if (env != nullptr && env[0] != '\0') return env;
    return TPS_DEFAULT_PROPERTY_DIR;
}

std::string storeDirectory() {
    return storeDirectoryPath();
}

int readValueFile(const char* dir, const char* name, char* value) {
    value[0] = '\0';
    char path[PATH_MAX];
    int n = snprintf(path, sizeof(path), "%s/%s", dir, name);
    if (n < 0 || static_cast<size_t>(n) >= sizeof(path)) return 0;
    UniqueFd fd(open(path, O_RDONLY | O_CLOEXEC));
    if (!fd.ok()) return 0;
    size_t got = 0;
    while (got < PROP_VALUE_MAX - 1) {
        ssize_t r = read(fd.get(), value + got, PROP_VALUE_MAX - 1 - got);
        if (r < 0) {
            if (errno == EINTR) continue;
            got = 0;
            break;
        }
        if (r == 0) break;
        got += static_cast<size_t>(r);
    }
    value[got] = '\0';
    // A value never holds a NUL; stop at one should a file have been edited by hand.
    return static_cast<int>(strlen(value));
}

int writeValueFile(const char* dir, const char* name, const char* value) {
    std::string path = std::string(dir) + "/" + name;
    bool readOnly = isReadOnlyName(name);
    if (readOnly && access(path.c_str(), F_OK) == 0) return -1;

    std::string tmp = temporaryName(dir);
    {
        UniqueFd fd(open(tmp.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644));
        if (!fd.ok()) return -1;
        if (!writeAll(fd.get(), value, strlen(value))) {
            unlink(tmp.c_str());
            return -1;
        }
    }
    int result = readOnly ? link(tmp.c_str(), path.c_str()) : rename(tmp.c_str(), path.c_str());
    if (readOnly || result != 0) unlink(tmp.c_str());
    return result == 0 ? 0 : -1;
}

}  // namespace host_properties

extern "C" {

int __system_property_get(const char* name, char* value) {
    value[0] = '\0';
    if (name == nullptr || !isValidName(name)) return 0;
    return host_properties::PropertyCache::instance().get(host_properties::storeDirectoryPath(),
                                                          name, value);
}

int __system_property_set(const char* name, const char* value) {
    if (name == nullptr || value == nullptr || !isValidName(name)) return -1;
    if (strlen(value) >= PROP_VALUE_MAX) return -1;

    const char* dir = host_properties::storeDirectoryPath();
    if (!makeDirectories(dir)) return -1;
    return host_properties::PropertyCache::instance().set(dir, name, value);
}

}  // extern "C"
