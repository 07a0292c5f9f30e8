// Round trip of a small synchronous call: through the binder NDK (proxy, parcels, driver layer,
// service manager lookup) against a bare ioctl ping-pong written here, in the same boot, both ends
// pinned to their own core. Prints the medians and their ratio. Run inside the binder VM:
//   tools/vm/run-in-vm --smp 2 -- build/bench/driver/driver_bench [CALLS]
#include <android/binder_ibinder.h>
#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <fcntl.h>
#include <linux/android/binder.h>
#include <sched.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr const char* kRawDevice = "/dev/hwbinder";
constexpr const char* kServiceName = "tps.bench.IEcho/default";
constexpr const char* kDescriptor = "tps.bench.IEcho";
constexpr transaction_code_t kEcho = FIRST_CALL_TRANSACTION;

void pinTo(int cpu) {
    cpu_set_t set;
    CPU_ZERO(&set);
    CPU_SET(cpu % std::max(1, static_cast<int>(std::thread::hardware_concurrency())), &set);
    sched_setaffinity(0, sizeof(set), &set);
}

int64_t nowNs() {
    timespec ts;
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return int64_t{ts.tv_sec} * 1000000000 + ts.tv_nsec;
}

double medianUs(std::vector<int64_t> samples) {
    std::sort(samples.begin(), samples.end());
    return samples.empty() ? 0 : samples[samples.size() / 2] / 1000.0;
}

pid_t spawn(const std::vector<std::string>& args) {
    const pid_t pid = fork();
    if (pid != 0) return pid;
    std::vector<char*> argv;
    for (const std::string& arg : args) argv.push_back(const_cast<char*>(arg.c_str()));
    argv.push_back(nullptr);
    execv(argv[0], argv.data());
    _exit(127);
}

// ---- bare driver
// ---------------------------------------------------------------------------------

struct RawBinder {
    int fd = -1;

    bool open(const char* path) {
        fd = ::open(path, O_RDWR | O_CLOEXEC);
        if (fd < 0) return false;
        return mmap(nullptr, 1024 * 1024 - 8192, PROT_READ, MAP_PRIVATE | MAP_NORESERVE, fd, 0) !=
               MAP_FAILED;
    }

    // One write-read; returns the bytes read.
    size_t talk(const std::vector<uint8_t>& out, uint8_t* in, size_t inSize) {
        binder_write_read bwr{};
        bwr.write_size = out.size();
        bwr.write_buffer = reinterpret_cast<uintptr_t>(out.data());
        bwr.read_size = inSize;
        bwr.read_buffer = reinterpret_cast<uintptr_t>(in);
        while (ioctl(fd, BINDER_WRITE_READ, &bwr) < 0) {
            if (errno != EINTR) return 0;
        }
        return bwr.read_consumed;
    }
};

template <typename T>
void put(std::vector<uint8_t>* out, uint32_t cmd, const T& payload) {
    const size_t at = out->size();
    out->resize(at + 4 + sizeof(T));
    memcpy(out->data() + at, &cmd, 4);
    memcpy(out->data() + at + 4, &payload, sizeof(T));
}

size_t payloadSize(uint32_t cmd) {
    return cmd == BR_ERROR ? 0 : _IOC_SIZE(cmd);
}

int rawServer() {
    pinTo(1);
    RawBinder binder;
    if (!binder.open(kRawDevice)) return 2;
    int unused = 0;
    while (ioctl(binder.fd, BINDER_SET_CONTEXT_MGR, &unused) < 0) usleep(10000);
    std::vector<uint8_t> out;
    uint32_t enter = BC_ENTER_LOOPER;
    out.insert(out.end(), reinterpret_cast<uint8_t*>(&enter),
               reinterpret_cast<uint8_t*>(&enter) + 4);
    alignas(8) uint8_t in[256];
    int32_t reply = 0;
    for (;;) {
        const size_t got = binder.talk(out, in, sizeof(in));
        out.clear();
        for (size_t pos = 0; pos + 4 <= got;) {
            uint32_t cmd;
            memcpy(&cmd, in + pos, 4);
            pos += 4;
            if (cmd == BR_TRANSACTION) {
                binder_transaction_data tr;
                memcpy(&tr, in + pos, sizeof(tr));
                memcpy(&reply, reinterpret_cast<void*>(tr.data.ptr.buffer), sizeof(reply));
                ++reply;
                put(&out, BC_FREE_BUFFER, tr.data.ptr.buffer);
                binder_transaction_data answer{};
                answer.data_size = sizeof(reply);
                answer.data.ptr.buffer = reinterpret_cast<uintptr_t>(&reply);
                put(&out, BC_REPLY, answer);
            }
            pos += payloadSize(cmd);
        }
    }
}

