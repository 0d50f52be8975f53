// The two shears the rotation by any angle is made of, in their readable form:
// one row shifted right, or one column shifted down, by a whole number of pixels,
// every pixel blended with its predecessor by the fractional part of the shift,
// and the background wherever no source pixel lands. GetPixel and SetPixel per
// pixel: these are the definition, which skew_loops.h follows pixel for pixel
// with loops specialised for the two pictures' formats.
#pragma once

#include <cmath>
#include <cstdint>

#include "picture/picture_editor.h"

// A line's shift split into whole pixels and the weight of the blend
// (0 <= weight <= 1; exactly 1 only when a tiny negative skew rounds up).
struct SkewStep {
    int32_t offset;
    double weight;
};

inline SkewStep SplitSkew(double skew) {
    const double whole = std::floor(skew);
    return {static_cast<int32_t>(whole), skew - whole};
}

// Source row `row` into destination row `row`, offset pixels to the right.
void HorizSkew(PictureReader& source, PictureWriter& destination, int row, int offset, double weight, int r,
               int g, int b, int a);

// Source column `column` into destination column `column`, offset pixels down.
void VertSkew(PictureReader& source, PictureWriter& destination, int column, int offset, double weight, int r,
              int g, int b, int a);
