#include "ParcelFields.h"

#include <cstdio>
#include <cstdlib>

namespace aidl::host {

void abortWrongTag(const char* unionName, int32_t active, int32_t wanted) {
    fprintf(stderr, "%s: bad access: member %d is active, member %d was asked for\n", unionName,
            active, wanted);
    abort();
}

}  // namespace aidl::host
