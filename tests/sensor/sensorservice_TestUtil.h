#pragma once

#include <chrono>
#include <functional>

#include "RecordingBinder.h"
#include "Wire.h"

namespace sensortest {

using Bytes = ::tps::test::Wire;
using ::tps::test::hex;
using ::tps::test::parcelBytes;
using ::tps::test::RecordingBinder;

// Polls until done() holds. The limit only keeps a broken build from hanging; tests never
// depend on how long anything takes.
bool eventually(const std::function<bool()>& done,
                std::chrono::milliseconds limit = std::chrono::seconds(20));

}  // namespace sensortest
