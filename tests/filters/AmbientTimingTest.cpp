#include <gtest/gtest.h>

#include <cmath>

#include "FakeClock.h"
#include "ProxyUtilsAmbient.h"

namespace tps::test {
namespace {

// Base so that the clock is reset before the fixture's filter reads it in its constructor.
struct ClockAtZero {
    ClockAtZero() { setFakeClockNs(0); }
};

// The filter built at a fresh fake-clock origin, with the speeds its owner sets.
class AmbientTiming : public ::testing::Test, private ClockAtZero {
protected:
    AmbientTiming() {
        mFilter.setAmbientFilterRise(0.02f);
        mFilter.setAmbientFilterFall(0.004f);
    }
    float at(int64_t ms, float lux) {
        setFakeClockNs(ms * 1000000);
        return mFilter.Filter(lux);
    }

    tapr::ProxyUtilsAmbient mFilter;
};

TEST_F(AmbientTiming, FirstSampleBeforeTheIntervalIsReturnedExactly) {
    EXPECT_EQ(123.456f, at(10, 123.456f));
    // The rejected call did not move the time stamp: 60 ms after construction is accepted and
    // blends toward 1000 from 123.456 with alpha 60 * 24 / 1000 * 0.02.
    float out = at(60, 1000.0f);
    EXPECT_GT(out, 123.456f);
    EXPECT_LT(out, 1000.0f);
}

TEST_F(AmbientTiming, CallsWithinTheIntervalReturnTheLastOutputAndTimeAccumulates) {
    float first = at(1000, 200.0f);
    EXPECT_NEAR(200.0f, first, 1e-3f);
    for (int64_t t : {1001, 1020, 1049}) EXPECT_EQ(first, at(t, 5000.0f)) << t;
    // Exactly 50 ms is enough; the gap is measured from the last accepted update.
    float moved = at(1050, 5000.0f);
    EXPECT_GT(moved, first);
    EXPECT_EQ(moved, at(1099, 0.0f));
    float fell = at(1100, 0.0f);
    EXPECT_LT(fell, moved);
}

TEST_F(AmbientTiming, LongGapTakesTheInputAndRiseIsFasterThanFall) {
    at(0, 10.0f);
    EXPECT_NEAR(500.0f, at(2100, 500.0f), 0.01f);

    // Same distance in the perceptual domain up and down: rising covers more of it.
    tapr::ProxyUtilsAmbient up;
    tapr::ProxyUtilsAmbient down;
    setFakeClockNs(10'000'000'000);
    up.Filter(10.0f);
    down.Filter(1000.0f);
    setFakeClockNs(11'000'000'000);
    float rose = up.Filter(1000.0f);
    float fell = down.Filter(10.0f);
    EXPECT_GT(rose, 10.0f);
    EXPECT_LT(fell, 1000.0f);
    EXPECT_GT(std::log(rose / 10.0f), std::log(1000.0f / fell));
}

TEST_F(AmbientTiming, SpeedsAreTakenAsGiven) {
    at(0, 100.0f);
    mFilter.setAmbientFilterRise(0.0f);
    EXPECT_EQ(at(1000, 100.0f), at(2000, 5000.0f));  // rise disabled: nothing moves up
    mFilter.setAmbientFilterFall(-3.0f);             // negative alpha is clamped to 0
    float before = at(3000, 100.0f);
    EXPECT_EQ(before, at(4000, 1.0f));
    mFilter.setAmbientFilterFall(std::nanf(""));
    EXPECT_EQ(before, at(5000, 1.0f));
    mFilter.setAmbientFilterRise(1000.0f);  // alpha clamped to 1
    EXPECT_NEAR(800.0f, at(5050, 800.0f), 0.01f);
}

TEST_F(AmbientTiming, ResetPassesTheNextInputThrough) {
    at(0, 100.0f);
    float settled = at(1000, 100.0f);
    mFilter.reset();
    // Within the interval of the last update: returned as it is.
    EXPECT_EQ(42.0f, at(1020, 42.0f));
    // The value was taken even though the update was rejected.
    EXPECT_EQ(42.0f, at(1030, 9000.0f));
    EXPECT_NE(settled, 42.0f);

    mFilter.reset();
    // After the interval: blended with itself, which gives the input back up to rounding.
    EXPECT_NEAR(3000.0f, at(5000, 3000.0f), 0.01f);
}

}  // namespace
}  // namespace tps::test