std::vector<int64_t> rawClient(int calls) {
    std::vector<int64_t> samples;
    RawBinder binder;
    if (!binder.open(kRawDevice)) return samples;
    std::vector<uint8_t> out;
    alignas(8) uint8_t in[256];
    int32_t value = 0;
    binder_uintptr_t pendingFree = 0;
    for (int i = 0; i < calls; ++i) {
        const int64_t start = nowNs();
        out.clear();
        if (pendingFree != 0) put(&out, BC_FREE_BUFFER, pendingFree);
        binder_transaction_data tr{};
        tr.target.handle = 0;
        tr.code = kEcho;
        tr.flags = TF_ACCEPT_FDS;
        tr.data_size = sizeof(value);
        tr.data.ptr.buffer = reinterpret_cast<uintptr_t>(&value);
        put(&out, BC_TRANSACTION, tr);
        bool replied = false;
        while (!replied) {
            const size_t got = binder.talk(out, in, sizeof(in));
            out.clear();
            if (got == 0) return {};
            for (size_t pos = 0; pos + 4 <= got;) {
                uint32_t cmd;
                memcpy(&cmd, in + pos, 4);
                pos += 4;
                if (cmd == BR_REPLY) {
                    binder_transaction_data answer;
                    memcpy(&answer, in + pos, sizeof(answer));
                    memcpy(&value, reinterpret_cast<void*>(answer.data.ptr.buffer), sizeof(value));
                    pendingFree = answer.data.ptr.buffer;
                    replied = true;
                } else if (cmd == BR_DEAD_REPLY || cmd == BR_FAILED_REPLY) {
                    return {};
                }
                pos += payloadSize(cmd);
            }
        }
        samples.push_back(nowNs() - start);
    }
    return samples;
}

// ---- NDK
// -------------------------------------------------------------------------------------------

binder_status_t echoTransact(AIBinder*, transaction_code_t code, const AParcel* in, AParcel* out) {
    if (code != kEcho) return STATUS_UNKNOWN_TRANSACTION;
    int32_t value = 0;
    if (binder_status_t status = AParcel_readInt32(in, &value); status != STATUS_OK) return status;
    return AParcel_writeInt32(out, value + 1);
}

const AIBinder_Class* echoClass() {
    static const AIBinder_Class* clazz = AIBinder_Class_define(
            kDescriptor, [](void* args) { return args; }, [](void*) {}, echoTransact);
    return clazz;
}

int ndkServer() {
    pinTo(1);
    ABinderProcess_setThreadPoolMaxThreadCount(0);
    AIBinder* echo = AIBinder_new(echoClass(), nullptr);
    if (AServiceManager_addService(echo, kServiceName) != EX_NONE) return 3;
    ABinderProcess_joinThreadPool();
    return 4;
}

std::vector<int64_t> ndkClient(int calls) {
    std::vector<int64_t> samples;
    AIBinder* echo = AServiceManager_waitForService(kServiceName);
    if (echo == nullptr || !AIBinder_associateClass(echo, echoClass())) return samples;
    int32_t value = 0;
    for (int i = 0; i < calls; ++i) {
        const int64_t start = nowNs();
        AParcel* in = nullptr;
        AParcel* out = nullptr;
        AIBinder_prepareTransaction(echo, &in);
        AParcel_writeInt32(in, value);
        if (AIBinder_transact(echo, kEcho, &in, &out, 0) != STATUS_OK) return {};
        AParcel_readInt32(out, &value);
        AParcel_delete(out);
        samples.push_back(nowNs() - start);
    }
    AIBinder_decStrong(echo);
    return samples;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc >= 2 && strcmp(argv[1], "--raw-server") == 0) return rawServer();
    if (argc >= 2 && strcmp(argv[1], "--ndk-server") == 0) return ndkServer();
    const int calls = argc >= 2 ? atoi(argv[1]) : 5000;
    if (access(kRawDevice, F_OK) != 0 || access("/dev/binder", F_OK) != 0) {
        fprintf(stderr,
                "driver_bench: needs /dev/binder and %s; run it through tools/vm/run-in-vm\n",
                kRawDevice);
        return 1;
    }
    const std::string self = "/proc/self/exe";
    char exe[4096];
    const ssize_t len = readlink(self.c_str(), exe, sizeof(exe) - 1);
    if (len <= 0) return 1;
    exe[len] = '\0';

    const pid_t manager = spawn({SERVICEMANAGER_PATH});
    const pid_t rawServerPid = spawn({exe, "--raw-server"});
    const pid_t ndkServerPid = spawn({exe, "--ndk-server"});
    pinTo(0);

    // Warm up both paths, then measure them alternately so load changes hit both alike.
    std::vector<int64_t> raw;
    std::vector<int64_t> ndk;
    (void)rawClient(calls / 10);
    (void)ndkClient(calls / 10);
    for (int round = 0; round < 4; ++round) {
        std::vector<int64_t> r = rawClient(calls / 4);
        std::vector<int64_t> n = ndkClient(calls / 4);
        raw.insert(raw.end(), r.begin(), r.end());
        ndk.insert(ndk.end(), n.begin(), n.end());
    }
    // SIGTERM lets a profiler wrapping the servers write its results; the manager needs SIGKILL.
    for (pid_t pid : {ndkServerPid, rawServerPid}) {
        kill(pid, SIGTERM);
        waitpid(pid, nullptr, 0);
    }
    kill(manager, SIGKILL);
    waitpid(manager, nullptr, 0);
    if (raw.empty() || ndk.empty()) {
        fprintf(stderr, "driver_bench: a client failed\n");
        return 1;
    }
    const double rawUs = medianUs(raw);
    const double ndkUs = medianUs(ndk);
    printf("round trips: %zu raw, %zu NDK (client on cpu 0, server on cpu 1)\n", raw.size(),
           ndk.size());
    printf("raw ioctl ping-pong  median %8.1f us\n", rawUs);
    printf("NDK AIBinder_transact median %8.1f us\n", ndkUs);
    printf("ratio NDK / raw       %8.2f (goal <= 1.50)\n", ndkUs / rawUs);
    return 0;
}
