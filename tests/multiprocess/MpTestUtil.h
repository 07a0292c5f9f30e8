#pragma once

#include <aidl/vendor/tavix/tps/BnTpsCallback.h>
#include <aidl/vendor/tavix/tps/ITps.h>
#include <android/binder_ibinder.h>
#include <sys/types.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <string>

namespace mptest {

// Generous bound for anything that waits on another process (TCG guests are slow).
inline constexpr std::chrono::seconds kPatience{20};

// Polls done until it holds; false if it still does not after kPatience.
bool eventually(const std::function<bool()>& done);

// A forked child running fn; its result is the exit status. Killed and reaped on destruction.
class ChildProcess {
public:
    explicit ChildProcess(const std::function<int()>& fn);
    ~ChildProcess();

    pid_t pid() const { return mPid; }
    void kill();
    bool running();
    // Exit status, or 128+signal; -1 if it does not end within kPatience.
    int wait();

private:
    bool reap(int options);

    pid_t mPid;
    bool mReaped = false;
    int mStatus = -1;
};

// Per-process figures from the driver's debugfs state: what the kernel still holds for it.
struct ProcState {
    bool present = false;
    int nodes = 0;
    int refs = 0;
    int buffers = 0;
};
ProcState binderProcState(pid_t pid);
// Waits until done(state of pid) holds; the last state seen is left in *last.
bool waitForProcState(pid_t pid, const std::function<bool(const ProcState&)>& done,
                      ProcState* last = nullptr);

// The ITps fake's getParameters("report") as key -> value.
using Report = std::map<std::string, std::string>;
Report report(const std::shared_ptr<aidl::vendor::tavix::tps::ITps>& tps);
// Polls the report until done holds (or gives up); returns the last report.
Report waitForReport(const std::shared_ptr<aidl::vendor::tavix::tps::ITps>& tps,
                     const std::function<bool(const Report&)>& done);

// A class for talking to remote objects of descriptor (it serves nothing itself).
AIBinder_Class* defineClientClass(const char* descriptor);
// One call through the raw API; the reply (if any) lands in *reply.
binder_status_t transact(AIBinder* binder, transaction_code_t code, binder_flags_t flags,
                         const std::function<void(AParcel*)>& write,
                         ndk::ScopedAParcel* reply = nullptr);

// Records the notifications it gets and the thread they ran on.
class RecordingCallback : public aidl::vendor::tavix::tps::BnTpsCallback {
public:
    ndk::ScopedAStatus onTavixPrismPlaybackStart(bool* out) override;
    ndk::ScopedAStatus onTavixPrismPlaybackStop(bool* out) override;
    ndk::ScopedAStatus onTavixNotification(const std::string& event) override;

    std::string lastEvent;
    pid_t tid = 0;
    std::atomic<int> calls{0};
};

}  // namespace mptest
