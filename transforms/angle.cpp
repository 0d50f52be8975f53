// Angle normalisation and x86-style truncation for the rotations.
#include "transforms/angle.h"

#include <cmath>

double NormaliseAngle(double angle) {
  // fmod is exact, and for angles where subtracting 360 is exact (every angle
  // the subtraction loop ever leaves) it lands on the same value; it also ends
  // for angles the loop would never leave.
  if (angle >= 360.0) {
    return std::fmod(angle, 360.0);
  }
  if (angle < 0.0) {
    angle = std::fmod(angle, 360.0);
    // Adding 360 to exactly -360 gives +0, where the remainder gives -0.
    if (angle == 0.0) {
      return 0.0;
    }
    while (angle < 0.0) {
      angle += 360.0;
    }
  }
  return angle;
}

int32_t TruncToInt32(double value) {
  // The open bounds keep every accepted value's truncation inside int32; NaN
  // fails both comparisons.
  if (value > -2147483649.0 && value < 2147483648.0) {
    return static_cast<int32_t>(value);
  }
  return INT32_MIN;
}
