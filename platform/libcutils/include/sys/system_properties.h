#pragma once

// Host stand-in for the C library's system property interface, backed by a directory shared by
// every process on the machine (see src/SystemProperties.cpp).

#ifdef __cplusplus
extern "C" {
#endif

#define PROP_NAME_MAX 32
#define PROP_VALUE_MAX 92

// Copies the value (at most PROP_VALUE_MAX bytes with its NUL) and returns its length; an unset
// property gives the empty string and 0.
int __system_property_get(const char* name, char* value);

// Returns 0 when the value was stored, -1 when it was refused.
int __system_property_set(const char* name, const char* value);

#ifdef __cplusplus
}
#endif
