// NormaliseAngle against the loop it stands for (add -360 while >= 360, then 360
// while < 0), bit for bit, wherever that loop ends in reasonable time.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <iomanip>
#include <random>

#include "transforms/angle.h"

namespace {

double NormaliseByLoop(double angle) {
    while (angle >= 360) angle += -360;
    while (angle < 0) angle += 360;
    return angle;
}

void ExpectSameAsLoop(double angle) {
    // Compared as bits, so that +0 and -0 differ.
    EXPECT_EQ(std::bit_cast<uint64_t>(NormaliseAngle(angle)), std::bit_cast<uint64_t>(NormaliseByLoop(angle)))
        << std::setprecision(17) << angle;
}

TEST(NormaliseAngle, EqualsTheLoopOnRandomAngles) {
    std::mt19937_64 random(1);
    std::uniform_real_distribution<double> wide(-1e7, 1e7);
    std::uniform_real_distribution<double> decimalExponent(-30, 7);
    for (int i = 0; i < 2000; ++i) {
        ExpectSameAsLoop(wide(random));
        const double magnitude = std::pow(10.0, decimalExponent(random));
        ExpectSameAsLoop(i % 2 == 0 ? magnitude : -magnitude);
    }
}

TEST(NormaliseAngle, EqualsTheLoopOnQuartersAndTheirNeighbours) {
    for (int quarters = -40000; quarters <= 40000; quarters += 37) {
        const double quarter = quarters * 90.0;
        for (double angle : {quarter, std::nextafter(quarter, -1e9), std::nextafter(quarter, 1e9)})
            ExpectSameAsLoop(angle);
    }
    // A tiny negative angle rounds up to exactly 360; -360 gives +0.
    for (double angle : {-0.0, 0.0, 360.0, -360.0, 720.0, -720.0, -1e-20, -1e-300, 359.99999999999994})
        ExpectSameAsLoop(angle);
}

}  // namespace
