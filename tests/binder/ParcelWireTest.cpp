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

binder_status_t noTransact(AIBinder*, transaction_code_t, const AParcel*, AParcel*) {
    return STATUS_OK;
}
void* noCreate(void* args) {
    return args;
}
void noDestroy(void*) {}

AIBinder_Class* fooClass() {
    static AIBinder_Class* clazz =
            AIBinder_Class_define("a.b.IFoo", noCreate, noDestroy, noTransact);
    return clazz;
}

// "a.b.IFoo" as String16 after its length word.
const Bytes kFooUtf16 = words({0x002e0061, 0x002e0062, 0x00460049, 0x006f006f, 0});

class ParcelWireTest : public ::testing::Test {
protected:
    ndk::ScopedAParcel parcel{AParcel_create()};
    AParcel* p() { return parcel.get(); }
};

TEST_F(ParcelWireTest, InterfaceTokenCarriesPolicyWorkSourceHeaderAndDescriptor) {
    ndk::SpAIBinder binder(AIBinder_new(fooClass(), nullptr));
    AParcel* in = nullptr;
    ASSERT_EQ(AIBinder_prepareTransaction(binder.get(), &in), STATUS_OK);
    ndk::ScopedAParcel owned(in);
    EXPECT_EQ(hex(bytesOf(in)), hex(words({0x80000000, 0xffffffff, 0x53595354, 8}) + kFooUtf16));
}

TEST_F(ParcelWireTest, StringsAreUtf16WithUnitCountAndPaddedTerminator) {
    ASSERT_EQ(AParcel_writeString(p(), "", 0), STATUS_OK);
    ASSERT_EQ(AParcel_writeString(p(), "abc", 3), STATUS_OK);
    ASSERT_EQ(AParcel_writeString(p(), "ab", 2), STATUS_OK);
    ASSERT_EQ(AParcel_writeString(p(), nullptr, -1), STATUS_OK);
    EXPECT_EQ(hex(bytesOf(p())), hex(words({0, 0,                       // ""
                                            3, 0x00620061, 0x00000063,  // "abc"
                                            2, 0x00620061, 0x00000000,  // "ab" + pad
                                            0xffffffff})));             // null
}

TEST_F(ParcelWireTest, Utf8DecodingIsLenientButRefusesTruncatedSequences) {
    ASSERT_EQ(AParcel_writeString(p(), "\xc3\xa9", 2), STATUS_OK);          // U+00E9
    ASSERT_EQ(AParcel_writeString(p(), "\xf0\x9f\x98\x80", 4), STATUS_OK);  // surrogate pair
    ASSERT_EQ(AParcel_writeString(p(), "\x80", 1), STATUS_OK);  // stray continuation byte
    ASSERT_EQ(AParcel_writeString(p(), "a\0b", 3), STATUS_OK);  // embedded NUL kept
    EXPECT_EQ(hex(bytesOf(p())), hex(words({1, 0x000000e9, 2, 0xde00d83d, 0, 1, 0x00000080, 3,
                                            0x00000061, 0x00000062})));

    const size_t before = static_cast<size_t>(AParcel_getDataSize(p()));
    EXPECT_EQ(AParcel_writeString(p(), "x\xe2\x82", 3), STATUS_BAD_VALUE);
    EXPECT_EQ(AParcel_writeString(p(), "abc", -2), STATUS_BAD_VALUE);
    EXPECT_EQ(AParcel_writeString(p(), nullptr, 0), STATUS_BAD_VALUE);
    EXPECT_EQ(static_cast<size_t>(AParcel_getDataSize(p())), before) << "failed writes add bytes";
}

TEST_F(ParcelWireTest, PrimitivesUseFourByteSlotsAndUnalignedLongs) {
    ASSERT_EQ(AParcel_writeInt32(p(), 1), STATUS_OK);
    ASSERT_EQ(AParcel_writeInt64(p(), 0x1122334455667788), STATUS_OK);  // at offset 4
    ASSERT_EQ(AParcel_writeBool(p(), true), STATUS_OK);
    ASSERT_EQ(AParcel_writeByte(p(), -1), STATUS_OK);
    ASSERT_EQ(AParcel_writeChar(p(), u'\x263a'), STATUS_OK);
    ASSERT_EQ(AParcel_writeFloat(p(), 1.0f), STATUS_OK);
    ASSERT_EQ(AParcel_writeDouble(p(), 2.0), STATUS_OK);
    EXPECT_EQ(hex(bytesOf(p())), hex(words({1, 0x55667788, 0x11223344, 1, 0xffffffff, 0x263a,
                                            0x3f800000, 0, 0x40000000})));
}

