// Angle normalisation and the integer conversions of the rotations. The memory
// estimate must take the same quarter turn and residual angle as the rotation it
// bounds, so both take them from here.
#pragma once

#include <cstdint>

// The angle in [0, 360]: what repeatedly adding -360 while >= 360, then 360 while
// < 0, gives, computed as an exact remainder so that huge angles end at once.
// A tiny negative angle rounds up to exactly 360.0. Finite angles only: the
// rotation and its estimate refuse NaN and infinities before they get here.
double NormaliseAngle(double angle);

// How many quarter turns bring a normalised angle other than an exact quarter
// within 45 degrees of zero: 1 for 45 < a <= 135, 2 for 135 < a <= 225, 3 for
// 225 < a <= 315, else 0 (an angle above 315 keeps its residual). The residual is
// a - 90 * quarters, computed by the caller.
int QuarterTurnsToWithin45(double a);

// Truncation toward zero into 32 bits as the x86 conversion does it: NaN and
// values outside the int32 range give INT32_MIN, which every size check refuses.
int32_t TruncToInt32(double value);

// 32-bit sums and differences of sizes that wrap instead of overflowing, as the
// 32-bit host's integers do.
inline int32_t WrappingAdd(int32_t a, int32_t b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}
inline int32_t WrappingSubtract(int32_t a, int32_t b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b));
}
