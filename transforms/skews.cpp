// One row or one column of a shear, pixel by pixel through GetPixel and SetPixel.
// A pixel P landing with weight w keeps P - trunc(P w - Q w), Q being the source
// pixel before it (the background before the first): the two products are formed
// separately and then subtracted, never as w (P - Q), because the rounding of the
// products is part of the result.
#include "transforms/skews.h"

namespace {

struct Products {
    double r, g, b, a;
};

Products Weighted(int r, int g, int b, int a, double weight) { return {r * weight, g * weight, b * weight, a * weight}; }

}  // namespace

void HorizSkew(PictureReader& source, PictureWriter& destination, int row, int offset, double weight, int r, int g,
               int b, int a) {
    for (int x = 0; x < destination.width; ++x) destination.SetPixel(x, row, r, g, b, a);
    Products left = Weighted(r, g, b, a, weight);
    for (int x = 0; x < source.width; ++x) {
        const Pixel p = source.GetPixel(x, row);
        const Products own = Weighted(p.r, p.g, p.b, p.a, weight);
        const int d = x + offset;
        if (d >= 0 && d < destination.width)
            destination.SetPixel(d, row, p.r - static_cast<int>(own.r - left.r), p.g - static_cast<int>(own.g - left.g),
                                 p.b - static_cast<int>(own.b - left.b), p.a - static_cast<int>(own.a - left.a));
        left = own;
    }
    // The rotation's skews never put the trailing pixel left of the row; the
    // test keeps a stray one out of memory all the same.
    const int e = source.width + offset;
    if (e >= 0 && e < destination.width) {
        const Products background = Weighted(r, g, b, a, weight);
        destination.SetPixel(e, row, r - static_cast<int>(background.r - left.r),
                             g - static_cast<int>(background.g - left.g), b - static_cast<int>(background.b - left.b),
                             a - static_cast<int>(background.a - left.a));
    }
}

void VertSkew(PictureReader& source, PictureWriter& destination, int column, int offset, double weight, int r, int g,
              int b, int a) {
    for (int y = 0; y < destination.height; ++y) destination.SetPixel(column, y, r, g, b, a);
    Products left = Weighted(r, g, b, a, weight);
    for (int y = 0; y < source.height; ++y) {
        const Pixel p = source.GetPixel(column, y);
        const Products own = Weighted(p.r, p.g, p.b, p.a, weight);
        const int d = y + offset;
        if (d >= 0 && d < destination.height)
            destination.SetPixel(column, d, p.r - static_cast<int>(own.r - left.r),
                                 p.g - static_cast<int>(own.g - left.g), p.b - static_cast<int>(own.b - left.b),
                                 p.a - static_cast<int>(own.a - left.a));
        left = own;
    }
    const int e = source.height + offset;
    if (e >= 0 && e < destination.height) {
        const Products background = Weighted(r, g, b, a, weight);
        destination.SetPixel(column, e, r - static_cast<int>(background.r - left.r),
                             g - static_cast<int>(background.g - left.g), b - static_cast<int>(background.b - left.b),
                             a - static_cast<int>(background.a - left.a));
    }
}
