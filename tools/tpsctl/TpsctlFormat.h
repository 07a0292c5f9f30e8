#pragma once

#include <cstdint>
#include <ctime>
#include <string>
#include <vector>

namespace tpsctl {

// One labelled line per value of the status vector.
std::string formatStatus(const std::vector<float>& status);

// The compact line that watch prints while polling: lux and brightness first.
std::string formatStatusLine(const std::vector<float>& status);

// A getParameters reply as "key=value" lines sorted by key; the service's order is arbitrary.
std::string formatReply(const std::string& reply);

// "method failed: ..." naming the binder status a call returned.
std::string formatCallFailure(const std::string& method, int32_t exceptionCode, int32_t statusCode,
                              int32_t serviceSpecificError, const std::string& description);

// Local wall-clock time of day with milliseconds, e.g. "14:03:27.512".
std::string formatTimeOfDay(const timespec& realtime);

}  // namespace tpsctl
