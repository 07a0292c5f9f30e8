#pragma once

#include "ProxyUtils.h"

namespace tapr {

// Smooths lux in the perceptual (PQ) domain, moving toward the input by a fraction that grows
// with the time since the last accepted update. Calls closer than the minimum interval return
// the last output unchanged.
class ProxyUtilsAmbient : public ProxyUtils {
public:
    float Filter(float input) override;
    void setAmbientFilterRise(float rise) { mRise = rise; }
    void setAmbientFilterFall(float fall) { mFall = fall; }
    // Only tuning tools change the interval; the service keeps the default.
    void setMinIntervalMs(float intervalMs) { mMinIntervalMs = intervalMs; }

private:
    float mRise = 0.02f;
    float mFall = 0.004f;
    float mMinIntervalMs = 50.0f;
};

}  // namespace tapr
