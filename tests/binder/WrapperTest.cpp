// The C++ wrappers: the weak binder of BnCInterface under concurrent use, and statuses.
#include <android/binder_auto_utils.h>
#include <android/binder_interface_utils.h>
#include <android/binder_parcel_utils.h>
#include <android/binder_stability.h>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace {

binder_status_t unusedTransact(AIBinder*, transaction_code_t, const AParcel*, AParcel*) {
    return STATUS_UNKNOWN_TRANSACTION;
}

std::atomic<int> gLiveObjects{0};

class IWidget : public ndk::ICInterface {
public:
    static const char* descriptor;
    static AIBinder_Class* clazz() {
        static AIBinder_Class* c = ndk::ICInterface::defineClass(descriptor, unusedTransact);
        return c;
    }
};
const char* IWidget::descriptor = "test.IWidget";

class Widget : public ndk::BnCInterface<IWidget> {
public:
    Widget() { gLiveObjects++; }
    ~Widget() override { gLiveObjects--; }

protected:
    ndk::SpAIBinder createBinder() override {
        AIBinder* binder = AIBinder_new(clazz(), static_cast<ICInterface*>(this));
        AIBinder_markVintfStability(binder);
        return ndk::SpAIBinder(binder);
    }
};

TEST(BnCInterfaceTest, ConcurrentAsBinderAndReleaseAgreeOnOneLiveBinder) {
    std::shared_ptr<Widget> widget = ndk::SharedRefBase::make<Widget>();
    std::vector<std::thread> threads;
    std::atomic<int> mismatches{0};
    for (int t = 0; t < 4; t++) {
        threads.emplace_back([&] {
            for (int i = 0; i < 2000; i++) {
                ndk::SpAIBinder a = widget->asBinder();
                ndk::SpAIBinder b = widget->asBinder();
                if (a.get() != b.get()) mismatches++;
                ndk::ScopedAParcel p(AParcel_create());
                AParcel_writeStrongBinder(p.get(), a.get());
                AParcel_setDataPosition(p.get(), 0);
                ndk::SpAIBinder read;
                if (AParcel_readStrongBinder(p.get(), read.getR()) != STATUS_OK ||
                    read.get() != a.get()) {
                    mismatches++;
                }
            }
        });
    }
    for (std::thread& t : threads) t.join();
    EXPECT_EQ(mismatches.load(), 0);
    widget.reset();
    EXPECT_EQ(gLiveObjects.load(), 0);
}

TEST(ScopedAStatusTest, AccessorsAndDescriptions) {
    EXPECT_FALSE(ndk::ScopedAStatus().isOk());
    EXPECT_TRUE(ndk::ScopedAStatus::fromStatus(STATUS_OK).isOk());
    auto specific = ndk::ScopedAStatus::fromServiceSpecificErrorWithMessage(42, "bad");
    EXPECT_EQ(specific.getExceptionCode(), EX_SERVICE_SPECIFIC);
    EXPECT_EQ(specific.getServiceSpecificError(), 42);
    EXPECT_EQ(specific.getStatus(), STATUS_OK);
    EXPECT_EQ(specific.getDescription(), "Status(-8, EX_SERVICE_SPECIFIC): '42: bad'");
    auto dead = ndk::ScopedAStatus::fromStatus(STATUS_DEAD_OBJECT);
    EXPECT_EQ(dead.getExceptionCode(), EX_TRANSACTION_FAILED);
    EXPECT_EQ(dead.getDescription(), "Status(-129, EX_TRANSACTION_FAILED): 'DEAD_OBJECT: '");
    // Codes outside the public lists are pruned.
    EXPECT_EQ(ndk::ScopedAStatus::fromStatus(12345).getStatus(), STATUS_UNKNOWN_ERROR);
    EXPECT_EQ(ndk::ScopedAStatus::fromExceptionCode(-128).getStatus(), STATUS_FAILED_TRANSACTION);
}

}  // namespace
