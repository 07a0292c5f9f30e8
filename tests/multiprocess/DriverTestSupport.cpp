#include "DriverTestSupport.h"

#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <sstream>
#include <thread>

namespace drivertest {

// ---- RawParcel / RawReader
// -----------------------------------------------------------------------

RawParcel& RawParcel::int32(int32_t value) {
    const size_t at = mData.size();
    mData.resize(at + sizeof(value));
    memcpy(mData.data() + at, &value, sizeof(value));
    return *this;
}

void RawParcel::object(const flat_binder_object& object) {
    mOffsets.push_back(mData.size());
    const size_t at = mData.size();
    mData.resize(at + sizeof(object));
    memcpy(mData.data() + at, &object, sizeof(object));
}

RawParcel& RawParcel::node(binder_uintptr_t ptr, binder_uintptr_t cookie) {
    flat_binder_object fbo{};
    fbo.hdr.type = BINDER_TYPE_BINDER;
    fbo.flags = FLAT_BINDER_FLAG_ACCEPTS_FDS | 0x13;
    fbo.binder = ptr;
    fbo.cookie = cookie;
    object(fbo);
    return *this;
}

RawParcel& RawParcel::handle(uint32_t handle) {
    flat_binder_object fbo{};
    fbo.hdr.type = BINDER_TYPE_HANDLE;
    fbo.handle = handle;
    object(fbo);
    return *this;
}

OutgoingBuffer RawParcel::buffer() const {
    return {mData.data(), mData.size(), mOffsets.data(), mOffsets.size()};
}

int32_t RawReader::int32() {
    int32_t value = 0;
    if (mPos + sizeof(value) <= mBuffer.size())
        memcpy(&value, mBuffer.data() + mPos, sizeof(value));
    mPos += sizeof(value);
    return value;
}

const flat_binder_object* RawReader::object(size_t index) const {
    if (index >= mBuffer.offsetCount()) return nullptr;
    const binder_size_t offset = mBuffer.offsets()[index];
    if (offset + sizeof(flat_binder_object) > mBuffer.size()) return nullptr;
    return reinterpret_cast<const flat_binder_object*>(mBuffer.data() + offset);
}

// ---- RecordingHandler
// ----------------------------------------------------------------------------

void RecordingHandler::onTransaction(DriverThread& thread, IncomingTransaction& txn) {
    if (txn.code == kCallbackCode) {
        RawReader in(txn.data);
        const int32_t x = in.int32();
        txn.data.reset();
        {
            std::lock_guard<std::mutex> lock(mLock);
            ++mCounts.callbacks;
        }
        mChanged.notify_all();
        RawParcel out;
        out.int32(2 * x).int32(gettid());
        (void)thread.sendReply(out.buffer());
        return;
    }
    if (onCall) onCall(thread, txn);
}

void RecordingHandler::onIncRefs(binder_uintptr_t, binder_uintptr_t) {
    std::lock_guard<std::mutex> lock(mLock);
    ++mCounts.incRefs;
    mChanged.notify_all();
}

void RecordingHandler::onAcquire(binder_uintptr_t, binder_uintptr_t) {
    std::lock_guard<std::mutex> lock(mLock);
    ++mCounts.acquires;
    mChanged.notify_all();
}

void RecordingHandler::onRelease(binder_uintptr_t, binder_uintptr_t) {
    std::lock_guard<std::mutex> lock(mLock);
    ++mCounts.releases;
    mChanged.notify_all();
}

void RecordingHandler::onDecRefs(binder_uintptr_t, binder_uintptr_t) {
    std::lock_guard<std::mutex> lock(mLock);
    ++mCounts.decRefs;
    mChanged.notify_all();
}

void RecordingHandler::watch(binder_uintptr_t cookie, uint32_t handle) {
    std::lock_guard<std::mutex> lock(mLock);
    mWatch[cookie] = handle;
}

void RecordingHandler::onDeadBinder(DriverThread& thread, binder_uintptr_t cookie) {
    uint32_t handle = 0;
    bool watched = false;
    {
        std::lock_guard<std::mutex> lock(mLock);
        ++mCounts.deaths[cookie];
        if (auto it = mWatch.find(cookie); it != mWatch.end()) {
            handle = it->second;
            watched = true;
            mWatch.erase(it);
        }
    }
    mChanged.notify_all();
    if (watched) (void)thread.clearDeathNotification(handle, cookie);
}

void RecordingHandler::onDeathNotificationCleared(binder_uintptr_t cookie) {
    std::lock_guard<std::mutex> lock(mLock);
    ++mCounts.cleared[cookie];
    mChanged.notify_all();
}

RecordingHandler::Counts RecordingHandler::counts() {
    std::lock_guard<std::mutex> lock(mLock);
    return mCounts;
}

bool RecordingHandler::waitFor(const std::function<bool(const Counts&)>& done) {
    std::unique_lock<std::mutex> lock(mLock);
    return mChanged.wait_for(lock, kPatience, [&] { return done(mCounts); });
}

// ---- ChildProcess / Pipe -----------------------------------------------------------------------

ChildProcess::ChildProcess(const std::function<int()>& fn) {
    mPid = fork();
    if (mPid == 0) _exit(fn());
}

ChildProcess::~ChildProcess() {
    if (!mReaped && mPid > 0) {
        kill();
        (void)wait();
    }
}

void ChildProcess::kill() {
    if (!mReaped && mPid > 0) ::kill(mPid, SIGKILL);
}

bool ChildProcess::running() {
    if (mReaped) return false;
    int status = 0;
    if (waitpid(mPid, &status, WNOHANG) != mPid) return true;
    mReaped = true;
    mStatus = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return false;
}

int ChildProcess::wait() {
    if (mReaped) return mStatus;
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    int status = 0;
    for (;;) {
        const pid_t ret = waitpid(mPid, &status, WNOHANG);
        if (ret == mPid) break;
        if (ret < 0 || std::chrono::steady_clock::now() > deadline) return -1;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    mReaped = true;
    mStatus = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return mStatus;
}

Pipe::Pipe() {
    if (pipe2(mFds, O_CLOEXEC) != 0) mFds[0] = mFds[1] = -1;
}

Pipe::~Pipe() {
    close(mFds[0]);
    close(mFds[1]);
}

void Pipe::signal(char value) {
    (void)!write(mFds[1], &value, 1);
}

bool Pipe::await(char* value) {
    pollfd pfd{mFds[0], POLLIN, 0};
    const int timeoutMs = static_cast<int>(
            std::chrono::duration_cast<std::chrono::milliseconds>(kPatience).count());
    if (poll(&pfd, 1, timeoutMs) != 1) return false;
    char c;
    if (read(mFds[0], &c, 1) != 1) return false;
    if (value != nullptr) *value = c;
    return true;
}

// ---- debugfs
// -------------------------------------------------------------------------------------

ProcState binderProcState(pid_t pid) {
    ProcState state;
    std::ifstream in("/sys/kernel/debug/binder/state");
    std::string line;
    bool inProc = false;
    const std::string header = "proc " + std::to_string(pid);
    while (std::getline(in, line)) {
        if (line.rfind("proc ", 0) == 0) {
            inProc = line == header;
            if (inProc) state.present = true;
            continue;
        }
        // A proc's own lines are indented, except its "context" line; anything else ends it.
        if (line.rfind("context ", 0) == 0) continue;
        if (line.empty() || line[0] != ' ') {
            inProc = false;
            continue;
        }
        if (!inProc) continue;
        std::istringstream words(line);
        std::string kind;
        words >> kind;
        if (kind == "node") ++state.nodes;
        if (kind == "ref") ++state.refs;
        if (kind == "buffer") ++state.buffers;
        if (kind == "thread") ++state.threads;
    }
    return state;
}

bool waitForProcState(pid_t pid, const std::function<bool(const ProcState&)>& done,
                      ProcState* last) {
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    for (;;) {
        const ProcState state = binderProcState(pid);
        if (last != nullptr) *last = state;
        if (done(state)) return true;
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

bool waitForProcGone(pid_t pid) {
    return waitForProcState(pid, [](const ProcState& s) { return !s.present; });
}

bool becomeContextManager(DriverProcess& process) {
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    for (;;) {
        const int err = process.becomeContextManager();
        if (err == 0) return true;
        if (err != -EBUSY || std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

}  // namespace drivertest
