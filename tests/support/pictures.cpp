#include "tests/support/pictures.h"

#include <algorithm>

namespace test_support {

Image Rearranged(const Image& from, Rearrangement rearrangement) {
    const int32_t w = from.width;
    const int32_t h = from.height;
    const bool exchanged =
        rearrangement == Rearrangement::QuarterAnticlockwise || rearrangement == Rearrangement::QuarterClockwise;
    Image to{exchanged ? h : w, exchanged ? w : h, from.pixels};
    // Pixel (X, Y) of the result comes from pixel (x, y) of the source.
    for (int32_t Y = 0; Y < to.height; ++Y)
        for (int32_t X = 0; X < to.width; ++X) {
            int32_t x = X, y = Y;
            switch (rearrangement) {
                case Rearrangement::BothWays: x = w - 1 - X, y = h - 1 - Y; break;
                case Rearrangement::LeftRight: x = w - 1 - X; break;
                case Rearrangement::TopBottom: y = h - 1 - Y; break;
                case Rearrangement::QuarterAnticlockwise: x = w - 1 - Y, y = X; break;
                case Rearrangement::QuarterClockwise: x = Y, y = h - 1 - X; break;
            }
            to.at(X, Y) = from.at(x, y);
        }
    return to;
}

void FillRandom(simhost::SimulatedHost& host, REALpicture picture, uint32_t seed) {
    uint32_t state = seed * 2654435761u + 1;
    auto next = [&state] {
        state ^= state << 13;
        state ^= state >> 17;
        state ^= state << 5;
        return state;
    };
    std::vector<simhost::Rgba> row(static_cast<size_t>(std::max(host.Width(picture), 0)));
    const int32_t height = host.Height(picture);
    for (int32_t y = 0; y < height; ++y) {
        for (simhost::Rgba& pixel : row) {
            const uint32_t v = next();
            pixel = {uint8_t(v), uint8_t(v >> 8), uint8_t(v >> 16), uint8_t(v >> 24)};
        }
        host.SetRow(picture, y, row.data());
    }
}

// A row at a time: the fuzz target reads every picture it checks.
Image ReadImage(const simhost::SimulatedHost& host, REALpicture picture) {
    Image image{host.Width(picture), host.Height(picture), {}};
    if (image.width <= 0 || image.height <= 0) return image;
    image.pixels.resize(static_cast<size_t>(image.width) * image.height);
    for (int32_t y = 0; y < image.height; ++y) host.GetRow(picture, y, &image.at(0, y));
    return image;
}

void WriteImage(simhost::SimulatedHost& host, REALpicture picture, const Image& image) {
    if (image.width > 0 && host.Width(picture) == image.width)
        for (int32_t y = 0; y < image.height; ++y) host.SetRow(picture, y, &image.at(0, y));
}

}  // namespace test_support
