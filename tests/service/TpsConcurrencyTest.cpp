// Many binder threads at once, as the pool delivers them: every method mixed, then the state must
// be consistent and every client must have heard a well-formed story. Run under TSan as well.

#include <android/binder_status.h>

#include <random>
#include <thread>

#include "ServiceTestSupport.h"

namespace tps::test {
namespace {

using aidl::vendor::tavix::tps::Tps;
using aidl::vendor::tavix::tps::TpsTestPeer;

constexpr int kThreads = 8;
constexpr int kIterations = 300;

// Per session kind, a client hears start, stop, start, stop...: never two starts or two stops in
// a row, never a stop first. After every session closed, it ends on a stop (or heard nothing).
::testing::AssertionResult balanced(const std::vector<std::string>& events, const char* start,
                                    const char* stop) {
    bool playing = false;
    for (size_t i = 0; i < events.size(); ++i) {
        if (events[i] == start) {
            if (playing) return ::testing::AssertionFailure() << "second " << start << " at " << i;
            playing = true;
        } else if (events[i] == stop) {
            if (!playing) return ::testing::AssertionFailure() << stop << " without start at " << i;
            playing = false;
        }
    }
    if (playing) return ::testing::AssertionFailure() << "ends playing " << start;
    return ::testing::AssertionSuccess();
}

// One simulated processor: opens and closes sessions through both APIs, keeping its own count
// so that everything it opened is closed by the end.
void processor(Tps& tps, int seed, std::vector<std::shared_ptr<RecordingCallback>>* clients) {
    std::mt19937 random(seed);
    auto pick = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
    const char* const kinds[] = {"TPDPUProcessor", "TPC2Processor", "SDRDPUProcessor",
                                 "SDRC2Processor", "TPPreviewProcessor"};
    std::vector<std::string> open;  // what this thread must still close, newest last
    auto client = ndk::SharedRefBase::make<RecordingCallback>();
    EXPECT_TRUE(tps.registerCallback(client).isOk());
    clients->push_back(client);

    for (int i = 0; i < kIterations; ++i) {
        switch (pick(10)) {
            case 0:
                EXPECT_TRUE(tps.registerProcessor(pick(2) == 0).isOk());
                open.push_back("");
                break;
            case 1: {
                const std::string kind = kinds[pick(5)];
                tps.setParameters("register_" + kind + "=" + std::to_string(pick(2)));
                open.push_back(kind);
                break;
            }
            case 2:
            case 3:
                if (open.empty()) break;
                if (open.back().empty()) {
                    EXPECT_TRUE(tps.unregisterProcessor().isOk());
                } else {
                    tps.setParameters("Unregister_" + open.back());
                }
                open.pop_back();
                break;
            case 4: {
                std::vector<float> status;
                EXPECT_TRUE(tps.getTavixPrismStatus(&status).isOk());
                EXPECT_EQ(status.size(), 7u);
                break;
            }
            case 5: {
                std::string reply;
                EXPECT_TRUE(
                        tps.getParameters(pick(2) ? "all" : "pqModes;displayIDs", &reply).isOk());
                break;
            }
            case 6:
                tps.setParameters(
                        "brightness=" + std::to_string(pick(300)) + ";adjustedBrightness=" +
                        std::to_string(pick(300)) + ";displayID=" + std::to_string(pick(2)) +
                        ";displaySize=1080,2400;pqModes=0,1;displayIDs=0,1" +
                        ";filterRise=0.5;filterFall=0.1;pqMode=" + std::to_string(pick(3)));
                break;
            case 7:
                tps.updateParams(pick(7), pick(300));
                break;
            case 8: {
                std::vector<int32_t> ids;
                tps.updateDisplayIDs({pick(3), pick(3)});
                EXPECT_TRUE(tps.getDisplayIDs(&ids).isOk());
                break;
            }
            case 9: {
                auto late = ndk::SharedRefBase::make<RecordingCallback>();
                EXPECT_TRUE(tps.registerCallback(late).isOk());
                clients->push_back(late);
                break;
            }
        }
    }
    while (!open.empty()) {
        if (open.back().empty()) {
            tps.unregisterProcessor();
        } else {
            tps.setParameters("Unregister_" + open.back());
        }
        open.pop_back();
    }
}

TEST(TpsConcurrencyTest, MixedCallsLeaveConsistentStateAndBalancedClients) {
    ScopedPropertyDir properties;
    properties.setLogLevel(0);
    LogCapture log;
    FakeReader::reset();
    auto tps = ndk::SharedRefBase::make<Tps>();

    // A client whose process has died: it must be dropped at its first fan-out and stay gone.
    auto dead = ndk::SharedRefBase::make<RecordingCallback>();
    dead->failWith(STATUS_DEAD_OBJECT);
    ASSERT_TRUE(tps->registerCallback(dead).isOk());

    std::vector<std::vector<std::shared_ptr<RecordingCallback>>> clients(kThreads);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back(processor, std::ref(*tps), 1000 + t, &clients[t]);
    }
    for (auto& thread : threads) thread.join();

    TpsTestPeer peer(*tps);
    EXPECT_EQ(peer.renderCount(), 0);
    EXPECT_FALSE(peer.renderPlaying());
    EXPECT_EQ(peer.logoCount(), 0);
    EXPECT_FALSE(peer.logoPlaying());
    EXPECT_EQ(peer.sensorCount(), 0);
    EXPECT_FALSE(peer.sensorPlaying());
    EXPECT_FALSE(peer.hasReader());
    FakeReaderState reader = FakeReader::snapshot();
    EXPECT_EQ(reader.alive(), 0);
    EXPECT_EQ(reader.constructed, reader.disableSensorCalls);

    size_t registered = 0;
    for (const auto& group : clients) {
        for (const auto& client : group) {
            ++registered;
            const std::vector<std::string> events = client->events();
            EXPECT_TRUE(balanced(events, "Callback_TavixRenderStart", "Callback_TavixRenderStop"));
            EXPECT_TRUE(balanced(events, "Callback_TavixLogoStart", "Callback_TavixLogoStop"));
        }
    }
    EXPECT_EQ(peer.callbackCount(), registered) << "only the dead client is dropped";
    EXPECT_LE(dead->events().size(), 1u);
}

}  // namespace
}  // namespace tps::test
