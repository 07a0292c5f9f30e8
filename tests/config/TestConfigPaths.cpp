#include "TestConfigPaths.h"

#include "ConfigPaths.h"

namespace tps {

namespace test {
char gTestConfigPaths[kTestConfigPathCount][PATH_MAX];
}

const char* const kConfigPaths[] = {test::gTestConfigPaths[0], test::gTestConfigPaths[1],
                                    test::gTestConfigPaths[2], test::gTestConfigPaths[3],
                                    test::gTestConfigPaths[4]};
const size_t kConfigPathCount = test::kTestConfigPathCount;

}  // namespace tps
