#include "FuzzEnvironment.h"

#include <android/log.h>
#include <stdlib.h>
#include <sys/system_properties.h>

#include <filesystem>
#include <string>

namespace tps::fuzz {

namespace {

class PropertyFolder {
public:
    PropertyFolder() {
        std::string pattern = std::filesystem::temp_directory_path() / "tps-fuzz-props-XXXXXX";
        if (mkdtemp(pattern.data()) == nullptr) abort();
        mPath = pattern;
        setenv("TPS_PROPERTY_DIR", mPath.c_str(), 1);
    }
    ~PropertyFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(mPath, ignored);
    }
    PropertyFolder(const PropertyFolder&) = delete;
    PropertyFolder& operator=(const PropertyFolder&) = delete;

private:
    std::string mPath;
};

void dropMessage(const __android_log_message*) {}

}  // namespace

void setUpEnvironment() {
    static PropertyFolder folder;
    static const bool ready = [] {
        __android_log_set_logger(dropMessage);
        return __system_property_set("persist.vendor.tavix.loglevel", "4") == 0;
    }();
    if (!ready) abort();
}

}  // namespace tps::fuzz
