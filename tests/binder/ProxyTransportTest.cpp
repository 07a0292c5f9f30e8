// Proxies over a scripted transport: the seam the kernel driver plugs into. Covers the handle
// table, stability checks on outgoing calls, adopted reply buffers and death notifications.
#include <android/binder_ibinder.h>
#include <android/binder_ibinder_platform.h>
#include <android/binder_parcel_utils.h>
#include <android/binder_stability.h>
#include <gtest/gtest.h>

#include <map>
#include <mutex>
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
constexpr transaction_code_t kDumpCode = 0x5F444D50;

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
        std::lock_guard<std::mutex> lock(mutex);
        calls.push_back({handle, code, flags, bytesOf(&data)});
        if (code == kInterfaceCode) {
            const std::u16string d = abinder::utf8ToUtf16String(descriptor);
            reply->writeString16(d.data(), d.size());
            return STATUS_OK;
        }
        return result;
    }
    void acquireHandle(uint32_t handle) override {
        std::lock_guard<std::mutex> lock(mutex);
        handleRefs[handle]++;
    }
    void releaseHandle(uint32_t handle) override {
        std::lock_guard<std::mutex> lock(mutex);
        handleRefs[handle]--;
    }
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

    std::mutex mutex;
    std::vector<Call> calls;
    std::map<uint32_t, int> handleRefs;
    binder_status_t result = STATUS_OK;
    std::string descriptor = "test.IRemote";
    int deathRequests = 0;
    int deathClears = 0;
    abinder::RefCounts* watched = nullptr;
};

binder_status_t noTransact(AIBinder*, transaction_code_t, const AParcel*, AParcel*) {
    return STATUS_OK;
}
void* noCreate(void* args) {
    return args;
}
void noDestroy(void*) {}

AIBinder_Class* remoteClass() {
    static AIBinder_Class* c =
            AIBinder_Class_define("test.IRemote", noCreate, noDestroy, noTransact);
    return c;
}
AIBinder_Class* remoteTwinClass() {
    static AIBinder_Class* c =
            AIBinder_Class_define("test.IRemote", noCreate, noDestroy, noTransact);
    return c;
}
AIBinder_Class* otherClass() {
    static AIBinder_Class* c =
            AIBinder_Class_define("test.IOther", noCreate, noDestroy, noTransact);
    return c;
}

// A received buffer with one handle object and its stability word.
struct ReceivedHandle {
    Bytes bytes;
    binder_size_t offset = 0;
    int released = 0;

    ReceivedHandle(uint32_t handle, int32_t stability) {
        flat_binder_object object;
        memset(&object, 0, sizeof(object));
        object.hdr.type = BINDER_TYPE_HANDLE;
        object.flags = 0x13;
        object.handle = handle;
        bytes.assign(reinterpret_cast<uint8_t*>(&object),
                     reinterpret_cast<uint8_t*>(&object) + sizeof(object));
        bytes = bytes + words({static_cast<uint32_t>(stability)});
    }

    void adoptInto(AParcel* parcel, const std::shared_ptr<FakeTransport>& transport) {
        parcel->adopt(transport, bytes.data(), bytes.size(), &offset, 1, [this] { released++; });
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
        EXPECT_EQ(received.released, 0);
        AParcel_setDataPosition(&parcel, 0);
        ASSERT_EQ(AParcel_readStrongBinder(&parcel, &binder), STATUS_OK);
        AIBinder_decStrong(binder);
        AParcel_reset(&parcel);
        EXPECT_EQ(received.released, 1);
    }
    EXPECT_EQ(received.released, 1);
}

TEST_F(ProxyTransportTest, ReceivedStabilityIsCheckedAndKept) {
    AIBinder* binder = nullptr;
    ReceivedHandle undeclared(3, 0);
    AParcel p1;
    undeclared.adoptInto(&p1, transport);
    EXPECT_EQ(AParcel_readStrongBinder(&p1, &binder), STATUS_BAD_TYPE);

    ndk::SpAIBinder vendor = receive(3, 0x03);
    ReceivedHandle conflicting(3, 0x0c);
    AParcel p2;
    conflicting.adoptInto(&p2, transport);
    EXPECT_EQ(AParcel_readStrongBinder(&p2, &binder), STATUS_BAD_TYPE);
    EXPECT_EQ(binder, nullptr);
}

TEST_F(ProxyTransportTest, StabilityMatrixAndVendorFlagStripping) {
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
}

TEST_F(ProxyTransportTest, AssociateClassAsksTheDescriptorOnce) {
    ndk::SpAIBinder binder = receive(4, 0x3f);
    EXPECT_FALSE(AIBinder_associateClass(binder.get(), otherClass()));
    EXPECT_TRUE(AIBinder_associateClass(binder.get(), remoteClass()));
    EXPECT_TRUE(AIBinder_associateClass(binder.get(), remoteTwinClass()));
    EXPECT_EQ(AIBinder_getClass(binder.get()), remoteClass()) << "first class stays canonical";
    int interfaceCalls = 0;
    for (const auto& c : transport->calls) interfaceCalls += c.code == kInterfaceCode;
    EXPECT_EQ(interfaceCalls, 1);
    EXPECT_EQ(transport->calls[0].data.size(), 0u) << "descriptor query carries no token";
}

