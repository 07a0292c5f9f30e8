#include "MpTestUtil.h"

#include <mutex>
#include <sstream>
#include <thread>
#include <vector>

#include "DriverTestSupport.h"

namespace mptest {

std::map<std::string, std::string> report(
        const std::shared_ptr<aidl::vendor::tavix::tps::ITps>& tps) {
    std::map<std::string, std::string> values;
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

std::map<std::string, std::string> waitForReport(
        const std::shared_ptr<aidl::vendor::tavix::tps::ITps>& tps,
        const std::function<bool(const std::map<std::string, std::string>&)>& done) {
    const auto deadline = std::chrono::steady_clock::now() + drivertest::kPatience;
    for (;;) {
        std::map<std::string, std::string> values = report(tps);
        if (done(values) || std::chrono::steady_clock::now() > deadline) return values;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
}

namespace {

void* passThrough(void* args) {
    return args;
}

void noDestroy(void*) {}

binder_status_t serveNothing(AIBinder*, transaction_code_t, const AParcel*, AParcel*) {
    return STATUS_UNKNOWN_TRANSACTION;
}

}  // namespace

AIBinder_Class* defineClientClass(const char* descriptor) {
    // Classes live for the whole process; keep them reachable.
    static std::mutex lock;
    static std::vector<AIBinder_Class*>* const classes = new std::vector<AIBinder_Class*>();
    AIBinder_Class* clazz = AIBinder_Class_define(descriptor, passThrough, noDestroy, serveNothing);
    std::lock_guard<std::mutex> guard(lock);
    classes->push_back(clazz);
    return clazz;
}

}  // namespace mptest
