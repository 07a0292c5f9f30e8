#include "ProxyUtils.h"

#include "MonotonicClock.h"

namespace tapr {

ProxyUtils::ProxyUtils() : mFirstSample(true), mLastValue(0.0f), mLastTime(monotonicNow()) {}

ProxyUtils::~ProxyUtils() = default;

void ProxyUtils::reset() {
    mFirstSample = true;
}

}  // namespace tapr
