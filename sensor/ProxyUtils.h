#pragma once

#include <time.h>

namespace tapr {

// A stateful smoothing filter. Not thread-safe: the owner serialises calls.
class ProxyUtils {
public:
    ProxyUtils();
    virtual ~ProxyUtils();
    ProxyUtils(const ProxyUtils&) = delete;
    ProxyUtils& operator=(const ProxyUtils&) = delete;

    virtual float Filter(float input) = 0;
    // Makes the next input pass through unsmoothed; the last value and time stamp stay.
    virtual void reset();

protected:
    bool mFirstSample;
    float mLastValue;
    timespec mLastTime;  // of the last accepted update
};

}  // namespace tapr
