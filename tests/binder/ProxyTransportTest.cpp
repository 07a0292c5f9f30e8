// Proxies over a scripted transport: the seam the kernel driver plugs into. Covers the handle
// table, stability checks on outgoing calls, adopted reply buffers and death notifications.
#include <android/binder_ibinder.h>
#include <android/binder_ibinder_platform.h>
#include <android/binder_parcel_utils.h>
#include <android/binder_stability.h>
#include <gtest/gtest.h>

#include <map>
#include <vector>

#include "ABpBinder.h"
#include "Parcel.h"
#include "RefCounts.h"
#include "Transport.h"
#include "Unicode.h"
#include "WireBytes.h"

using namespace wire;

namespace {

constexpr transaction_code_t kInterfaceCode = 0x5F4E5446;
constexpr transaction_code_t kPingCode = 0x5F504E47;

class FakeTransport : public abinder::Transport {
public:
    struct Call {
        uint32_t handle;
        transaction_code_t code;
        binder_flags_t flags;
        Bytes data;
    };

    binder_status_t transact(uint32_t handle, transaction_code_t code, const AParcel& data,
                             AParcel* reply, binder_flags_t flags) override {
        calls.push_back({handle, code, flags, bytesOf(&data)});
        if (code == kInterfaceCode) {
            const std::u16string d = abinder::utf8ToUtf16String("test.IRemote");
            reply->writeString16(d.data(), d.size());
            return STATUS_OK;
        }
        return result;
    }
    void acquireHandle(uint32_t handle) override { handleRefs[handle]++; }
    void releaseHandle(uint32_t handle) override { handleRefs[handle]--; }
    binder_status_t requestDeathNotification(uint32_t, abinder::RefCounts* refs) override {
        deathRequests++;
        watched = refs;
        return STATUS_OK;
    }
    binder_status_t clearDeathNotification(uint32_t, abinder::RefCounts* refs) override {
        deathClears++;
        refs->decWeak();  // the request's reference, as a driver would after the kernel's ack
        watched = nullptr;
        return STATUS_OK;
    }
    // What the driver does on BR_DEAD_BINDER.
    void killWatched() {
        abinder::RefCounts* refs = watched;
        watched = nullptr;
        abinder::ABpBinder::sendObituary(refs);
        refs->decWeak();
    }

    // Only the test's thread calls in.
    std::vector<Call> calls;
    std::map<uint32_t, int> handleRefs;
    binder_status_t result = STATUS_OK;
    int deathRequests = 0;
    int deathClears = 0;
    int releasedBuffers = 0;
    abinder::RefCounts* watched = nullptr;
};

AIBinder_Class* remoteClass() {
    static AIBinder_Class* c = plainClass("test.IRemote");
    return c;
}

// A received buffer with one handle object and its stability word.
struct ReceivedHandle {
    Bytes bytes;
    binder_size_t offset = 0;

    ReceivedHandle(uint32_t handle, int32_t stability)
        : bytes(words({0x73682a85 /* HANDLE */, 0x13, handle, 0, 0, 0,
                       static_cast<uint32_t>(stability)})) {}

    void adoptInto(AParcel* parcel, const std::shared_ptr<FakeTransport>& transport) {
        parcel->adopt(transport, bytes.data(), bytes.size(), &offset, 1,
                      [](abinder::Transport& t, const uint8_t*, size_t, const binder_size_t*,
                         size_t) { static_cast<FakeTransport&>(t).releasedBuffers++; });
    }
};

class ProxyTransportTest : public ::testing::Test {
protected:
    std::shared_ptr<FakeTransport> transport = std::make_shared<FakeTransport>();

    ndk::SpAIBinder receive(uint32_t handle, int32_t stability) {
        ReceivedHandle received(handle, stability);
        AParcel parcel;
        received.adoptInto(&parcel, transport);
        ndk::SpAIBinder binder;
        EXPECT_EQ(ndk::AParcel_readRequiredStrongBinder(&parcel, &binder), STATUS_OK);
        return binder;
    }

