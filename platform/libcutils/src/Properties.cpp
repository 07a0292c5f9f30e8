// The convenience layer over the system property calls, with the device library's return values.

#include <cutils/properties.h>
#include <dirent.h>
#include <errno.h>
#include <inttypes.h>
#include <stdlib.h>
#include <string.h>

#include <memory>
#include <string>

#include "PropertyStore.h"

namespace {

intmax_t getBounded(const char* key, intmax_t lower, intmax_t upper, intmax_t defaultValue) {
    if (key == nullptr) return defaultValue;
    char buf[PROPERTY_VALUE_MAX] = {};
    if (property_get(key, buf, "") <= 0) return defaultValue;

    int savedErrno = errno;
    errno = 0;
    char* end = nullptr;
    intmax_t result = strtoimax(buf, &end, 0);
    bool overflow = errno == ERANGE;
    errno = savedErrno;
    if (overflow || end == buf || result < lower || result > upper) return defaultValue;
    return result;
}

}  // namespace

extern "C" {

int property_get(const char* key, char* value, const char* default_value) {
    int len = __system_property_get(key, value);
    if (len > 0) return len;
    if (default_value == nullptr) return len;
    size_t copy = strnlen(default_value, PROPERTY_VALUE_MAX - 1);
    memcpy(value, default_value, copy);
    value[copy] = '\0';
    return static_cast<int>(copy);
}

int property_set(const char* key, const char* value) {
    return __system_property_set(key, value);
}

int8_t property_get_bool(const char* key, int8_t default_value) {
    if (key == nullptr) return default_value;
    char buf[PROPERTY_VALUE_MAX] = {};
    if (property_get(key, buf, "") <= 0) return default_value;
    for (const char* yes : {"1", "y", "yes", "on", "true"}) {
        if (strcmp(buf, yes) == 0) return 1;
    }
    for (const char* no : {"0", "n", "no", "off", "false"}) {
        if (strcmp(buf, no) == 0) return 0;
    }
    return default_value;
}

int64_t property_get_int64(const char* key, int64_t default_value) {
    return static_cast<int64_t>(getBounded(key, INT64_MIN, INT64_MAX, default_value));
}

int32_t property_get_int32(const char* key, int32_t default_value) {
    return static_cast<int32_t>(getBounded(key, INT32_MIN, INT32_MAX, default_value));
}

int property_list(void (*propfn)(const char* key, const char* value, void* cookie), void* cookie) {
    std::string dir = host_properties::storeDirectory();
    std::unique_ptr<DIR, int (*)(DIR*)> d(opendir(dir.c_str()), closedir);
    if (!d) return 0;
    while (dirent* entry = readdir(d.get())) {
        if (entry->d_name[0] == '.') continue;
        char value[PROPERTY_VALUE_MAX];
        __system_property_get(entry->d_name, value);
        propfn(entry->d_name, value, cookie);
    }
    return 0;
}

}  // extern "C"
