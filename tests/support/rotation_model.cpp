// The rotation model computes every destination pixel on its own: it asks which
// source pixel lands there and which one lands just before it, where the plug-in
// walks the source and carries the previous pixel's products along. Sizes are
// worked out in doubles and checked against the limits before any conversion.
#include "tests/support/rotation_model.h"

#include <cmath>
#include <vector>

namespace test_support {
namespace {

using simhost::Rgba;
using simhost::Storage;

constexpr double kSideLimit = simhost::kLargestPictureSide;

struct Channels {
    int32_t c[4];  // r, g, b, a
};

Channels ChannelsOf(Rgba p) { return {{p.r, p.g, p.b, p.a}}; }

Image Blank(int32_t width, int32_t height) {
    return Image{width, height, std::vector<Rgba>(static_cast<size_t>(width) * height)};
}

bool FitsLimits(double width, double height) {
    return width >= 1 && height >= 1 && width <= kSideLimit && height <= kSideLimit;
}

// Quarter turns anticlockwise, as the host shows them once stored.
std::optional<Image> Turned(const Image& source, int quarters, Storage storage) {
    if (!FitsLimits(source.width, source.height)) return std::nullopt;
    const Rearrangement turns[] = {Rearrangement::QuarterAnticlockwise, Rearrangement::BothWays,
                                   Rearrangement::QuarterClockwise};
    return Stored(Rearranged(source, turns[quarters - 1]), storage);
}

// Position d of a line of `length` source pixels shifted by skew. Source pixel
// x = d - floor(skew) lands there (the background just past the end), blended
// with the one before it (the background before the first).
template <typename SourceAt>
Rgba ShearedPixel(SourceAt sourceAt, int32_t length, int32_t d, double skew, const Channels& background,
                  Storage storage) {
    const double offset = std::floor(skew);
    const double weight = skew - offset;
    const double x = d - offset;
    if (x < 0 || x > length)
        return StoredPixel(storage, background.c[0], background.c[1], background.c[2], background.c[3]);
    const int32_t i = static_cast<int32_t>(x);
    const Channels landing = i < length ? ChannelsOf(sourceAt(i)) : background;
    const Channels before = i > 0 ? ChannelsOf(sourceAt(i - 1)) : background;
    int32_t blended[4];
    for (int k = 0; k < 4; ++k) {
        const double difference = landing.c[k] * weight - before.c[k] * weight;
        blended[k] = landing.c[k] - static_cast<int32_t>(std::trunc(difference));
    }
    return StoredPixel(storage, blended[0], blended[1], blended[2], blended[3]);
}

}  // namespace

Image Stored(const Image& image, Storage storage) {
    Image stored = image;
    for (Rgba& p : stored.pixels) p = StoredPixel(storage, p.r, p.g, p.b, p.a);
    return stored;
}

Rgba StoredPixel(Storage storage, int32_t r, int32_t g, int32_t b, int32_t a) {
    const Rgba written{uint8_t(r & 0xFF), uint8_t(g & 0xFF), uint8_t(b & 0xFF), uint8_t(a & 0xFF)};
    switch (storage) {
        case Storage::GWorld24: return {written.r, written.g, written.b, 255};
        case Storage::GWorld16: {  // 5 bits a channel, widened back on reading, and one bit of alpha
            const auto widen = [](uint8_t c) { return uint8_t((c >> 3) << 3 | (c >> 3) >> 2); };
            return {widen(written.r), widen(written.g), widen(written.b), uint8_t(written.a >= 128 ? 255 : 0)};
        }
        case Storage::HostBitmap: {
            const int kept = written.a >> 1;
            return {written.r, written.g, written.b, uint8_t(kept * 2 + (kept & 1))};
        }
        default: return written;
    }
}

std::optional<Image> ModelRotate(const Image& source, double angle, uint32_t background, Storage newPictures) {
    if (std::isnan(angle) || std::isinf(angle)) return std::nullopt;
    double a = angle;
    while (a >= 360) a += -360;
    while (a < 0) a += 360;

    if (a == 0) return FitsLimits(source.width, source.height) ? std::optional(Stored(source, newPictures))
                                                               : std::nullopt;
    for (int quarters = 1; quarters <= 3; ++quarters)
        if (a == 90.0 * quarters) return Turned(source, quarters, newPictures);

    // Within 45 degrees of zero by one quarter turn; above 315 stays as it is.
    const int quarters = a > 45 && a <= 135 ? 1 : a > 135 && a <= 225 ? 2 : a > 225 && a <= 315 ? 3 : 0;
    const std::optional<Image> working = quarters == 0 ? std::optional(source) : Turned(source, quarters, newPictures);
    if (!working) return std::nullopt;
    a -= 90.0 * quarters;

    const Channels bg{{int32_t(background >> 16 & 0xFF), int32_t(background >> 8 & 0xFF), int32_t(background & 0xFF),
                       int32_t(background >> 24)}};
    const Image& in = *working;
    const int32_t W = in.width, H = in.height;
    const double rad = a * 3.141592653589793 / 180;
    const double s = std::sin(rad), t = std::tan(0.5 * rad), c = std::cos(rad);

    // Rows by t.
    const double w1 = std::trunc(std::fabs(t) * H) + W;
    if (!FitsLimits(w1, H)) return std::nullopt;
    Image p1 = Blank(static_cast<int32_t>(w1), H);
    for (int32_t y = 0; y < H; ++y) {
        const double skew = ((t < 0 ? y - H : y) + 0.5) * t;
        for (int32_t d = 0; d < p1.width; ++d)
            p1.at(d, y) = ShearedPixel([&](int32_t x) { return in.at(x, y); }, W, d, skew, bg, newPictures);
    }

    // Columns by s.
    const double h = std::trunc(std::fabs(s) * W + H * c);
    if (h < 0 || h > kSideLimit - 1) return std::nullopt;
    Image p2 = Blank(p1.width, static_cast<int32_t>(h) + 1);
    double columnSkew = s > 0 ? (W - 1) * s : -((W - w1) * s);
    for (int32_t x = 0; x < p2.width; ++x, columnSkew -= s)
        for (int32_t d = 0; d < p2.height; ++d)
            p2.at(x, d) = ShearedPixel([&](int32_t y) { return p1.at(x, y); }, H, d, columnSkew, bg, newPictures);

    // Rows by t again.
    const double hf = std::trunc(H * c + W * std::fabs(s));
    const double wf = std::trunc(W * c + H * std::fabs(s));
    if (hf < 0 || hf > kSideLimit - 1 || wf < 0 || wf > kSideLimit - 1) return std::nullopt;
    Image result = Blank(static_cast<int32_t>(wf) + 1, static_cast<int32_t>(hf) + 1);
    double rowSkew = s >= 0 ? -((W - 1) * s * t) : (-hf - (W - 1) * s) * t;
    for (int32_t y = 0; y < result.height; ++y, rowSkew += t)
        for (int32_t d = 0; d < result.width; ++d)
            result.at(d, y) =
                ShearedPixel([&](int32_t x) { return p2.at(x, y); }, p2.width, d, rowSkew, bg, newPictures);
    return result;
}

}  // namespace test_support
