// Reading hostile or truncated input: every case must fail with the platform's status, never
// crash or read out of bounds.
#include <android/binder_ibinder.h>
#include <android/binder_parcel_utils.h>
#include <gtest/gtest.h>

#include "Parcel.h"
#include "WireBytes.h"

using namespace wire;

namespace {

ndk::ScopedAParcel parcel(const Bytes& bytes) {
    return ndk::ScopedAParcel(parcelOf(bytes));
}

TEST(ParcelReadTest, TruncatedPrimitivesLeaveTheValueAlone) {
    auto p = parcel(words({1}) + Bytes{0xaa, 0xbb});
    int32_t i32 = 0;
    ASSERT_EQ(AParcel_readInt32(p.get(), &i32), STATUS_OK);
    int32_t untouched = 55;
    EXPECT_EQ(AParcel_readInt32(p.get(), &untouched), STATUS_NOT_ENOUGH_DATA);
    EXPECT_EQ(untouched, 55);

    auto q = parcel(words({1}));
    int64_t i64 = 9;
    EXPECT_EQ(AParcel_readInt64(q.get(), &i64), STATUS_NOT_ENOUGH_DATA);
    EXPECT_EQ(i64, 9);
    EXPECT_EQ(AParcel_setDataPosition(q.get(), -1), STATUS_BAD_VALUE);
    ASSERT_EQ(AParcel_setDataPosition(q.get(), 100), STATUS_OK);
    EXPECT_EQ(AParcel_readInt32(q.get(), &i32), STATUS_NOT_ENOUGH_DATA);
}

TEST(ParcelReadTest, SmallIntegersAreTruncatedAndBoolIsAnyNonZero) {
    auto p = parcel(words({0x1ff, 0x1263a, 2}));
    int8_t byte = 0;
    char16_t ch = 0;
    bool flag = false;
    ASSERT_EQ(AParcel_readByte(p.get(), &byte), STATUS_OK);
    ASSERT_EQ(AParcel_readChar(p.get(), &ch), STATUS_OK);
    ASSERT_EQ(AParcel_readBool(p.get(), &flag), STATUS_OK);
    EXPECT_EQ(byte, -1);
    EXPECT_EQ(ch, u'\x263a');
    EXPECT_TRUE(flag);
}

TEST(ParcelReadTest, ArraySizes) {
    std::vector<int32_t> values{7};
    EXPECT_EQ(ndk::AParcel_readVector(parcel(words({0xfffffffe})).get(), &values),
              STATUS_BAD_VALUE);
    EXPECT_EQ(ndk::AParcel_readVector(parcel(words({1000, 1})).get(), &values), STATUS_NO_MEMORY);
    EXPECT_EQ(ndk::AParcel_readVector(parcel(words({0xffffffff})).get(), &values),
              STATUS_UNEXPECTED_NULL);
    // Fits the byte count check but not the element size.
    EXPECT_EQ(ndk::AParcel_readVector(parcel(words({3, 1})).get(), &values), STATUS_NO_MEMORY);

    std::optional<std::vector<int32_t>> nullable = std::vector<int32_t>{1};
    ASSERT_EQ(ndk::AParcel_readVector(parcel(words({0xffffffff})).get(), &nullable), STATUS_OK);
    EXPECT_FALSE(nullable.has_value());

    ASSERT_EQ(ndk::AParcel_readVector(parcel(words({0})).get(), &values), STATUS_OK);
    EXPECT_TRUE(values.empty());

    std::vector<uint8_t> bytes;
    ASSERT_EQ(ndk::AParcel_readVector(parcel(words({5, 0x04030201, 0x05})).get(), &bytes),
              STATUS_OK);
    EXPECT_EQ(bytes, (std::vector<uint8_t>{1, 2, 3, 4, 5}));

    std::vector<std::string> strings;
    EXPECT_EQ(ndk::AParcel_readVector(parcel(words({2, 1, 0x61})).get(), &strings),
              STATUS_UNEXPECTED_NULL)
            << "second element is missing";
}

TEST(ParcelReadTest, MalformedStringsReadAsNull) {
    std::string str = "keep";
    std::optional<std::string> optional = "keep";
    // Null marker.
    EXPECT_EQ(ndk::AParcel_readString(parcel(words({0xffffffff})).get(), &str),
              STATUS_UNEXPECTED_NULL);
    ASSERT_EQ(ndk::AParcel_readString(parcel(words({0xffffffff})).get(), &optional), STATUS_OK);
    EXPECT_FALSE(optional.has_value());
    // Other negative lengths, a missing terminator, and a string cut short.
    EXPECT_EQ(ndk::AParcel_readString(parcel(words({0xfffffffb})).get(), &str),
              STATUS_UNEXPECTED_NULL);
    EXPECT_EQ(ndk::AParcel_readString(parcel(words({1, 0x00620061})).get(), &str),
              STATUS_UNEXPECTED_NULL);
    EXPECT_EQ(ndk::AParcel_readString(parcel(words({5, 0x00620061})).get(), &str),
              STATUS_UNEXPECTED_NULL);
    EXPECT_EQ(ndk::AParcel_readString(parcel({}).get(), &str), STATUS_UNEXPECTED_NULL);
    EXPECT_EQ(str, "keep");
}

TEST(ParcelReadTest, StringsDecodeToUtf8DroppingLoneSurrogates) {
    std::string str;
    ASSERT_EQ(ndk::AParcel_readString(parcel(words({0, 0})).get(), &str), STATUS_OK);
    EXPECT_EQ(str, "");
    ASSERT_EQ(ndk::AParcel_readString(parcel(words({2, 0xde00d83d, 0})).get(), &str), STATUS_OK);
    EXPECT_EQ(str, "\xf0\x9f\x98\x80");
    ASSERT_EQ(ndk::AParcel_readString(parcel(words({3, 0x0041d800, 0x000000e9})).get(), &str),
              STATUS_OK);
    EXPECT_EQ(str, "A\xc3\xa9");
}

TEST(ParcelReadTest, StatusHeaders) {
    AStatus* status = nullptr;
    EXPECT_EQ(AParcel_readStatusHeader(parcel({}).get(), &status), STATUS_NOT_ENOUGH_DATA);
    EXPECT_EQ(status, nullptr);

    // A reply header is skipped and means no exception.
    auto fat = parcel(words({0xffffff80, 8, 0xdead, 99}));
    ASSERT_EQ(AParcel_readStatusHeader(fat.get(), &status), STATUS_OK);
    ndk::ScopedAStatus fatStatus(status);
    EXPECT_TRUE(fatStatus.isOk());
    int32_t after = 0;
    ASSERT_EQ(AParcel_readInt32(fat.get(), &after), STATUS_OK);
    EXPECT_EQ(after, 99);

    auto specific = parcel(words({0xfffffff8, 2, 0x00690068, 0, 0, 42}));
    ASSERT_EQ(AParcel_readStatusHeader(specific.get(), &status), STATUS_OK);
    ndk::ScopedAStatus specificStatus(status);
    EXPECT_EQ(specificStatus.getExceptionCode(), EX_SERVICE_SPECIFIC);
    EXPECT_EQ(specificStatus.getServiceSpecificError(), 42);
    EXPECT_STREQ(specificStatus.getMessage(), "hi");

    // Null message, unknown exception code.
    auto unknown = parcel(words({0xffffffce, 0xffffffff, 0}));
    ASSERT_EQ(AParcel_readStatusHeader(unknown.get(), &status), STATUS_OK);
    ndk::ScopedAStatus unknownStatus(status);
    EXPECT_FALSE(unknownStatus.isOk());
    EXPECT_EQ(unknownStatus.getExceptionCode(), EX_TRANSACTION_FAILED);
    EXPECT_STREQ(unknownStatus.getMessage(), "");

    status = nullptr;
    auto hugeTrace = parcel(words({0xfffffff9, 0, 0, 1000}));
    EXPECT_EQ(AParcel_readStatusHeader(hugeTrace.get(), &status), STATUS_UNKNOWN_ERROR);
    auto noCode = parcel(words({0xfffffff8, 0, 0, 0}));
    EXPECT_EQ(AParcel_readStatusHeader(noCode.get(), &status), STATUS_NOT_ENOUGH_DATA);
    EXPECT_EQ(status, nullptr);
}

TEST(ParcelReadTest, BinderObjectsMustBeListedAndConsistent) {
    AIBinder* binder = nullptr;
    // Looks like a local object but arrives as plain data: not in the offset table.
    const Bytes forged = words({0x73622a85, 0x113, 0x1000, 0, 0x2000, 0, 0x0c});
    EXPECT_EQ(AParcel_readStrongBinder(parcel(forged).get(), &binder), STATUS_BAD_TYPE);
    // A null object must say undeclared.
    const Bytes nullVendor = words({0x73622a85, 0x13, 0, 0, 0, 0, 0x03});
    EXPECT_EQ(AParcel_readStrongBinder(parcel(nullVendor).get(), &binder), STATUS_BAD_TYPE);
    EXPECT_EQ(AParcel_readStrongBinder(parcel(words({0x73622a85, 0x13})).get(), &binder),
              STATUS_BAD_TYPE);
    const Bytes nullNoStability = words({0x73622a85, 0x13, 0, 0, 0, 0});
    EXPECT_EQ(AParcel_readStrongBinder(parcel(nullNoStability).get(), &binder),
              STATUS_NOT_ENOUGH_DATA);
    EXPECT_EQ(binder, nullptr);

    ndk::SpAIBinder required;
    EXPECT_EQ(ndk::AParcel_readRequiredStrongBinder(
                      parcel(words({0x73622a85, 0x13, 0, 0, 0, 0, 0})).get(), &required),
              STATUS_UNEXPECTED_NULL);
    ndk::ScopedAParcel out(AParcel_create());
    EXPECT_EQ(ndk::AParcel_writeRequiredStrongBinder(out.get(), ndk::SpAIBinder()),
              STATUS_UNEXPECTED_NULL);
}

binder_status_t noTransact(AIBinder*, transaction_code_t, const AParcel*, AParcel*) {
    return STATUS_OK;
}
void* noCreate(void* args) {
    return args;
}
void noDestroy(void*) {}

ndk::SpAIBinder newBinder() {
    static AIBinder_Class* clazz =
            AIBinder_Class_define("read.IThing", noCreate, noDestroy, noTransact);
    return ndk::SpAIBinder(AIBinder_new(clazz, nullptr));
}

TEST(ParcelReadTest, ObjectBytesCannotBeReadAsPlainData) {
    ndk::SpAIBinder binder = newBinder();
    ndk::ScopedAParcel p(AParcel_create());
    ASSERT_EQ(AParcel_writeStrongBinder(p.get(), binder.get()), STATUS_OK);
    AParcel_setDataPosition(p.get(), 0);
    int64_t leaked = 0;
    EXPECT_EQ(AParcel_readInt64(p.get(), &leaked), STATUS_PERMISSION_DENIED);

    // Overwriting the object in place cannot conjure another object.
    AParcel_setDataPosition(p.get(), 16);
    ASSERT_EQ(AParcel_writeInt64(p.get(), 0x1234), STATUS_OK);
    AParcel_setDataPosition(p.get(), 0);
    AIBinder* read = nullptr;
    EXPECT_EQ(AParcel_readStrongBinder(p.get(), &read), STATUS_BAD_TYPE);
    EXPECT_EQ(read, nullptr);

    uint8_t buffer[64];
    EXPECT_EQ(AParcel_marshal(p.get(), buffer, 0, 4), STATUS_INVALID_OPERATION);
}

TEST(ParcelReadTest, MarshalAndAppendBounds) {
    ndk::ScopedAParcel p(parcelOf(words({1, 2, 3})));
    uint8_t buffer[12] = {};
    EXPECT_EQ(AParcel_marshal(p.get(), buffer, 8, 8), STATUS_BAD_VALUE);
    EXPECT_EQ(AParcel_marshal(p.get(), buffer, SIZE_MAX, 2), STATUS_BAD_VALUE);
    ASSERT_EQ(AParcel_marshal(p.get(), buffer, 4, 8), STATUS_OK);
    EXPECT_EQ(hex(Bytes(buffer, buffer + 8)), hex(words({2, 3})));

    ndk::ScopedAParcel to(AParcel_create());
    EXPECT_EQ(AParcel_appendFrom(p.get(), to.get(), 8, 8), STATUS_BAD_VALUE);
    EXPECT_EQ(AParcel_appendFrom(p.get(), to.get(), -4, 4), STATUS_BAD_VALUE);
    ASSERT_EQ(AParcel_appendFrom(p.get(), to.get(), 4, 8), STATUS_OK);
    EXPECT_EQ(hex(bytesOf(to.get())), hex(words({2, 3})));
}

TEST(ParcelReadTest, AppendedObjectsStayReadable) {
    ndk::SpAIBinder binder = newBinder();
    ndk::ScopedAParcel from(AParcel_create());
    ASSERT_EQ(AParcel_writeInt32(from.get(), 5), STATUS_OK);
    ASSERT_EQ(AParcel_writeStrongBinder(from.get(), binder.get()), STATUS_OK);

    ndk::ScopedAParcel to(AParcel_create());
    ASSERT_EQ(AParcel_writeInt32(to.get(), 9), STATUS_OK);
    ASSERT_EQ(AParcel_appendFrom(from.get(), to.get(), 4, AParcel_getDataSize(from.get()) - 4),
              STATUS_OK);
    from.set(nullptr);  // the copy holds its own reference

    AParcel_setDataPosition(to.get(), 4);
    ndk::SpAIBinder read;
    ASSERT_EQ(ndk::AParcel_readRequiredStrongBinder(to.get(), &read), STATUS_OK);
    EXPECT_EQ(read.get(), binder.get());
}

struct Point {
    int32_t x = 0;
    int32_t y = 0;
    binder_status_t readFromParcel(const AParcel* p) {
        if (binder_status_t s = AParcel_readInt32(p, &x); s != STATUS_OK) return s;
        return AParcel_readInt32(p, &y);
    }
    binder_status_t writeToParcel(AParcel* p) const {
        if (binder_status_t s = AParcel_writeInt32(p, x); s != STATUS_OK) return s;
        return AParcel_writeInt32(p, y);
    }
};

TEST(ParcelReadTest, ParcelablesNeedTheirPresenceMarker) {
    Point point;
    EXPECT_EQ(ndk::AParcel_readData(parcel(words({0})).get(), &point), STATUS_UNEXPECTED_NULL);
    std::optional<Point> nullable = Point{};
    ASSERT_EQ(ndk::AParcel_readData(parcel(words({0})).get(), &nullable), STATUS_OK);
    EXPECT_FALSE(nullable.has_value());
    std::vector<Point> points;
    ASSERT_EQ(ndk::AParcel_readData(parcel(words({2, 1, 3, 4, 1, 5, 6})).get(), &points),
              STATUS_OK);
    ASSERT_EQ(points.size(), 2u);
    EXPECT_EQ(points[1].y, 6);
    EXPECT_EQ(ndk::AParcel_readData(parcel(words({2, 1, 3, 4, 0})).get(), &points),
              STATUS_UNEXPECTED_NULL);
}

}  // namespace
