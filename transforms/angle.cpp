// Angle normalisation and x86-style truncation for the rotations.
#include "transforms/angle.h"

#include <cmath>

double NormaliseAngle(double angle) {
    // Repeatedly adding -360 is exact below 2^56, where doubles are at most 8
    // apart, so there the loop lands on the exact remainder that fmod gives at
    // once. Beyond that the loop drifts or never ends; the remainder still does.
    if (angle >= 360.0) return std::fmod(angle, 360.0);
    if (angle < 0.0) {
        angle = std::fmod(angle, 360.0);
        // Adding 360 to exactly -360 gives +0, where the remainder gives -0.
        if (angle == 0.0) return 0.0;
        // A tiny negative remainder rounds up to 360.0 here, as in the loop.
        while (angle < 0.0) angle += 360.0;
    }
    return angle;
}

int QuarterTurnsToWithin45(double a) {
    if (a > 45.0 && a <= 135.0) return 1;
    if (a > 135.0 && a <= 225.0) return 2;
    if (a > 225.0 && a <= 315.0) return 3;
    return 0;
}

int32_t TruncToInt32(double value) {
    // The open bounds keep every accepted value's truncation inside int32; NaN
    // fails both comparisons.
    if (value > -2147483649.0 && value < 2147483648.0) return static_cast<int32_t>(value);
    return INT32_MIN;
}
