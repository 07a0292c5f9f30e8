// The C++ wrappers: ownership rules of SharedRefBase, the weak binder of BnCInterface, statuses,
// and the generic parcel helpers generated code relies on.
#include <android/binder_auto_utils.h>
#include <android/binder_interface_utils.h>
#include <android/binder_parcel_utils.h>
#include <android/binder_stability.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <thread>
#include <vector>

#include "WireBytes.h"

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
    binder_status_t dump(int fd, const char**, uint32_t) override {
        return write(fd, "widget", 6) == 6 ? STATUS_OK : STATUS_UNKNOWN_ERROR;
    }
    int created = 0;

protected:
    ndk::SpAIBinder createBinder() override {
        created++;
        AIBinder* binder = AIBinder_new(clazz(), static_cast<ICInterface*>(this));
        AIBinder_markVintfStability(binder);
        return ndk::SpAIBinder(binder);
    }
};

TEST(SharedRefBaseTest, MakeCreatesOneOwnerGroup) {
    std::shared_ptr<Widget> widget = ndk::SharedRefBase::make<Widget>();
    EXPECT_EQ(widget.use_count(), 1);
    std::shared_ptr<Widget> again = widget->ref<Widget>();
    EXPECT_EQ(again.get(), widget.get());
    EXPECT_EQ(widget.use_count(), 2);
    again.reset();
    widget.reset();
    EXPECT_EQ(gLiveObjects.load(), 0);
}

TEST(BnCInterfaceTest, BinderIsHeldWeaklyAndRecreatedOnDemand) {
    std::shared_ptr<Widget> widget = ndk::SharedRefBase::make<Widget>();
    ndk::SpAIBinder first = widget->asBinder();
    ndk::SpAIBinder second = widget->asBinder();
    EXPECT_EQ(first.get(), second.get());
    EXPECT_EQ(widget->created, 1);
    EXPECT_FALSE(widget->isRemote());
    EXPECT_EQ(ndk::ICInterface::asInterface(first.get()).get(), widget.get());

    // The binder's user data owns the object: it survives its last outside owner.
    Widget* raw = widget.get();
    widget.reset();
    EXPECT_EQ(gLiveObjects.load(), 1);
    EXPECT_EQ(ndk::ICInterface::asInterface(first.get()).get(), raw);

    std::shared_ptr<Widget> back = raw->ref<Widget>();
    first.set(nullptr);
    second.set(nullptr);
    ndk::SpAIBinder fresh = back->asBinder();
    EXPECT_EQ(back->created, 2);
    EXPECT_EQ(ndk::ICInterface::asInterface(fresh.get()).get(), raw);

    fresh.set(nullptr);
    back.reset();
    EXPECT_EQ(gLiveObjects.load(), 0);
}

