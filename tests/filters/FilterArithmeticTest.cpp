// Expected bit patterns come from derive_reference.py, an exact-rational model of the filters.

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <vector>

#include "FakeClock.h"
#include "ProxyUtilsAmbient.h"
#include "ProxyUtilsBacklight.h"

namespace tps::test {
namespace {

constexpr int64_t kMs = 1000000;

uint32_t bitsOf(float f) {
    return std::bit_cast<uint32_t>(f);
}

struct Step {
    float lux;
    int64_t atNs;
};

std::vector<uint32_t> runAmbient(int64_t constructedAtNs, const std::vector<Step>& steps) {
    setFakeClockNs(constructedAtNs);
    tapr::ProxyUtilsAmbient filter;
    filter.setAmbientFilterRise(0.02f);
    filter.setAmbientFilterFall(0.004f);
    std::vector<uint32_t> out;
    for (const Step& step : steps) {
        setFakeClockNs(step.atNs);
        out.push_back(bitsOf(filter.Filter(step.lux)));
    }
    return out;
}

std::vector<uint32_t> runBacklight(const std::vector<float>& inputs) {
    tapr::ProxyUtilsBacklight filter;
    std::vector<uint32_t> out;
    for (float input : inputs) out.push_back(bitsOf(filter.Filter(input)));
    return out;
}

TEST(AmbientArithmetic, TraceMatchesReferenceBitForBit) {
    std::vector<Step> steps = {
            {100.0f, 1000 * kMs},    // first sample after 1 s: blended with itself
            {1000.0f, 2000 * kMs},   // rise, alpha 0.48
            {10.0f, 2030 * kMs},     // too soon: previous output
            {10.0f, 2060 * kMs},     // fall over the 60 ms since the last accepted update
            {20000.0f, 5000 * kMs},  // alpha capped at 1, encoded above 1
            {1e30f, 8000 * kMs},     // blend cut at 1.98
            {-5.0f, 8100 * kMs},     // negative lux encodes as 0
    };
    std::vector<uint32_t> want = {0x42C7FFFDu, 0x439A9B08u, 0x439A9B08u, 0x4397E782u,
                                  0x469C3FFCu, 0x5BBDDA9Cu, 0x57772C94u};
    EXPECT_EQ(want, runAmbient(0, steps));
}

TEST(AmbientArithmetic, EdgesOfTheCurveAndClamps) {
    // A full step: alpha reaches 1 exactly at 2.1 s with speed 0.02.
    EXPECT_EQ((std::vector<uint32_t>{0x41200000u, 0x4395FFFFu}),
              runAmbient(0, {{10.0f, 0}, {300.0f, 2100 * kMs}}));

    // Anything that encodes beyond 1.98 decodes to the same value.
    auto huge = [](float lux) { return runAmbient(0, {{1.0f, 0}, {lux, 3000 * kMs}})[1]; };
    EXPECT_EQ(0x5BBDDA9Cu, huge(1e30f));
    EXPECT_EQ(0x5BBDDA9Cu, huge(3e38f));

    // Negative lux is the same as none.
    auto settle = [](float lux) { return runAmbient(0, {{50.0f, 0}, {lux, 500 * kMs}})[1]; };
    EXPECT_EQ(settle(0.0f), settle(-5.0f));
    EXPECT_EQ(settle(0.0f), settle(-1e30f));
}

TEST(AmbientArithmetic, ElapsedMicrosecondsTruncateTowardZero) {
    // Built at 1 s + 1000 ns and updated at 2 s + 1 ns: the nanosecond part is -999 and
    // truncates to 0 us, so the filter sees exactly 1000000 us. A floor (999999 us) would give
    // 0x430BF4CC, which is what an update after 999999000 ns gives.
    int64_t start = 1000 * kMs + 1000;
    EXPECT_EQ((std::vector<uint32_t>{0x42480000u, 0x430BF4D2u}),
              runAmbient(start, {{50.0f, start}, {400.0f, 2000 * kMs + 1}}));
    EXPECT_EQ((std::vector<uint32_t>{0x42480000u, 0x430BF4CCu}),
              runAmbient(start, {{50.0f, start}, {400.0f, start + 999999000}}));
}

TEST(AmbientArithmetic, BlendIsOneFusedMultiplyAdd) {
    // Separate rounding of E(input) * alpha would give 0x40EEE8F8.
    EXPECT_EQ((std::vector<uint32_t>{0x40E00000u, 0x40EEE8F2u}),
              runAmbient(0, {{7.0f, 0}, {8.0f, 1000 * kMs}}));
}

TEST(BacklightArithmetic, SequenceMatchesReferenceBitForBit) {
    // The last three would each be one unit higher with 0.2f as the input weight.
    EXPECT_EQ((std::vector<uint32_t>{0x43480000u, 0x43220000u, 0x4303999Au, 0x431C47AEu,
                                     0x42FA0C4Au, 0x42D6D6A2u, 0x42DF121Bu}),
              runBacklight({200.0f, 10.0f, 10.0f, 255.0f, 0.0f, 37.0f, 128.0f}));
    // Rounding prev * 0.8 separately would end in 0x404F5C28.
    EXPECT_EQ((std::vector<uint32_t>{0x00000000u, 0x3FE66666u, 0x404F5C29u}),
              runBacklight({0.0f, 9.0f, 9.0f}));
}

TEST(BacklightArithmetic, FirstSamplePassesAndConstantInputConverges) {
    for (float input : {0.0f, 1.0f, 3.3f, 100.7f, 128.0f, 254.99f, 255.0f}) {
        tapr::ProxyUtilsBacklight filter;
        EXPECT_EQ(bitsOf(input), bitsOf(filter.Filter(input))) << input;
    }
    // From 0 toward a constant 100 the gap shrinks by 0.8 per call.
    tapr::ProxyUtilsBacklight filter;
    filter.Filter(0.0f);
    float gap = 100.0f;
    for (int i = 0; i < 20; ++i) {
        float out = filter.Filter(100.0f);
        gap *= 0.8f;
        EXPECT_NEAR(100.0f - gap, out, 1e-3f) << i;
    }
    // reset() makes the next input pass through again.
    filter.reset();
    EXPECT_EQ(7.0f, filter.Filter(7.0f));
}

TEST(BacklightArithmetic, IgnoresTheClock) {
    tapr::ProxyUtilsBacklight a;
    tapr::ProxyUtilsBacklight b;
    std::vector<float> inputs = {30.0f, 200.0f, 17.5f};
    for (float input : inputs) {
        float fromA = a.Filter(input);
        advanceFakeClockMs(12345);
        EXPECT_EQ(bitsOf(fromA), bitsOf(b.Filter(input)));
    }
}

}  // namespace
}  // namespace tps::test
