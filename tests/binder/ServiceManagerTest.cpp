// The in-process service registry and thread-pool calls.
#include <android/binder_auto_utils.h>
#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <gtest/gtest.h>

#include <future>
#include <string>
#include <thread>

#include "WireBytes.h"

namespace {

ndk::SpAIBinder newService() {
    static AIBinder_Class* clazz = wire::plainClass("test.IService");
    return ndk::SpAIBinder(AIBinder_new(clazz, nullptr));
}

TEST(ServiceManagerTest, NamesAreChecked) {
    ndk::SpAIBinder service = newService();
    EXPECT_EQ(AServiceManager_addService(service.get(), std::string(127, 'a').c_str()), EX_NONE);
    EXPECT_EQ(AServiceManager_addService(service.get(), "vendor.x.IFoo/default-1_2"), EX_NONE);
    for (const std::string& bad : {std::string(), std::string(128, 'a'), std::string("a b"),
                                   std::string("a:b"), std::string("caf\xc3\xa9")}) {
        EXPECT_EQ(AServiceManager_addService(service.get(), bad.c_str()), EX_ILLEGAL_ARGUMENT)
                << bad;
        EXPECT_EQ(AServiceManager_checkService(bad.c_str()), nullptr);
    }
    EXPECT_EQ(AServiceManager_addService(nullptr, "test.null"), EX_ILLEGAL_ARGUMENT);
}

TEST(ServiceManagerTest, LookupsReturnTheirOwnReference) {
    ndk::SpAIBinder service = newService();
    ASSERT_EQ(AServiceManager_addService(service.get(), "test.lookup"), EX_NONE);
    const int32_t registered = AIBinder_debugGetRefCount(service.get());
    ndk::SpAIBinder found(AServiceManager_checkService("test.lookup"));
    EXPECT_EQ(found.get(), service.get());
    EXPECT_EQ(AIBinder_debugGetRefCount(service.get()), registered + 1);
    EXPECT_EQ(AServiceManager_checkService("test.absent"), nullptr);

    // Re-adding replaces the registration and releases the old binder.
    found.set(nullptr);
    ndk::SpAIBinder replacement = newService();
    ASSERT_EQ(AServiceManager_addService(replacement.get(), "test.lookup"), EX_NONE);
    EXPECT_EQ(AIBinder_debugGetRefCount(service.get()), registered - 1);
    ndk::SpAIBinder now(AServiceManager_checkService("test.lookup"));
    EXPECT_EQ(now.get(), replacement.get());
}

TEST(ServiceManagerTest, WaitForServiceReturnsOnceAnotherThreadAddsIt) {
    std::future<AIBinder*> waited = std::async(
            std::launch::async, [] { return AServiceManager_waitForService("test.later"); });
    ndk::SpAIBinder service = newService();
    ASSERT_EQ(AServiceManager_addService(service.get(), "test.later"), EX_NONE);
    ndk::SpAIBinder found(waited.get());
    EXPECT_EQ(found.get(), service.get());
}

TEST(ServiceManagerTest, ConcurrentRegistrationsAndLookups) {
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; t++) {
        threads.emplace_back([t] {
            const std::string name = "test.concurrent." + std::to_string(t);
            for (int i = 0; i < 200; i++) {
                ndk::SpAIBinder service = newService();
                EXPECT_EQ(AServiceManager_addService(service.get(), name.c_str()), EX_NONE);
                ndk::SpAIBinder found(AServiceManager_checkService(name.c_str()));
                EXPECT_NE(found.get(), nullptr);
            }
        });
    }
    for (std::thread& t : threads) t.join();
}

}  // namespace
