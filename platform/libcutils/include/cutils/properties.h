#pragma once

// Host stand-in for the platform's property convenience layer.

#include <stdint.h>
#include <sys/system_properties.h>

#ifdef __cplusplus
extern "C" {
#endif

#define PROPERTY_KEY_MAX PROP_NAME_MAX
#define PROPERTY_VALUE_MAX PROP_VALUE_MAX

// Copies the value into `value` (PROPERTY_VALUE_MAX bytes) and returns its length. An unset or
// empty property copies `default_value` instead (or the empty string when it is null).
int property_get(const char* key, char* value, const char* default_value);

// Returns 0 on success, a negative value when the property was refused.
int property_set(const char* key, const char* value);

// "1", "y", "yes", "on", "true" are true; "0", "n", "no", "off", "false" are false; anything
// else, or an unset property, gives `default_value`.
int8_t property_get_bool(const char* key, int8_t default_value);

// Base inferred from the prefix (0x.., 0..), trailing text ignored. Unset, unparsable or
// out-of-range values give `default_value`.
int64_t property_get_int64(const char* key, int64_t default_value);
int32_t property_get_int32(const char* key, int32_t default_value);

int property_list(void (*propfn)(const char* key, const char* value, void* cookie), void* cookie);

#ifdef __cplusplus
}
#endif
