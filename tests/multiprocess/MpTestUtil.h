#pragma once

#include <aidl/vendor/tavix/tps/ITps.h>
#include <android/binder_ibinder.h>

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <string>

namespace mptest {

// The ITps fake's getParameters("report") as key -> value.
std::map<std::string, std::string> report(
        const std::shared_ptr<aidl::vendor::tavix::tps::ITps>& tps);
// Polls the report until done holds (or gives up); returns the last report.
std::map<std::string, std::string> waitForReport(
        const std::shared_ptr<aidl::vendor::tavix::tps::ITps>& tps,
        const std::function<bool(const std::map<std::string, std::string>&)>& done);

// A class for talking to remote objects of descriptor (it serves nothing itself).
AIBinder_Class* defineClientClass(const char* descriptor);

}  // namespace mptest
