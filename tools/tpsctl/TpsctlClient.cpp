#include "TpsctlClient.h"

#include <aidl/vendor/tavix/tps/BnTpsCallback.h>
#include <aidl/vendor/tavix/tps/ITps.h>
#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <signal.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <iostream>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "TpsctlFormat.h"

using aidl::vendor::tavix::tps::BnTpsCallback;
using aidl::vendor::tavix::tps::ITps;

namespace tpsctl {

namespace {

bool reportFailure(const char* method, const ndk::ScopedAStatus& status) {
    if (status.isOk()) return false;
    const char* message = status.getMessage();
    std::cerr << "tpsctl: "
              << formatCallFailure(method, status.getExceptionCode(), status.getStatus(),
                                   status.getServiceSpecificError(), message ? message : "")
              << std::endl;
    return true;
}

// Polls rather than waits so that a missing service ends the command after the timeout.
std::shared_ptr<ITps> connect(double timeoutSeconds) {
    const auto deadline =
            std::chrono::steady_clock::now() + std::chrono::duration<double>(timeoutSeconds);
    for (;;) {
        ndk::SpAIBinder binder(AServiceManager_checkService(kDefaultInstance));
        if (binder.get() != nullptr) {
            std::shared_ptr<ITps> service = ITps::fromBinder(binder);
            if (service == nullptr) {
                std::cerr << "tpsctl: " << kDefaultInstance << " does not implement "
                          << ITps::descriptor << std::endl;
            }
            return service;
        }
        if (std::chrono::steady_clock::now() >= deadline) break;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    std::cerr << "tpsctl: service " << kDefaultInstance << " not found within " << timeoutSeconds
              << " s" << std::endl;
    return nullptr;
}

timespec now() {
    timespec ts{};
    clock_gettime(CLOCK_REALTIME, &ts);
    return ts;
}

// Serialises output from the binder thread (notifications) and the main thread (status lines).
// On a terminal the status line is rewritten in place and notifications scroll above it.
class WatchPrinter {
public:
    WatchPrinter() : mLive(isatty(STDOUT_FILENO) == 1) {}

    void event(const std::string& text) {
        std::lock_guard<std::mutex> lock(mLock);
        clearLiveLine();
        printf("%s  %s\n", formatTimeOfDay(now()).c_str(), text.c_str());
        redrawLiveLine();
        fflush(stdout);
    }

    void status(const std::string& text) {
        std::lock_guard<std::mutex> lock(mLock);
        if (!mLive) {
            printf("%s  %s\n", formatTimeOfDay(now()).c_str(), text.c_str());
        } else {
            clearLiveLine();
            mLiveText = text;
            redrawLiveLine();
        }
        fflush(stdout);
    }

    void finish() {
        std::lock_guard<std::mutex> lock(mLock);
        if (mLive && !mLiveText.empty()) printf("\n");
        mLiveText.clear();
        fflush(stdout);
    }

private:
    void clearLiveLine() {  // requires mLock
        if (mLive && !mLiveText.empty()) printf("\r\033[K");
    }
    void redrawLiveLine() {  // requires mLock
        if (mLive && !mLiveText.empty()) printf("%s", mLiveText.c_str());
    }

    std::mutex mLock;
    const bool mLive;
    std::string mLiveText;  // guarded by mLock
};

class WatchCallback : public BnTpsCallback {
public:
    explicit WatchCallback(WatchPrinter* printer) : mPrinter(printer) {}

    ndk::ScopedAStatus onTavixNotification(const std::string& event) override {
        mPrinter->event(event);
        return ndk::ScopedAStatus::ok();
    }
    ndk::ScopedAStatus onTavixPrismPlaybackStart(bool* handled) override {
        mPrinter->event("onTavixPrismPlaybackStart");
        *handled = true;
        return ndk::ScopedAStatus::ok();
    }
    ndk::ScopedAStatus onTavixPrismPlaybackStop(bool* handled) override {
        mPrinter->event("onTavixPrismPlaybackStop");
        *handled = true;
        return ndk::ScopedAStatus::ok();
    }

private:
    WatchPrinter* const mPrinter;
};

// Set on a binder thread when the service process dies; the main loop then ends with status 1.
std::atomic<bool> gServiceDied{false};

void onServiceDied(void* cookie) {
    static_cast<WatchPrinter*>(cookie)->event("the service died");
    gServiceDied = true;
    kill(getpid(), SIGTERM);  // wakes the signal wait of the main thread
}

int watch(const Options& options) {
    // Blocked before any binder thread exists, so the signals reach only the waits below. A
    // shell starts background jobs with SIGINT ignored, which would discard it unseen.
    signal(SIGINT, SIG_DFL);
    signal(SIGTERM, SIG_DFL);
    sigset_t stopSignals;
    sigemptyset(&stopSignals);
    sigaddset(&stopSignals, SIGINT);
    sigaddset(&stopSignals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &stopSignals, nullptr);

    // Notifications arrive as incoming calls: the pool must run for as long as we watch.
    ABinderProcess_startThreadPool();

    std::shared_ptr<ITps> service = connect(options.timeoutSeconds);
    if (service == nullptr) return 1;

    WatchPrinter printer;
    auto callback = ndk::SharedRefBase::make<WatchCallback>(&printer);
    // Before registering: a session already running is announced at once by the service.
    printer.event(std::string("watching ") + kDefaultInstance + " (Ctrl-C stops)");
    if (reportFailure("registerCallback", service->registerCallback(callback))) return 1;
    ndk::ScopedAIBinder_DeathRecipient death(AIBinder_DeathRecipient_new(onServiceDied));
    AIBinder_linkToDeath(service->asBinder().get(), death.get(), &printer);

    int exitStatus = 0;
    for (;;) {
        int signal;
        if (options.statusIntervalMs <= 0) {
            sigwait(&stopSignals, &signal);
            break;
        }
        timespec interval{static_cast<time_t>(options.statusIntervalMs / 1000),
                          static_cast<long>(options.statusIntervalMs % 1000) * 1000000L};
        if (sigtimedwait(&stopSignals, nullptr, &interval) >= 0) break;

        std::vector<float> status;
        if (reportFailure("getTavixPrismStatus", service->getTavixPrismStatus(&status))) {
            exitStatus = 1;
            break;
        }
        printer.status(formatStatusLine(status));
    }
    printer.finish();
    if (gServiceDied) exitStatus = 1;
    // The service keeps our callback until a notification to it fails after we exit.
    return exitStatus;
}

}  // namespace

int runCommand(const Options& options) {
    if (options.command == Command::kWatch) return watch(options);

    std::shared_ptr<ITps> service = connect(options.timeoutSeconds);
    if (service == nullptr) return 1;

    switch (options.command) {
        case Command::kStatus: {
            std::vector<float> status;
            if (reportFailure("getTavixPrismStatus", service->getTavixPrismStatus(&status))) {
                return 1;
            }
            std::cout << formatStatus(status);
            return 0;
        }
        case Command::kSet:
            return reportFailure("setParameters", service->setParameters(options.text)) ? 1 : 0;
        case Command::kGet: {
            std::string reply;
            if (reportFailure("getParameters", service->getParameters(options.text, &reply))) {
                return 1;
            }
            std::cout << formatReply(reply);
            return 0;
        }
        case Command::kUpdate:
            return reportFailure("updateParams",
                                 service->updateParams(options.paramId, options.paramValue))
                           ? 1
                           : 0;
        case Command::kDisplayIdsGet: {
            std::vector<int32_t> ids;
            if (reportFailure("getDisplayIDs", service->getDisplayIDs(&ids))) return 1;
            std::string text;
            for (int32_t id : ids) {
                if (!text.empty()) text += ',';
                text += std::to_string(id);
            }
            std::cout << text << std::endl;
            return 0;
        }
        case Command::kDisplayIdsSet:
            return reportFailure("updateDisplayIDs", service->updateDisplayIDs(options.displayIds))
                           ? 1
                           : 0;
        case Command::kRegister:
            return reportFailure("registerProcessor", service->registerProcessor(options.filter))
                           ? 1
                           : 0;
        case Command::kUnregister:
            return reportFailure("unregisterProcessor", service->unregisterProcessor()) ? 1 : 0;
        case Command::kVersion: {
            int32_t version = 0;
            std::string hash;
            if (reportFailure("getInterfaceVersion", service->getInterfaceVersion(&version)) ||
                reportFailure("getInterfaceHash", service->getInterfaceHash(&hash))) {
                return 1;
            }
            std::cout << "service  " << ITps::descriptor << " version " << version << " hash "
                      << hash << "\n"
                      << "tpsctl   " << ITps::descriptor << " version " << ITps::version << " hash "
                      << ITps::hash << std::endl;
            if (version != ITps::version || hash != ITps::hash) {
                std::cout << "note: the service was built from another interface definition"
                          << std::endl;
            }
            return 0;
        }
        case Command::kHelp:
        case Command::kWatch:
            break;
    }
    return 0;
}

}  // namespace tpsctl
