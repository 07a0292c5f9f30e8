#include "ConfigPaths.h"

namespace tps {

const char* const kConfigPaths[] = {
        "/odm/etc/tavix/tavix_prism_clstc.cfg",
        "/odm/etc/tavix/display/tavix_prism.cfg",
        "/odm/vendor/persist/display/tavix_prism.cfg",
        "/vendor/persist/display/tavix_prism.cfg",
        "/vendor/etc/tavix_prism.cfg",
};
const size_t kConfigPathCount = sizeof(kConfigPaths) / sizeof(kConfigPaths[0]);

}  // namespace tps