    binder_status_t call(const ndk::SpAIBinder& binder, binder_flags_t flags) {
        AParcel* in = nullptr;
        binder_status_t status = AIBinder_prepareTransaction(binder.get(), &in);
        if (status != STATUS_OK) return status;
        AParcel* out = nullptr;
        status = AIBinder_transact(binder.get(), 1, &in, &out, flags);
        AParcel_delete(out);
        return status;
    }
};

TEST_F(ProxyTransportTest, OneProxyPerHandleWhileReferenced) {
    ndk::SpAIBinder a(transport->proxyForHandle(5));
    ndk::SpAIBinder b(transport->proxyForHandle(5));
    EXPECT_EQ(a.get(), b.get());
    EXPECT_TRUE(AIBinder_isRemote(a.get()));
    EXPECT_EQ(AIBinder_getUserData(a.get()), nullptr);
    EXPECT_EQ(transport->handleRefs[5], 1);
    ndk::ScopedAIBinder_Weak weak(AIBinder_Weak_new(a.get()));

    a.set(nullptr);
    b.set(nullptr);
    EXPECT_EQ(transport->handleRefs[5], 0) << "the remote reference goes with the proxy";
    EXPECT_EQ(transport->proxies().size(), 0u);
    EXPECT_EQ(weak.promote().get(), nullptr);

    ndk::SpAIBinder c(transport->proxyForHandle(5));
    EXPECT_EQ(transport->handleRefs[5], 1);
    EXPECT_EQ(AIBinder_ping(c.get()), STATUS_OK);
    EXPECT_EQ(transport->calls.back().code, kPingCode);
}

TEST_F(ProxyTransportTest, AdoptedBufferIsReleasedOnceAndCopiedBeforeWrites) {
    ReceivedHandle received(9, 0x3f);
    {
        AParcel parcel;
        received.adoptInto(&parcel, transport);
        AIBinder* binder = nullptr;
        ASSERT_EQ(AParcel_readStrongBinder(&parcel, &binder), STATUS_OK);
        AIBinder_decStrong(binder);
        ASSERT_EQ(AParcel_writeInt32(&parcel, 5), STATUS_OK);  // copies first
        EXPECT_EQ(received.bytes[received.bytes.size() - 4], 0x3f) << "adopted bytes untouched";
        EXPECT_EQ(transport->releasedBuffers, 0);
        AParcel_setDataPosition(&parcel, 0);
        ASSERT_EQ(AParcel_readStrongBinder(&parcel, &binder), STATUS_OK);
        AIBinder_decStrong(binder);
        AParcel_reset(&parcel);
        EXPECT_EQ(transport->releasedBuffers, 1);
    }
    EXPECT_EQ(transport->releasedBuffers, 1);
}

TEST_F(ProxyTransportTest, ReceivedStabilityIsCheckedAndKept) {
    AIBinder* binder = nullptr;
    ReceivedHandle undeclared(3, 0);
    AParcel p1;
    undeclared.adoptInto(&p1, transport);
    EXPECT_EQ(AParcel_readStrongBinder(&p1, &binder), STATUS_BAD_TYPE);
    // A proxy keeps the level it first arrived with.
    ndk::SpAIBinder vendor = receive(3, 0x03);
    ReceivedHandle conflicting(3, 0x0c);
    AParcel p2;
    conflicting.adoptInto(&p2, transport);
    EXPECT_EQ(AParcel_readStrongBinder(&p2, &binder), STATUS_BAD_TYPE);
    EXPECT_EQ(binder, nullptr);
}

TEST_F(ProxyTransportTest, StabilityMatrixVendorFlagStrippingAndDeadRemotes) {
    struct Case {
        int32_t stability;
        bool systemOk;
        bool vendorOk;
    };
    const Case cases[] = {
            {0, false, false}, {0x03, false, true}, {0x0c, true, false}, {0x3f, true, true}};
    uint32_t handle = 20;
    for (const Case& c : cases) {
        ndk::SpAIBinder binder = c.stability == 0
                                         ? ndk::SpAIBinder(transport->proxyForHandle(handle))
                                         : receive(handle, c.stability);
        handle++;
        ASSERT_TRUE(AIBinder_associateClass(binder.get(), remoteClass()));
        EXPECT_EQ(call(binder, 0), c.systemOk ? STATUS_OK : STATUS_BAD_TYPE) << c.stability;
        EXPECT_EQ(call(binder, FLAG_PRIVATE_VENDOR), c.vendorOk ? STATUS_OK : STATUS_BAD_TYPE)
                << c.stability;
    }
    for (const FakeTransport::Call& sent : transport->calls) {
        EXPECT_EQ(sent.flags & FLAG_PRIVATE_VENDOR, 0u);
    }

    ndk::SpAIBinder vintf = receive(99, 0x3f);
    ASSERT_TRUE(AIBinder_associateClass(vintf.get(), remoteClass()));
    transport->calls.clear();
    ASSERT_EQ(call(vintf, FLAG_PRIVATE_VENDOR | FLAG_ONEWAY | FLAG_CLEAR_BUF), STATUS_OK);
    ASSERT_EQ(transport->calls.size(), 1u);
    EXPECT_EQ(transport->calls[0].flags, static_cast<binder_flags_t>(FLAG_ONEWAY | FLAG_CLEAR_BUF));
    EXPECT_EQ(transport->calls[0].handle, 99u);

    // A dead remote stops further calls.
    transport->result = STATUS_DEAD_OBJECT;
    EXPECT_EQ(call(vintf, 0), STATUS_DEAD_OBJECT);
    EXPECT_FALSE(AIBinder_isAlive(vintf.get()));
    EXPECT_EQ(call(vintf, 0), STATUS_DEAD_OBJECT);
    EXPECT_EQ(transport->calls.size(), 2u);
}

TEST_F(ProxyTransportTest, ProxiesAskTheirDescriptorOnceAndTravelAsHandles) {
    ndk::SpAIBinder binder = receive(12, 0x3f);
    static AIBinder_Class* other = plainClass("test.IOther");  // classes live as long as the process
    static AIBinder_Class* twin = plainClass("test.IRemote");
    EXPECT_FALSE(AIBinder_associateClass(binder.get(), other));
    EXPECT_TRUE(AIBinder_associateClass(binder.get(), remoteClass()));
    EXPECT_TRUE(AIBinder_associateClass(binder.get(), twin));
    EXPECT_EQ(AIBinder_getClass(binder.get()), remoteClass()) << "first class stays canonical";
    int interfaceCalls = 0;
    for (const auto& c : transport->calls) interfaceCalls += c.code == kInterfaceCode;
    EXPECT_EQ(interfaceCalls, 1);
    EXPECT_EQ(transport->calls[0].data.size(), 0u) << "descriptor query carries no token";

    ndk::ScopedAParcel p(AParcel_create());
    ASSERT_EQ(AParcel_writeStrongBinder(p.get(), binder.get()), STATUS_OK);
    // Type HANDLE, flags, handle 12 with no cookie, then the stability level.
    EXPECT_EQ(hex(bytesOf(p.get())), hex(words({0x73682a85, 0x13, 12, 0, 0, 0, 0x3f})));
    AParcel_setDataPosition(p.get(), 0);
    ndk::SpAIBinder back;
    ASSERT_EQ(ndk::AParcel_readRequiredStrongBinder(p.get(), &back), STATUS_OK);
    EXPECT_EQ(back.get(), binder.get());
}

struct DeathLog {
    std::vector<int> died;
    std::vector<int> unlinked;
};
DeathLog gDeaths;

void recordDied(void* cookie) {
    gDeaths.died.push_back(*static_cast<int*>(cookie));
}
void recordUnlinked(void* cookie) {
    gDeaths.unlinked.push_back(*static_cast<int*>(cookie));
}

class DeathTest : public ProxyTransportTest {
protected:
    void SetUp() override {
        gDeaths = {};
        AIBinder_DeathRecipient_setOnUnlinked(recipient.get(), recordUnlinked);
        ASSERT_EQ(AIBinder_linkToDeath(binder.get(), recipient.get(), &one), STATUS_OK);
        ASSERT_EQ(AIBinder_linkToDeath(binder.get(), recipient.get(), &two), STATUS_OK);
        EXPECT_EQ(transport->deathRequests, 1) << "one kernel request per proxy";
    }
    ndk::SpAIBinder binder = receive(30, 0x3f);
    ndk::ScopedAIBinder_DeathRecipient recipient{AIBinder_DeathRecipient_new(recordDied)};
    int one = 1, two = 2;
};

TEST_F(DeathTest, DeliveredOncePerLinkThenUnlinked) {
    transport->killWatched();
    EXPECT_EQ(gDeaths.died, (std::vector<int>{1, 2}));
    EXPECT_EQ(gDeaths.unlinked, (std::vector<int>{1, 2}));
    EXPECT_FALSE(AIBinder_isAlive(binder.get()));
    EXPECT_EQ(AIBinder_unlinkToDeath(binder.get(), recipient.get(), &one), STATUS_NAME_NOT_FOUND);

    int three = 3;
    EXPECT_EQ(AIBinder_linkToDeath(binder.get(), recipient.get(), &three), STATUS_DEAD_OBJECT);
    EXPECT_EQ(gDeaths.unlinked, (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(gDeaths.died.size(), 2u);
}

TEST_F(DeathTest, UnlinkingTheLastLinkClearsTheNotification) {
    ASSERT_EQ(AIBinder_unlinkToDeath(binder.get(), recipient.get(), &one), STATUS_OK);
    EXPECT_EQ(transport->deathClears, 0);
    EXPECT_EQ(gDeaths.unlinked, (std::vector<int>{1}));

    recipient.set(nullptr);  // deleting the recipient unlinks the rest
    EXPECT_EQ(transport->deathClears, 1);
    EXPECT_EQ(gDeaths.unlinked, (std::vector<int>{1, 2}));
    EXPECT_TRUE(gDeaths.died.empty());
}

TEST_F(DeathTest, ObituaryForAVanishedProxyIsIgnored) {
    abinder::RefCounts* refs = transport->watched;
    refs->incWeak();  // keep the block to deliver into
    binder.set(nullptr);
    EXPECT_EQ(transport->deathClears, 1);
    abinder::ABpBinder::sendObituary(refs);
    refs->decWeak();
    EXPECT_TRUE(gDeaths.died.empty());
}

}  // namespace