TEST_F(ProxyTransportTest, DeadRemoteStopsFurtherCalls) {
    ndk::SpAIBinder binder = receive(6, 0x3f);
    ASSERT_TRUE(AIBinder_associateClass(binder.get(), remoteClass()));
    transport->result = STATUS_DEAD_OBJECT;
    EXPECT_EQ(call(binder, FLAG_PRIVATE_VENDOR), STATUS_DEAD_OBJECT);
    EXPECT_FALSE(AIBinder_isAlive(binder.get()));
    const size_t sent = transport->calls.size();
    EXPECT_EQ(call(binder, FLAG_PRIVATE_VENDOR), STATUS_DEAD_OBJECT);
    EXPECT_EQ(transport->calls.size(), sent);
}

TEST_F(ProxyTransportTest, ProxiesTravelAsHandlesAndComeBackAsThemselves) {
    ndk::SpAIBinder binder = receive(12, 0x3f);
    ndk::ScopedAParcel p(AParcel_create());
    ASSERT_EQ(AParcel_writeStrongBinder(p.get(), binder.get()), STATUS_OK);
    const Bytes bytes = bytesOf(p.get());
    flat_binder_object object;
    memcpy(&object, bytes.data(), sizeof(object));
    EXPECT_EQ(object.hdr.type, static_cast<uint32_t>(BINDER_TYPE_HANDLE));
    EXPECT_EQ(object.handle, 12u);
    EXPECT_EQ(object.cookie, 0u);
    EXPECT_EQ(object.flags, 0x13u);
    AParcel_setDataPosition(p.get(), 0);
    ndk::SpAIBinder back;
    ASSERT_EQ(ndk::AParcel_readRequiredStrongBinder(p.get(), &back), STATUS_OK);
    EXPECT_EQ(back.get(), binder.get());
}

TEST_F(ProxyTransportTest, DumpSendsTheDescriptorAndArguments) {
    ndk::SpAIBinder binder = receive(13, 0x3f);
    const char* args[] = {"ab"};
    ASSERT_EQ(AIBinder_dump(binder.get(), 2, args, 1), STATUS_OK);
    const FakeTransport::Call& sent = transport->calls.back();
    EXPECT_EQ(sent.code, kDumpCode);
    ASSERT_EQ(sent.data.size(), 24u + 4u + 12u);
    flat_binder_object object;
    memcpy(&object, sent.data.data(), sizeof(object));
    EXPECT_EQ(object.hdr.type, static_cast<uint32_t>(BINDER_TYPE_FD));
    EXPECT_EQ(object.handle, 2u);
    EXPECT_EQ(hex(Bytes(sent.data.begin() + 24, sent.data.end())),
              hex(words({1, 2, 0x00620061, 0})));
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

TEST_F(ProxyTransportTest, DeathIsDeliveredOncePerLinkThenUnlinked) {
    gDeaths = {};
    ndk::SpAIBinder binder = receive(30, 0x3f);
    ndk::ScopedAIBinder_DeathRecipient recipient(AIBinder_DeathRecipient_new(recordDied));
    AIBinder_DeathRecipient_setOnUnlinked(recipient.get(), recordUnlinked);
    int one = 1, two = 2;
    ASSERT_EQ(AIBinder_linkToDeath(binder.get(), recipient.get(), &one), STATUS_OK);
    ASSERT_EQ(AIBinder_linkToDeath(binder.get(), recipient.get(), &two), STATUS_OK);
    EXPECT_EQ(transport->deathRequests, 1) << "one kernel request per proxy";

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

TEST_F(ProxyTransportTest, UnlinkingTheLastLinkClearsTheNotification) {
    gDeaths = {};
    ndk::SpAIBinder binder = receive(31, 0x3f);
    ndk::ScopedAIBinder_DeathRecipient recipient(AIBinder_DeathRecipient_new(recordDied));
    AIBinder_DeathRecipient_setOnUnlinked(recipient.get(), recordUnlinked);
    int one = 1, two = 2;
    ASSERT_EQ(AIBinder_linkToDeath(binder.get(), recipient.get(), &one), STATUS_OK);
    ASSERT_EQ(AIBinder_linkToDeath(binder.get(), recipient.get(), &two), STATUS_OK);
    ASSERT_EQ(AIBinder_unlinkToDeath(binder.get(), recipient.get(), &one), STATUS_OK);
    EXPECT_EQ(transport->deathClears, 0);
    EXPECT_EQ(gDeaths.unlinked, (std::vector<int>{1}));

    recipient.set(nullptr);  // deleting the recipient unlinks the rest
    EXPECT_EQ(transport->deathClears, 1);
    EXPECT_EQ(gDeaths.unlinked, (std::vector<int>{1, 2}));
    EXPECT_TRUE(gDeaths.died.empty());
}

TEST_F(ProxyTransportTest, ObituaryForAVanishedProxyIsIgnored) {
    gDeaths = {};
    ndk::SpAIBinder binder = receive(32, 0x3f);
    ndk::ScopedAIBinder_DeathRecipient recipient(AIBinder_DeathRecipient_new(recordDied));
    int one = 1;
    ASSERT_EQ(AIBinder_linkToDeath(binder.get(), recipient.get(), &one), STATUS_OK);
    abinder::RefCounts* refs = transport->watched;
    refs->incWeak();  // keep the block to deliver into
    binder.set(nullptr);
    EXPECT_EQ(transport->deathClears, 1);
    abinder::ABpBinder::sendObituary(refs);
    refs->decWeak();
    EXPECT_TRUE(gDeaths.died.empty());
}

}  // namespace
