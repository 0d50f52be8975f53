// "RotateMemoryQLM": an upper estimate of the pixel memory "RotateQLM" claims in
// new pictures for the same picture and angle, at 4 bytes per pixel, counted as
// if all of them were alive at once: the quarter-turned working picture and the
// three shear passes. It reads only the picture's width and height and makes no
// picture. The angle handling and the first pass are the rotation's own; the
// second and third passes are sized from the sides of the pass before them where
// the rotation uses the working picture's, which can only make them larger, and
// no size limit applies.
#include <cmath>
#include <cstdint>

#include "picture/host_picture.h"
#include "plugin/methods.h"
#include "transforms/angle.h"
#include "transforms/shear_geometry.h"

namespace {

// Products of host sizes can pass 2^63 only for sizes no host has; they wrap
// rather than overflow.
int64_t Product(int64_t a, int64_t b) {
    return static_cast<int64_t>(static_cast<uint64_t>(a) * static_cast<uint64_t>(b));
}

int64_t PictureBytes(int32_t width, int32_t height) { return Product(Product(width, height), 4); }

}  // namespace

int64_t rbRotateMemory(REALpicture picture, double angle) {
    // The rotation makes no picture for a NaN or infinite angle.
    if (!std::isfinite(angle)) return 0;
    const int32_t width = picture != nullptr ? ReadIntProperty(picture, "Width") : 0;
    const int32_t height = picture != nullptr ? ReadIntProperty(picture, "Height") : 0;

    double a = NormaliseAngle(angle);
    if (a == 0.0 || a == 90.0 || a == 180.0 || a == 270.0) return PictureBytes(width, height);

    // The quarter-turned working picture, whose sides an odd turn exchanges.
    const int quarters = QuarterTurnsToWithin45(a);
    const int64_t base = quarters != 0 ? PictureBytes(width, height) : 0;
    a -= 90.0 * quarters;
    const int32_t w = quarters % 2 == 1 ? height : width;
    const int32_t h = quarters % 2 == 1 ? width : height;

    // Upper bounds on purpose, from W1 and G: see shear_geometry.h.
    const ShearFactors factors = ShearFactorsOf(a);
    const int32_t w1 = FirstShearWidth(factors, w, h);
    const int64_t firstShear = Product(Product(h, w1), 4);
    const int32_t g = WrappingAdd(TruncatedHeight(factors, w1, h), 1);
    const int64_t secondShear = Product(Product(w1, g), 4);
    const int32_t x = WrappingAdd(TruncatedHeight(factors, w1, g), 1);
    const int32_t y = TruncatedWidth(factors, w1, g);
    const int64_t result = Product(Product(y, 4) + 4, x);
    return static_cast<int64_t>(static_cast<uint64_t>(base) + static_cast<uint64_t>(firstShear) +
                                static_cast<uint64_t>(secondShear) + static_cast<uint64_t>(result));
}
