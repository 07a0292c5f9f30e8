#include "MpTestUtil.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <mutex>
#include <sstream>
#include <thread>
#include <vector>

namespace mptest {

bool eventually(const std::function<bool()>& done) {
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    while (!done()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return true;
}

ChildProcess::ChildProcess(const std::function<int()>& fn) {
    mPid = fork();
    if (mPid == 0) _exit(fn());
}

ChildProcess::~ChildProcess() {
    kill();
    (void)wait();
}

void ChildProcess::kill() {
    if (!mReaped && mPid > 0) ::kill(mPid, SIGKILL);
}

bool ChildProcess::reap(int options) {
    int status = 0;
    if (mReaped || mPid <= 0 || waitpid(mPid, &status, options) != mPid) return mReaped;
    mReaped = true;
    mStatus = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return true;
}

bool ChildProcess::running() {
    return !reap(WNOHANG);
}

int ChildProcess::wait() {
    (void)eventually([this] { return reap(WNOHANG); });
    return mStatus;
}

ProcState binderProcState(pid_t pid) {
    ProcState state;
    std::ifstream in("/sys/kernel/debug/binder/state");
    std::string line;
    bool inProc = false;
    const std::string header = "proc " + std::to_string(pid);
    while (std::getline(in, line)) {
        if (line.rfind("proc ", 0) == 0) {
            inProc = line == header;
            state.present = state.present || inProc;
            continue;
        }
        // A proc's own lines are indented, except its "context" line; anything else ends it.
        if (line.rfind("context ", 0) == 0) continue;
        if (line.empty() || line[0] != ' ') inProc = false;
        if (!inProc) continue;
        std::istringstream words(line);
        std::string kind;
        words >> kind;
        state.nodes += kind == "node";
        state.refs += kind == "ref";
        state.buffers += kind == "buffer";
    }
    return state;
}

bool waitForProcState(pid_t pid, const std::function<bool(const ProcState&)>& done,
                      ProcState* last) {
    ProcState state;
    const bool held = eventually([&] { return done(state = binderProcState(pid)); });
    if (last != nullptr) *last = state;
    return held;
}

Report report(const std::shared_ptr<aidl::vendor::tavix::tps::ITps>& tps) {
    Report values;
    std::string text;
    if (!tps->getParameters("report", &text).isOk()) return values;
    std::stringstream in(text);
    std::string item;
    while (std::getline(in, item, ';')) {
        const size_t eq = item.find('=');
        if (eq != std::string::npos) values[item.substr(0, eq)] = item.substr(eq + 1);
    }
    return values;
}

Report waitForReport(const std::shared_ptr<aidl::vendor::tavix::tps::ITps>& tps,
                     const std::function<bool(const Report&)>& done) {
    Report values;
    (void)eventually([&] { return done(values = report(tps)); });
    return values;
}

AIBinder_Class* defineClientClass(const char* descriptor) {
    // Classes live for the whole process; keep them reachable.
    static std::mutex lock;
    static std::vector<AIBinder_Class*>* const classes = new std::vector<AIBinder_Class*>();
    AIBinder_Class* clazz = AIBinder_Class_define(
            descriptor, [](void* args) { return args; }, [](void*) {},
            [](AIBinder*, transaction_code_t, const AParcel*, AParcel*) {
                return binder_status_t{STATUS_UNKNOWN_TRANSACTION};
            });
    std::lock_guard<std::mutex> guard(lock);
    classes->push_back(clazz);
    return clazz;
}

binder_status_t transact(AIBinder* binder, transaction_code_t code, binder_flags_t flags,
                         const std::function<void(AParcel*)>& write, ndk::ScopedAParcel* reply) {
    AParcel* in = nullptr;
    if (binder_status_t status = AIBinder_prepareTransaction(binder, &in); status != STATUS_OK) {
        return status;
    }
    if (write) write(in);
    AParcel* out = nullptr;
    const binder_status_t status = AIBinder_transact(binder, code, &in, &out, flags);
    ndk::ScopedAParcel owner(out);
    if (reply != nullptr) *reply = std::move(owner);
    return status;
}

ndk::ScopedAStatus RecordingCallback::onTavixPrismPlaybackStart(bool* out) {
    *out = true;
    return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus RecordingCallback::onTavixPrismPlaybackStop(bool* out) {
    *out = true;
    return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus RecordingCallback::onTavixNotification(const std::string& event) {
    lastEvent = event;
    tid = gettid();
    ++calls;
    return ndk::ScopedAStatus::ok();
}

}  // namespace mptest