TEST(BnCInterfaceTest, DumpForwardsToTheObject) {
    std::shared_ptr<Widget> widget = ndk::SharedRefBase::make<Widget>();
    int fds[2];
    ASSERT_EQ(pipe(fds), 0);
    EXPECT_EQ(AIBinder_dump(widget->asBinder().get(), fds[1], nullptr, 0), STATUS_OK);
    char buffer[16] = {};
    EXPECT_EQ(read(fds[0], buffer, sizeof(buffer)), 6);
    EXPECT_STREQ(buffer, "widget");
    close(fds[0]);
    close(fds[1]);
    EXPECT_EQ(ndk::BnCInterface<IWidget>::makeServiceName("default"), "test.IWidget/default");
}

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
    EXPECT_TRUE(ndk::ScopedAStatus::ok().isOk());
    EXPECT_EQ(ndk::ScopedAStatus::ok().getDescription(), "No error");
    EXPECT_EQ(AStatus_newOk(), AStatus_newOk());

    auto specific = ndk::ScopedAStatus::fromServiceSpecificErrorWithMessage(42, "bad");
    EXPECT_EQ(specific.getExceptionCode(), EX_SERVICE_SPECIFIC);
    EXPECT_EQ(specific.getServiceSpecificError(), 42);
    EXPECT_EQ(specific.getStatus(), STATUS_OK);
    EXPECT_EQ(specific.getDescription(), "Status(-8, EX_SERVICE_SPECIFIC): '42: bad'");

    auto dead = ndk::ScopedAStatus::fromStatus(STATUS_DEAD_OBJECT);
    EXPECT_EQ(dead.getExceptionCode(), EX_TRANSACTION_FAILED);
    EXPECT_EQ(dead.getStatus(), STATUS_DEAD_OBJECT);
    EXPECT_EQ(dead.getServiceSpecificError(), 0);
    EXPECT_EQ(dead.getDescription(), "Status(-129, EX_TRANSACTION_FAILED): 'DEAD_OBJECT: '");

    EXPECT_TRUE(ndk::ScopedAStatus::fromStatus(STATUS_OK).isOk());
    EXPECT_EQ(ndk::ScopedAStatus::fromStatus(12345).getStatus(), STATUS_UNKNOWN_ERROR);
    EXPECT_EQ(ndk::ScopedAStatus::fromExceptionCode(-128).getExceptionCode(),
              EX_TRANSACTION_FAILED);
    EXPECT_EQ(ndk::ScopedAStatus::fromExceptionCode(-128).getStatus(), STATUS_FAILED_TRANSACTION);
    auto illegal = ndk::ScopedAStatus::fromExceptionCodeWithMessage(EX_ILLEGAL_ARGUMENT, "x");
    EXPECT_STREQ(illegal.getMessage(), "x");
    EXPECT_EQ(illegal.getDescription(), "Status(-3, EX_ILLEGAL_ARGUMENT): 'x'");
}

enum class Mode : int8_t { OFF = 0, ON = 1 };
enum class Level : int32_t { LOW = 5, HIGH = 9 };

struct Pair {
    int32_t a = 0;
    std::string b;
    binder_status_t readFromParcel(const AParcel* p) {
        if (binder_status_t s = ndk::AParcel_readData(p, &a); s != STATUS_OK) return s;
        return ndk::AParcel_readData(p, &b);
    }
    binder_status_t writeToParcel(AParcel* p) const {
        if (binder_status_t s = ndk::AParcel_writeData(p, a); s != STATUS_OK) return s;
        return ndk::AParcel_writeData(p, b);
    }
    bool operator==(const Pair&) const = default;
};

template <typename T>
T roundTrip(const T& value) {
    ndk::ScopedAParcel p(AParcel_create());
    EXPECT_EQ(ndk::AParcel_writeData(p.get(), value), STATUS_OK);
    AParcel_setDataPosition(p.get(), 0);
    T out{};
    EXPECT_EQ(ndk::AParcel_readData(p.get(), &out), STATUS_OK);
    EXPECT_EQ(AParcel_getDataPosition(p.get()), AParcel_getDataSize(p.get()));
    return out;
}

