#include "BinderLog.h"

#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>

namespace abinder {

void fatal(const char* fmt, ...) {
    char message[512];
    va_list ap;
    va_start(ap, fmt);
    vsnprintf(message, sizeof(message), fmt, ap);
    va_end(ap);
    __android_log_write(ANDROID_LOG_FATAL, kLogTag, message);
    abort();
}

}  // namespace abinder
