// Reading hostile or truncated input: every case must fail with the platform's status, never
// crash or read out of bounds, and leave the destination alone.
#include <android/binder_ibinder.h>
#include <android/binder_parcel_utils.h>
#include <gtest/gtest.h>

#include <functional>

#include "WireBytes.h"

using namespace wire;

namespace {

struct Point {
    int32_t x = 0;
    int32_t y = 0;
    binder_status_t readFromParcel(const AParcel* p) {
        if (binder_status_t s = AParcel_readInt32(p, &x); s != STATUS_OK) return s;
        return AParcel_readInt32(p, &y);
    }
    binder_status_t writeToParcel(AParcel*) const { return STATUS_INVALID_OPERATION; }
    bool operator==(const Point&) const = default;
};

template <typename T>
constexpr bool kIsVector = false;
template <typename T>
constexpr bool kIsVector<std::vector<T>> = true;

template <typename T>
std::function<binder_status_t(const AParcel*)> reads(T preset) {
    return [preset](const AParcel* p) {
        T value = preset;
        const binder_status_t status = ndk::AParcel_readData(p, &value);
        // Arrays are sized before their elements are read, as on the device.
        if constexpr (!kIsVector<T>) {
            EXPECT_TRUE(status == STATUS_OK || value == preset) << "value changed";
        }
        return status;
    };
}

TEST(ParcelReadTest, MalformedInputFailsWithTheStatusOfItsKind) {
    using IntVector = std::vector<int32_t>;
    using Strings = std::vector<std::string>;
    const std::vector<Point> points = {{9, 9}};
    struct Case {
        const char* what;
        Bytes bytes;
        std::function<binder_status_t(const AParcel*)> read;
        binder_status_t expected;
    };
    const Case cases[] = {
            {"int cut short", Bytes{0xaa, 0xbb}, reads(int32_t{55}), STATUS_NOT_ENOUGH_DATA},
            {"long cut short", words({1}), reads(int64_t{9}), STATUS_NOT_ENOUGH_DATA},
            {"negative array length", words({0xfffffffe}), reads(IntVector{7}), STATUS_BAD_VALUE},
            {"array longer than the data", words({1000, 1}), reads(IntVector{7}), STATUS_NO_MEMORY},
            // Fits the byte count check but not the element size.
            {"array of 3 in 4 bytes", words({3, 1}), reads(IntVector{7}), STATUS_NO_MEMORY},
            {"null array", words({0xffffffff}), reads(IntVector{7}), STATUS_UNEXPECTED_NULL},
            {"second string missing", words({2, 1, 0x61}), reads(Strings{"k"}),
             STATUS_UNEXPECTED_NULL},
            {"null string", words({0xffffffff}), reads(std::string("keep")),
             STATUS_UNEXPECTED_NULL},
            {"no terminator", words({1, 0x00620061}), reads(std::string("keep")),
             STATUS_UNEXPECTED_NULL},
            {"string cut short", words({5, 0x00620061}), reads(std::string("keep")),
             STATUS_UNEXPECTED_NULL},
            {"no string", Bytes{}, reads(std::string("keep")), STATUS_UNEXPECTED_NULL},
            {"parcelable without marker", words({0}), reads(Point{1, 2}), STATUS_UNEXPECTED_NULL},
            {"second parcelable null", words({2, 1, 3, 4, 0}), reads(points),
             STATUS_UNEXPECTED_NULL},
            // Looks like a local object but arrives as plain data: not in the offset table.
            {"forged object", words({0x73622a85, 0x113, 0x1000, 0, 0x2000, 0, 0x0c}),
             reads(ndk::SpAIBinder()), STATUS_BAD_TYPE},
            // A null object must say undeclared.
            {"null object with a level", words({0x73622a85, 0x13, 0, 0, 0, 0, 0x03}),
             reads(ndk::SpAIBinder()), STATUS_BAD_TYPE},
            {"null object without level", words({0x73622a85, 0x13, 0, 0, 0, 0}),
             reads(ndk::SpAIBinder()), STATUS_NOT_ENOUGH_DATA},
    };
    for (const Case& c : cases) {
        ndk::ScopedAParcel p(parcelOf(words({1}) + c.bytes));
        AParcel_setDataPosition(p.get(), 4);
        SCOPED_TRACE(c.what);
        EXPECT_EQ(c.read(p.get()), c.expected);
    }
}

TEST(ParcelReadTest, AnyNonZeroWordIsTrueAndNullablesAcceptTheNullMarker) {
    ndk::ScopedAParcel p(parcelOf(words({2, 0xffffffff, 0})));
    bool flag = false;
    std::optional<std::vector<int32_t>> nullable = std::vector<int32_t>{1};
    std::optional<Point> point = Point{};
    ASSERT_EQ(AParcel_readBool(p.get(), &flag), STATUS_OK);
    ASSERT_EQ(ndk::AParcel_readVector(p.get(), &nullable), STATUS_OK);
    ASSERT_EQ(ndk::AParcel_readData(p.get(), &point), STATUS_OK);
    EXPECT_TRUE(flag);  // any non-zero word
    EXPECT_FALSE(nullable.has_value());
    EXPECT_FALSE(point.has_value());
}

TEST(ParcelReadTest, StatusHeadersAreReadWholeOrNotAtAll) {
    struct Case {
        Bytes bytes;
        binder_status_t result;
        int32_t exception = EX_NONE;
        int32_t specific = 0;
        const char* message = "";
    };
    const Case cases[] = {
            {{}, STATUS_NOT_ENOUGH_DATA},
            // A reply header is skipped and means no exception.
            {words({0xffffff80, 8, 0xdead}), STATUS_OK},
            {words({0xfffffff8, 2, 0x00690068, 0, 0, 42}), STATUS_OK, EX_SERVICE_SPECIFIC, 42,
             "hi"},
            // Null message, unknown exception code.
            {words({0xffffffce, 0xffffffff, 0}), STATUS_OK, EX_TRANSACTION_FAILED},
            {words({0xfffffff9, 0, 0, 1000}), STATUS_UNKNOWN_ERROR},
            {words({0xfffffff8, 0, 0, 0}), STATUS_NOT_ENOUGH_DATA},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(hex(c.bytes));
        ndk::ScopedAParcel p(parcelOf(c.bytes));
        AStatus* raw = nullptr;
        ASSERT_EQ(AParcel_readStatusHeader(p.get(), &raw), c.result);
        ndk::ScopedAStatus status(raw);
        if (c.result != STATUS_OK) {
            EXPECT_EQ(raw, nullptr);
            continue;
        }
        EXPECT_EQ(status.getExceptionCode(), c.exception);
        EXPECT_EQ(status.getServiceSpecificError(), c.specific);
        EXPECT_STREQ(status.getMessage(), c.message);
        EXPECT_EQ(AParcel_getDataPosition(p.get()), static_cast<int32_t>(c.bytes.size()));
    }
}

TEST(ParcelReadTest, ObjectsCannotBeReadOrForgedAsData) {
    static AIBinder_Class* clazz = plainClass("read.IThing");
    ndk::SpAIBinder binder(AIBinder_new(clazz, nullptr));
    ndk::ScopedAParcel p(AParcel_create());
    ASSERT_EQ(AParcel_writeInt32(p.get(), 5), STATUS_OK);
    ASSERT_EQ(AParcel_writeStrongBinder(p.get(), binder.get()), STATUS_OK);
    AParcel_setDataPosition(p.get(), 4);
    int64_t leaked = 0;
    EXPECT_EQ(AParcel_readInt64(p.get(), &leaked), STATUS_PERMISSION_DENIED);
    uint8_t buffer[64];
    EXPECT_EQ(AParcel_marshal(p.get(), buffer, 0, 4), STATUS_INVALID_OPERATION);

    // Overwriting the object in place cannot conjure another object.
    AParcel_setDataPosition(p.get(), 4 + 16);
    ASSERT_EQ(AParcel_writeInt64(p.get(), 0x1234), STATUS_OK);
    AParcel_setDataPosition(p.get(), 4);
    AIBinder* forged = nullptr;
    EXPECT_EQ(AParcel_readStrongBinder(p.get(), &forged), STATUS_BAD_TYPE);
    EXPECT_EQ(forged, nullptr);
}

}  // namespace
