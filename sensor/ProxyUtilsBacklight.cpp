// Compiled without floating-point contraction: only the step written with std::fma is fused.

#include "ProxyUtilsBacklight.h"

#include <bit>
#include <cmath>
#include <cstdint>

namespace tapr {

namespace {

constexpr float kPreviousWeight = 0.8f;
// One unit in the last place below 0.2f; the tuning depends on this exact value.
constexpr float kInputWeight = std::bit_cast<float>(UINT32_C(0x3E4CCCCC));

}  // namespace

float ProxyUtilsBacklight::Filter(float input) {
    float prev;
    if (mFirstSample) {
        prev = input;
        mFirstSample = false;
    } else {
        prev = mLastValue;
    }
    float output = std::fma(prev, kPreviousWeight, input * kInputWeight);
    mLastValue = output;
    return output;
}

}  // namespace tapr