TEST_F(ParcelWireTest, ArraysHaveCountThenElementsAndMinusOneForNull) {
    ASSERT_EQ(AParcel_writeInt32Array(p(), nullptr, 0), STATUS_OK);  // empty, not null
    ASSERT_EQ(AParcel_writeInt32Array(p(), nullptr, -1), STATUS_OK);
    const float floats[] = {1.0f, 2.0f};
    ASSERT_EQ(AParcel_writeFloatArray(p(), floats, 2), STATUS_OK);
    const int8_t bytes[] = {1, 2, 3};
    ASSERT_EQ(AParcel_writeByteArray(p(), bytes, 3), STATUS_OK);  // packed, padded
    const char16_t chars[] = {u'a', u'b'};
    ASSERT_EQ(AParcel_writeCharArray(p(), chars, 2), STATUS_OK);  // one int32 each
    ASSERT_EQ(ndk::AParcel_writeVector(p(), std::vector<bool>{true, false}), STATUS_OK);
    const std::optional<std::vector<std::optional<std::string>>> strings =
            std::vector<std::optional<std::string>>{"a", std::nullopt};
    ASSERT_EQ(ndk::AParcel_writeVector(p(), strings), STATUS_OK);
    EXPECT_EQ(hex(bytesOf(p())),
              hex(words({0, 0xffffffff, 2, 0x3f800000, 0x40000000, 3, 0x00030201, 2, 0x61, 0x62, 2,
                         1, 0, 2, 1, 0x00000061, 0xffffffff})));
}

TEST_F(ParcelWireTest, InconsistentArrayArgumentsAreRefused) {
    const int32_t data[] = {1, 2};
    EXPECT_EQ(AParcel_writeInt32Array(p(), nullptr, 2), STATUS_BAD_VALUE);
    EXPECT_EQ(AParcel_writeInt32Array(p(), data, -1), STATUS_BAD_VALUE);
    EXPECT_EQ(AParcel_writeInt32Array(p(), nullptr, -2), STATUS_BAD_VALUE);
    EXPECT_EQ(AParcel_getDataSize(p()), 0);
}

TEST_F(ParcelWireTest, StatusHeaders) {
    ndk::ScopedAStatus ok = ndk::ScopedAStatus::ok();
    ASSERT_EQ(AParcel_writeStatusHeader(p(), ok.get()), STATUS_OK);
    EXPECT_EQ(hex(bytesOf(p())), hex(words({0})));

    AParcel_reset(p());
    auto unsupported = ndk::ScopedAStatus::fromExceptionCode(EX_UNSUPPORTED_OPERATION);
    ASSERT_EQ(AParcel_writeStatusHeader(p(), unsupported.get()), STATUS_OK);
    EXPECT_EQ(hex(bytesOf(p())), hex(words({0xfffffff9, 0, 0, 0})));

    AParcel_reset(p());
    auto withMessage =
            ndk::ScopedAStatus::fromExceptionCodeWithMessage(EX_UNSUPPORTED_OPERATION, "abc");
    ASSERT_EQ(AParcel_writeStatusHeader(p(), withMessage.get()), STATUS_OK);
    EXPECT_EQ(hex(bytesOf(p())), hex(words({0xfffffff9, 3, 0x00620061, 0x00000063, 0})));

    AParcel_reset(p());
    auto specific = ndk::ScopedAStatus::fromServiceSpecificError(42);
    ASSERT_EQ(AParcel_writeStatusHeader(p(), specific.get()), STATUS_OK);
    EXPECT_EQ(hex(bytesOf(p())), hex(words({0xfffffff8, 0, 0, 0, 42})));

    AParcel_reset(p());
    auto parcelable = ndk::ScopedAStatus::fromExceptionCode(EX_PARCELABLE);
    ASSERT_EQ(AParcel_writeStatusHeader(p(), parcelable.get()), STATUS_OK);
    EXPECT_EQ(hex(bytesOf(p())), hex(words({0xfffffff7, 0, 0, 0, 0})));

    AParcel_reset(p());
    auto badUtf8 =
            ndk::ScopedAStatus::fromExceptionCodeWithMessage(EX_ILLEGAL_STATE, "cut \xe2\x82");
    ASSERT_EQ(AParcel_writeStatusHeader(p(), badUtf8.get()), STATUS_OK);
    EXPECT_EQ(hex(bytesOf(p())), hex(words({0xfffffffb, 0, 0, 0})));
}

