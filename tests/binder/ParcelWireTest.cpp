// Byte-exact layout of what the NDK writes: these bytes are what the other end of a real binder
// connection decodes, so any drift here breaks interoperability.
#include <android/binder_ibinder.h>
#include <android/binder_ibinder_platform.h>
#include <android/binder_parcel_utils.h>
#include <android/binder_stability.h>
#include <gtest/gtest.h>
#include <sched.h>

#include "AIBinderImpl.h"
#include "Parcel.h"
#include "WireBytes.h"

using namespace wire;

namespace {

flat_binder_object objectAt(const Bytes& bytes, size_t offset) {
    flat_binder_object object;
    memcpy(&object, bytes.data() + offset, sizeof(object));
    return object;
}

class ParcelWireTest : public ::testing::Test {
protected:
    ndk::ScopedAParcel parcel{AParcel_create()};
    AParcel* p() { return parcel.get(); }
};

TEST_F(ParcelWireTest, ValuesUseFourByteSlotsUtf16StringsAndCountedArrays) {
    const float floats[] = {1.0f, 2.0f};
    const int8_t bytes[] = {1, 2, 3};
    ASSERT_EQ(AParcel_writeInt32(p(), 1), STATUS_OK);
    ASSERT_EQ(AParcel_writeInt64(p(), 0x1122334455667788), STATUS_OK);  // at offset 4
    ASSERT_EQ(AParcel_writeBool(p(), true), STATUS_OK);
    ASSERT_EQ(AParcel_writeByte(p(), -1), STATUS_OK);
    ASSERT_EQ(AParcel_writeChar(p(), u'\x263a'), STATUS_OK);
    ASSERT_EQ(AParcel_writeFloat(p(), 1.0f), STATUS_OK);
    ASSERT_EQ(AParcel_writeDouble(p(), 2.0), STATUS_OK);
    ASSERT_EQ(AParcel_writeStrongBinder(p(), nullptr), STATUS_OK);
    ASSERT_EQ(AParcel_writeString(p(), "ab", 2), STATUS_OK);  // terminator padded
    ASSERT_EQ(AParcel_writeString(p(), nullptr, -1), STATUS_OK);
    ASSERT_EQ(AParcel_writeString(p(), "\xc3\xa9", 2), STATUS_OK);          // U+00E9
    ASSERT_EQ(AParcel_writeString(p(), "\xf0\x9f\x98\x80", 4), STATUS_OK);  // surrogate pair
    ASSERT_EQ(AParcel_writeString(p(), "\x80", 1), STATUS_OK);       // stray continuation byte
    ASSERT_EQ(AParcel_writeString(p(), "a\0b", 3), STATUS_OK);       // embedded NUL kept
    ASSERT_EQ(AParcel_writeInt32Array(p(), nullptr, 0), STATUS_OK);  // empty, not null
    ASSERT_EQ(AParcel_writeInt32Array(p(), nullptr, -1), STATUS_OK);
    ASSERT_EQ(AParcel_writeFloatArray(p(), floats, 2), STATUS_OK);
    ASSERT_EQ(AParcel_writeByteArray(p(), bytes, 3), STATUS_OK);  // packed, padded
    EXPECT_EQ(hex(bytesOf(p())),
              hex(words({1, 0x55667788, 0x11223344, 1, 0xffffffff, 0x263a, 0x3f800000, 0,
                         0x40000000}) +
                  words({0x73622a85, 0x13, 0, 0, 0, 0, 0}) +
                  words({2, 0x00620061, 0, 0xffffffff, 1, 0x000000e9, 2, 0xde00d83d, 0, 1,
                         0x00000080, 3, 0x00000061, 0x00000062}) +
                  words({0, 0xffffffff, 2, 0x3f800000, 0x40000000, 3, 0x00030201})));
    EXPECT_TRUE(p()->objectOffsets().empty()) << "a null binder is not listed as an object";
}

// The plain headers are checked through the generated code; these are the unusual ones.
TEST_F(ParcelWireTest, StatusHeadersWithParcelableOrUnencodableMessages) {
    const ndk::ScopedAStatus statuses[] = {
            ndk::ScopedAStatus::fromExceptionCode(EX_PARCELABLE),
            // A message that is not UTF-8 is dropped.
            ndk::ScopedAStatus::fromExceptionCodeWithMessage(EX_ILLEGAL_STATE, "cut \xe2\x82"),
    };
    for (const ndk::ScopedAStatus& status : statuses) {
        ASSERT_EQ(AParcel_writeStatusHeader(p(), status.get()), STATUS_OK);
    }
    EXPECT_EQ(hex(bytesOf(p())), hex(words({0xfffffff7, 0, 0, 0, 0, 0xfffffffb, 0, 0, 0})));
}

TEST_F(ParcelWireTest, RefusedWritesAddNothing) {
    const int32_t data[] = {1, 2};
    auto failed = ndk::ScopedAStatus::fromStatus(STATUS_UNKNOWN_TRANSACTION);
    auto bare = ndk::ScopedAStatus::fromExceptionCode(EX_TRANSACTION_FAILED);
    EXPECT_EQ(AParcel_writeString(p(), "x\xe2\x82", 3), STATUS_BAD_VALUE);
    EXPECT_EQ(AParcel_writeString(p(), "abc", -2), STATUS_BAD_VALUE);
    EXPECT_EQ(AParcel_writeString(p(), nullptr, 0), STATUS_BAD_VALUE);
    EXPECT_EQ(AParcel_writeInt32Array(p(), nullptr, 2), STATUS_BAD_VALUE);
    EXPECT_EQ(AParcel_writeInt32Array(p(), data, -1), STATUS_BAD_VALUE);
    EXPECT_EQ(AParcel_writeInt32Array(p(), nullptr, -2), STATUS_BAD_VALUE);
    // A transaction failure has no header form: it becomes the transaction's result.
    EXPECT_EQ(AParcel_writeStatusHeader(p(), failed.get()), STATUS_UNKNOWN_TRANSACTION);
    EXPECT_EQ(AParcel_writeStatusHeader(p(), bare.get()), STATUS_FAILED_TRANSACTION);
    EXPECT_EQ(AParcel_getDataSize(p()), 0);
}

TEST_F(ParcelWireTest, LocalBindersAreKeyedByTheirReferenceBlockAndCarryTheirRequests) {
    static AIBinder_Class* clazz = plainClass("a.b.IFoo");
    ndk::SpAIBinder plain(AIBinder_new(clazz, nullptr));
    ndk::SpAIBinder flagged(AIBinder_new(clazz, nullptr));
    AIBinder_markVintfStability(flagged.get());
    AIBinder_setMinSchedulerPolicy(flagged.get(), SCHED_FIFO, 98);
    AIBinder_setInheritRt(flagged.get(), true);
    AIBinder_setRequestingSid(flagged.get(), true);
    ASSERT_EQ(AParcel_writeInt32(p(), 7), STATUS_OK);
    ASSERT_EQ(AParcel_writeStrongBinder(p(), plain.get()), STATUS_OK);
    ASSERT_EQ(AParcel_writeStrongBinder(p(), flagged.get()), STATUS_OK);

    const Bytes bytes = bytesOf(p());
    ASSERT_EQ(bytes.size(), 4u + 2 * (24u + 4u));
    EXPECT_EQ(p()->objectOffsets(), (std::vector<binder_size_t>{4, 32}));
    const flat_binder_object object = objectAt(bytes, 4);
    EXPECT_EQ(object.hdr.type, static_cast<uint32_t>(BINDER_TYPE_BINDER));
    EXPECT_EQ(object.flags, 0x113u);  // accepts fds, normal policy at nice 19
    EXPECT_EQ(object.binder, reinterpret_cast<uintptr_t>(plain.get()->refs()));
    EXPECT_EQ(object.cookie, reinterpret_cast<uintptr_t>(plain.get()));
    EXPECT_EQ(objectAt(bytes, 32).flags, 98u | (1u << 9) | 0x100u | 0x800u | 0x1000u);
    // Never marked, so parceling gives it the library's own (system) level.
    EXPECT_EQ(hex(Bytes(bytes.begin() + 28, bytes.begin() + 32)), hex(words({0x0c})));
    EXPECT_EQ(hex(Bytes(bytes.end() - 4, bytes.end())), hex(words({0x3f})));

    AParcel_setDataPosition(p(), 4);
    ndk::SpAIBinder read;
    ASSERT_EQ(AParcel_readStrongBinder(p(), read.getR()), STATUS_OK);
    EXPECT_EQ(read.get(), plain.get());
}

}  // namespace
