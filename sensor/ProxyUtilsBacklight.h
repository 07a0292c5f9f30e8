#pragma once

#include "ProxyUtils.h"

namespace tapr {

// First-order low-pass on the 0..255 brightness, one step per call whatever the time between
// calls.
class ProxyUtilsBacklight : public ProxyUtils {
public:
    float Filter(float input) override;
};

}  // namespace tapr
