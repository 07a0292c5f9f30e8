// Bit-exact arithmetic: every step below is rounded where written, in the precision written. This
// file must be compiled without floating-point contraction; the one fused step uses std::fma.

#include "ProxyUtilsAmbient.h"

#include <cmath>
#include <cstdint>

#include "MonotonicClock.h"

namespace tapr {

namespace {

// Inverse EOTF constants of the PQ curve (all exact in binary).
constexpr double kM1 = 0.1593017578125;
constexpr double kM2 = 78.84375;
constexpr double kC1 = 0.8359375;
constexpr double kC2 = 18.8515625;
constexpr double kC3 = 18.6875;
constexpr double kInvM1 = 6.277394636015326;
constexpr double kInvM2 = 0.012683313515655966;
// Just under kC2 / kC3, so the decoder's denominator stays positive.
constexpr double kMaxDecodeBase = 1.0087792641140467;
// Wider than the PQ range on purpose: lux above 10000 still moves the output.
constexpr float kMaxBlend = 1.98f;
constexpr float kPqPeakLux = 10000.0f;

float encodePq(float lux) {
    float y = std::fmax(lux * 0.0001f, 0.0f);
    double p = std::pow(static_cast<double>(y), kM1);
    double base = std::fmax((kC1 + kC2 * p) / (1.0 + kC3 * p), 0.0);
    return static_cast<float>(std::pow(base, kM2));
}

float decodePq(float encoded) {
    double q = std::pow(static_cast<double>(encoded), kInvM2);
    q = std::fmin(q, kMaxDecodeBase);
    double r = std::fmax((q - kC1) / (kC2 - kC3 * q), 0.0);
    return static_cast<float>(std::pow(r, kInvM1)) * kPqPeakLux;
}

}  // namespace

float ProxyUtilsAmbient::Filter(float input) {
    timespec now = monotonicNow();
    if (mFirstSample) {
        mLastValue = input;
        mFirstSample = false;
    }
    float prev = mLastValue;

    int64_t elapsedUs = static_cast<int64_t>(now.tv_sec - mLastTime.tv_sec) * 1000000 +
                        static_cast<int64_t>(now.tv_nsec - mLastTime.tv_nsec) / 1000;
    float elapsedMs = static_cast<float>(elapsedUs) / 1000.0f;
    // Rejected calls leave the time stamp alone, so the elapsed time keeps growing.
    if (elapsedMs < mMinIntervalMs) return prev;

    float speed = prev < input ? mRise : mFall;
    float alpha = elapsedMs * 24.0f / 1000.0f * speed;
    // Written so that NaN also ends up as 0.
    alpha = alpha >= 0.0f ? std::fmin(alpha, 1.0f) : 0.0f;

    float target = encodePq(input);
    float last = encodePq(prev);
    float blend = std::fma(target, alpha, (1.0f - alpha) * last);
    blend = std::fmin(std::fmax(blend, 0.0f), kMaxBlend);

    float output = decodePq(blend);
    mLastTime = now;
    mLastValue = output;
    return output;
}

}  // namespace tapr