TEST(ParcelUtilsTest, GenericValuesRoundTrip) {
    EXPECT_EQ(roundTrip(std::vector<int32_t>{1, -2, 3}), (std::vector<int32_t>{1, -2, 3}));
    EXPECT_EQ(roundTrip(std::vector<float>{0.5f, -1.0f}), (std::vector<float>{0.5f, -1.0f}));
    EXPECT_EQ(roundTrip(std::vector<int64_t>{1LL << 40}), (std::vector<int64_t>{1LL << 40}));
    EXPECT_EQ(roundTrip(std::vector<bool>{true, false, true}),
              (std::vector<bool>{true, false, true}));
    EXPECT_EQ(roundTrip(std::vector<uint8_t>{0xff, 0, 7}), (std::vector<uint8_t>{0xff, 0, 7}));
    EXPECT_EQ(roundTrip(std::vector<char16_t>{u'a', u'\x263a'}),
              (std::vector<char16_t>{u'a', u'\x263a'}));
    EXPECT_EQ(roundTrip(std::vector<std::string>{"", "héllo"}),
              (std::vector<std::string>{"", "héllo"}));
    EXPECT_EQ(roundTrip(std::vector<Mode>{Mode::ON, Mode::OFF}),
              (std::vector<Mode>{Mode::ON, Mode::OFF}));
    EXPECT_EQ(roundTrip(Level::HIGH), Level::HIGH);
    EXPECT_EQ(roundTrip(std::vector<Level>{Level::LOW}), (std::vector<Level>{Level::LOW}));
    EXPECT_EQ(roundTrip(std::vector<Pair>{{1, "x"}, {2, "y"}}),
              (std::vector<Pair>{{1, "x"}, {2, "y"}}));
    EXPECT_EQ(roundTrip(std::optional<Pair>{}), std::nullopt);
    EXPECT_EQ(roundTrip(std::optional<std::vector<std::optional<std::string>>>(
                      std::vector<std::optional<std::string>>{std::nullopt, "z"})),
              (std::optional<std::vector<std::optional<std::string>>>(
                      std::vector<std::optional<std::string>>{std::nullopt, "z"})));
    EXPECT_EQ(roundTrip(std::vector<std::vector<int32_t>>{{1}, {}}),
              (std::vector<std::vector<int32_t>>{{1}, {}}));
    EXPECT_EQ(roundTrip(std::unique_ptr<Pair>()), nullptr);
}

TEST(ParcelUtilsTest, SizeOnlyArraysAndResize) {
    ndk::ScopedAParcel p(AParcel_create());
    ASSERT_EQ(ndk::AParcel_writeVectorSize(p.get(), std::vector<int32_t>(3)), STATUS_OK);
    ASSERT_EQ(ndk::AParcel_writeVectorSize(p.get(), std::optional<std::vector<int32_t>>()),
              STATUS_OK);
    AParcel_setDataPosition(p.get(), 0);
    std::vector<int32_t> sized;
    ASSERT_EQ(ndk::AParcel_resizeVector(p.get(), &sized), STATUS_OK);
    EXPECT_EQ(sized.size(), 3u);
    EXPECT_EQ(ndk::AParcel_resizeVector(p.get(), &sized), STATUS_UNEXPECTED_NULL);
}

TEST(ParcelUtilsTest, FileDescriptorsAreDuplicatedBothWays) {
    int fds[2];
    ASSERT_EQ(pipe(fds), 0);
    ndk::ScopedFileDescriptor readEnd(fds[0]);
    ndk::ScopedFileDescriptor writeEnd(fds[1]);
    ndk::ScopedAParcel p(AParcel_create());
    ASSERT_EQ(ndk::AParcel_writeData(p.get(), writeEnd), STATUS_OK);
    EXPECT_EQ(ndk::AParcel_writeData(p.get(), ndk::ScopedFileDescriptor()), STATUS_UNEXPECTED_NULL);
    AParcel_setDataPosition(p.get(), 0);
    ndk::ScopedFileDescriptor received;
    ASSERT_EQ(ndk::AParcel_readData(p.get(), &received), STATUS_OK);
    EXPECT_NE(received.get(), writeEnd.get());
    p.set(nullptr);  // the parcel's own copy goes away; ours stays usable
    ASSERT_EQ(write(received.get(), "k", 1), 1);
    char c = 0;
    ASSERT_EQ(read(readEnd.get(), &c, 1), 1);
    EXPECT_EQ(c, 'k');

    ndk::ScopedAParcel none(wire::parcelOf(wire::words({0})));
    ndk::ScopedFileDescriptor missing;
    EXPECT_EQ(ndk::AParcel_readData(none.get(), &missing), STATUS_UNEXPECTED_NULL);
}

}  // namespace
