// The geometry of the rotation by three shears, in one place for the rotation
// (shear_rotation.cpp) and its memory estimate (rotation_memory.cpp), which must
// agree with it to the pixel: the shear factors of the residual angle and the
// sizes of the pass pictures. Each formula keeps the rotation's order of
// operations, since its rounding decides the sizes.
//
// For a W x H working picture the rotation makes
//   P1      FirstShearWidth(W, H) x H                       (W1 x H)
//   P2      W1 x (TruncatedHeight(W, H) + 1)                (W1 x H2)
//   result  (TruncatedWidth(W, H) + 1) x (TruncatedHeight(W, H) + 1)
// The estimate feeds the same formulas W1 where the rotation has the working
// width W, and G = TruncatedHeight(W1, H) + 1 where it has the working height.
// That is on purpose: an estimate must never fall short, W1 >= W and G >= H2,
// and the sizes only grow with their arguments, so each term bounds its pass
// picture from above without repeating the passes' own reads of their sizes.
#pragma once

#include <cmath>
#include <cstdint>

#include "transforms/angle.h"

struct ShearFactors {
    double s;  // sin rad: the column shear
    double t;  // tan(rad / 2): the two row shears
    double c;  // cos rad
};

// For a residual angle a in degrees, rad = a * pi / 180, multiplied first.
inline ShearFactors ShearFactorsOf(double a) {
    const double rad = a * 3.141592653589793 / 180;
    return {std::sin(rad), std::tan(0.5 * rad), std::cos(rad)};
}

// W1 = trunc(|t| H) + W, wrapping as 32-bit sizes do.
inline int32_t FirstShearWidth(const ShearFactors& f, int32_t width, int32_t height) {
    return WrappingAdd(TruncToInt32(std::fabs(f.t) * height), width);
}

// trunc(H c + W |s|): P2's and the result's height, less the trailing row.
inline int32_t TruncatedHeight(const ShearFactors& f, int32_t width, int32_t height) {
    return TruncToInt32(height * f.c + std::fabs(f.s) * width);
}

// trunc(W c + H |s|): the result's width, less the trailing column.
inline int32_t TruncatedWidth(const ShearFactors& f, int32_t width, int32_t height) {
    return TruncToInt32(width * f.c + std::fabs(f.s) * height);
}
