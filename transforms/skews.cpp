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

// Both shears walk one line alike; only the coordinate that moves differs.
// The rotation's skews never put the trailing pixel left of the line; the test
// keeps a stray one out of memory all the same.
template <typename GetPixelAt, typename SetPixelAt>
void SkewLine(int sourceLength, int destinationLength, int offset, double weight, const Pixel& background,
              GetPixelAt getPixel, SetPixelAt setPixel) {
    for (int i = 0; i < destinationLength; ++i) setPixel(i, background);
    Products left = Weighted(background.r, background.g, background.b, background.a, weight);
    const auto land = [&](int i, const Pixel& p) {
        const Products own = Weighted(p.r, p.g, p.b, p.a, weight);
        const int d = i + offset;
        if (d >= 0 && d < destinationLength)
            setPixel(d, Pixel{p.r - static_cast<int>(own.r - left.r), p.g - static_cast<int>(own.g - left.g),
                              p.b - static_cast<int>(own.b - left.b), p.a - static_cast<int>(own.a - left.a)});
        left = own;
    };
    for (int i = 0; i < sourceLength; ++i) land(i, getPixel(i));
    land(sourceLength, background);
}

}  // namespace

void HorizSkew(PictureReader& source, PictureWriter& destination, int row, int offset, double weight, int r, int g,
               int b, int a) {
    SkewLine(
        source.width, destination.width, offset, weight, Pixel{r, g, b, a},
        [&](int x) { return source.GetPixel(x, row); },
        [&](int x, const Pixel& p) { destination.SetPixel(x, row, p.r, p.g, p.b, p.a); });
}

void VertSkew(PictureReader& source, PictureWriter& destination, int column, int offset, double weight, int r, int g,
              int b, int a) {
    SkewLine(
        source.height, destination.height, offset, weight, Pixel{r, g, b, a},
        [&](int y) { return source.GetPixel(column, y); },
        [&](int y, const Pixel& p) { destination.SetPixel(column, y, p.r, p.g, p.b, p.a); });
}
