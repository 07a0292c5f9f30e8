// The multi-process tests, or one of their helper processes when started with --child.
#include <android/binder_process.h>
#include <gtest/gtest.h>
#include <string.h>

#include "MpFixture.h"
#include "MpRoles.h"

int main(int argc, char** argv) {
    if (argc >= 2 && strcmp(argv[1], "--child") == 0) {
        return mptest::runRole(std::vector<std::string>(argv + 2, argv + argc));
    }
    ::testing::InitGoogleTest(&argc, argv);
    ::testing::AddGlobalTestEnvironment(new mptest::ServiceManagerEnvironment());
    // Deaths, service notifications and callbacks need a looper in this process too.
    ABinderProcess_startThreadPool();
    return RUN_ALL_TESTS();
}