TEST_F(ParcelWireTest, FailedTransactionStatusWritesNothingAndBecomesTheResult) {
    auto failed = ndk::ScopedAStatus::fromStatus(STATUS_UNKNOWN_TRANSACTION);
    EXPECT_EQ(AParcel_writeStatusHeader(p(), failed.get()), STATUS_UNKNOWN_TRANSACTION);
    auto bare = ndk::ScopedAStatus::fromExceptionCode(EX_TRANSACTION_FAILED);
    EXPECT_EQ(AParcel_writeStatusHeader(p(), bare.get()), STATUS_FAILED_TRANSACTION);
    EXPECT_EQ(AParcel_getDataSize(p()), 0);
}

TEST_F(ParcelWireTest, NullBinderIsAnUnlistedZeroObjectWithUndeclaredStability) {
    ASSERT_EQ(AParcel_writeStrongBinder(p(), nullptr), STATUS_OK);
    EXPECT_EQ(hex(bytesOf(p())), hex(words({0x73622a85, 0x13, 0, 0, 0, 0, 0})));
    EXPECT_TRUE(p()->objectOffsets().empty());
}

TEST_F(ParcelWireTest, LocalBinderIsKeyedByItsReferenceBlockAndItself) {
    ndk::SpAIBinder binder(AIBinder_new(fooClass(), nullptr));
    ASSERT_EQ(AParcel_writeInt32(p(), 7), STATUS_OK);
    ASSERT_EQ(AParcel_writeStrongBinder(p(), binder.get()), STATUS_OK);

    const Bytes bytes = bytesOf(p());
    ASSERT_EQ(bytes.size(), 4u + 24u + 4u);
    flat_binder_object object;
    memcpy(&object, bytes.data() + 4, sizeof(object));
    EXPECT_EQ(object.hdr.type, static_cast<uint32_t>(BINDER_TYPE_BINDER));
    EXPECT_EQ(object.flags, 0x113u);  // accepts fds, normal policy at nice 19
    EXPECT_EQ(object.binder, reinterpret_cast<uintptr_t>(binder.get()->refs()));
    EXPECT_EQ(object.cookie, reinterpret_cast<uintptr_t>(binder.get()));
    // Never marked, so parceling gives it the library's own (system) level.
    EXPECT_EQ(hex(Bytes(bytes.end() - 4, bytes.end())), hex(words({0x0c})));
    EXPECT_EQ(p()->objectOffsets(), std::vector<binder_size_t>{4});

    AParcel_setDataPosition(p(), 4);
    AIBinder* read = nullptr;
    ASSERT_EQ(AParcel_readStrongBinder(p(), &read), STATUS_OK);
    EXPECT_EQ(read, binder.get());
    AIBinder_decStrong(read);
}

TEST_F(ParcelWireTest, ObjectFlagsCarrySchedulingAndSecurityRequests) {
    ndk::SpAIBinder binder(AIBinder_new(fooClass(), nullptr));
    AIBinder_markVintfStability(binder.get());
    AIBinder_setMinSchedulerPolicy(binder.get(), SCHED_FIFO, 98);
    AIBinder_setInheritRt(binder.get(), true);
    AIBinder_setRequestingSid(binder.get(), true);
    ASSERT_EQ(AParcel_writeStrongBinder(p(), binder.get()), STATUS_OK);

    const Bytes bytes = bytesOf(p());
    flat_binder_object object;
    memcpy(&object, bytes.data(), sizeof(object));
    EXPECT_EQ(object.flags, 98u | (1u << 9) | 0x100u | 0x800u | 0x1000u);
    EXPECT_EQ(hex(Bytes(bytes.end() - 4, bytes.end())), hex(words({0x3f})));
}

TEST_F(ParcelWireTest, ParcelFileDescriptorIsPresenceCommWordAndOwnedDuplicate) {
    int fds[2];
    ASSERT_EQ(pipe(fds), 0);
    ASSERT_EQ(AParcel_writeParcelFileDescriptor(p(), fds[0]), STATUS_OK);
    ASSERT_EQ(AParcel_writeParcelFileDescriptor(p(), -1), STATUS_OK);
    const Bytes bytes = bytesOf(p());
    ASSERT_EQ(bytes.size(), 8u + 24u + 4u);
    EXPECT_EQ(hex(Bytes(bytes.begin(), bytes.begin() + 8)), hex(words({1, 0})));
    flat_binder_object object;
    memcpy(&object, bytes.data() + 8, sizeof(object));
    EXPECT_EQ(object.hdr.type, static_cast<uint32_t>(BINDER_TYPE_FD));
    EXPECT_NE(static_cast<int>(object.handle), fds[0]) << "the parcel must own a duplicate";
    EXPECT_EQ(object.cookie, 1u);
    EXPECT_EQ(hex(Bytes(bytes.end() - 4, bytes.end())), hex(words({0})));
    close(fds[0]);
    close(fds[1]);
}

}  // namespace
