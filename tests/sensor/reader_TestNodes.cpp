#include "reader_TestNodes.h"

#include <stdlib.h>

#include <filesystem>
#include <fstream>

#include "SensorNodes.h"

namespace tps::test {

namespace {

struct RootFolder {
    RootFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "tps-nodes-XXXXXX");
        if (mkdtemp(pattern.data()) != nullptr) path = pattern;
    }
    ~RootFolder() {
        std::error_code ignored;
        if (!path.empty()) std::filesystem::remove_all(path, ignored);
    }
    std::string path;
};

}  // namespace

const std::string& testNodeRoot() {
    static RootFolder root;
    return root.path;
}

std::string nodePath(const std::string& relativePath) {
    return testNodeRoot() + "/" + relativePath;
}

void clearTestNodes() {
    for (const auto& entry : std::filesystem::directory_iterator(testNodeRoot())) {
        std::filesystem::remove_all(entry.path());
    }
}

void writeNode(const std::string& relativePath, const std::string& text) {
    std::filesystem::path path = nodePath(relativePath);
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path) << text;
}

}  // namespace tps::test

namespace tavixPrism {

using tps::test::nodePath;

const std::vector<BrightnessNodeGroup> kBrightnessNodeGroups = {
        {{nodePath("backlight/panel0/brightness"), nodePath("backlight/panel1/brightness")},
         {nodePath("backlight/panel0/max_brightness"),
          nodePath("backlight/panel1/max_brightness")}},
        {{nodePath("leds/lcd/brightness")}, {nodePath("leds/lcd/max_brightness")}},
};

}  // namespace tavixPrism
