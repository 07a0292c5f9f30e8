#include "sensorservice_TestUtil.h"

#include <thread>

namespace sensortest {

bool eventually(const std::function<bool()>& done, std::chrono::milliseconds limit) {
    const auto giveUp = std::chrono::steady_clock::now() + limit;
    while (!done()) {
        if (std::chrono::steady_clock::now() > giveUp) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

}  // namespace sensortest
