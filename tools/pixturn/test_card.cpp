// Drawn with 4 x 4 samples per pixel composited in premultiplied alpha, so that
// every edge is already anti-aliased and the blends the rotation adds can be told
// from the card's own.
#include "tools/pixturn/test_card.h"

#include <algorithm>
#include <cmath>

namespace pixturn {

namespace {

constexpr int kSamplesPerSide = 4;
constexpr double kPi = 3.141592653589793;

struct Colour {
    double r, g, b, a;  // straight alpha, 0..1
};

struct Point {
    double x, y;
};

// Premultiplied accumulation of the layers at one sample.
struct Paint {
    double r = 0, g = 0, b = 0, a = 0;

    void Over(const Colour& c) {
        r = c.r * c.a + r * (1 - c.a);
        g = c.g * c.a + g * (1 - c.a);
        b = c.b * c.a + b * (1 - c.a);
        a = c.a + a * (1 - c.a);
    }
    void Clear() { r = g = b = a = 0; }
};

bool InDisc(Point p, Point centre, double radius) {
    return (p.x - centre.x) * (p.x - centre.x) + (p.y - centre.y) * (p.y - centre.y) <= radius * radius;
}

bool InRect(Point p, double left, double top, double right, double bottom) {
    return p.x >= left && p.x < right && p.y >= top && p.y < bottom;
}

bool NearSegment(Point p, Point a, Point b, double halfWidth) {
    const double dx = b.x - a.x, dy = b.y - a.y;
    const double t = std::clamp(((p.x - a.x) * dx + (p.y - a.y) * dy) / (dx * dx + dy * dy), 0.0, 1.0);
    const double ex = a.x + t * dx - p.x, ey = a.y + t * dy - p.y;
    return ex * ex + ey * ey <= halfWidth * halfWidth;
}

template <size_t N>
bool InPolygon(Point p, const Point (&corners)[N]) {
    bool inside = false;
    for (size_t i = 0, j = N - 1; i < N; j = i++) {
        if ((corners[i].y > p.y) != (corners[j].y > p.y) &&
            p.x < (corners[j].x - corners[i].x) * (p.y - corners[i].y) / (corners[j].y - corners[i].y) + corners[i].x) {
            inside = !inside;
        }
    }
    return inside;
}

Colour Hue(double degrees, double saturation) {
    const double h = std::fmod(degrees + 360.0, 360.0) / 60.0;
    const double x = 1 - std::fabs(std::fmod(h, 2.0) - 1);
    double r = 0, g = 0, b = 0;
    switch (static_cast<int>(h)) {
        case 0: r = 1, g = x; break;
        case 1: r = x, g = 1; break;
        case 2: g = 1, b = x; break;
        case 3: g = x, b = 1; break;
        case 4: r = x, b = 1; break;
        default: r = 1, b = x; break;
    }
    const auto toward = [saturation](double channel) { return 1 - saturation * (1 - channel); };
    return {toward(r), toward(g), toward(b), 1};
}

// Points up: shaft from the bottom, head at the top.
const Point kUpArrow[] = {{170, 18}, {200, 58}, {182, 58}, {182, 120}, {158, 120}, {158, 58}, {140, 58}};
// Points right.
const Point kRightArrow[] = {{300, 150}, {262, 174}, {262, 160}, {150, 160}, {150, 140}, {262, 140}, {262, 126}};

Paint CardSample(Point p) {
    Paint paint;
    const double fall = p.y / kTestCardHeight;
    paint.Over({0.93 - 0.18 * fall, 0.95 - 0.15 * fall, 0.98 - 0.10 * fall, 1});

    // Colour wheel: hue by angle (red to the right, anticlockwise on screen),
    // saturation by radius.
    const Point wheel{72, 84};
    if (InDisc(p, wheel, 58)) {
        const double degrees = std::atan2(wheel.y - p.y, p.x - wheel.x) * 180 / kPi;
        const double radius = std::hypot(p.x - wheel.x, p.y - wheel.y);
        paint.Over(Hue(degrees, radius / 58));
    }
    // Fan of one-pixel lines from the wheel's lower right, every 7.5 degrees.
    for (int i = 0; i <= 12; ++i) {
        const double angle = i * 7.5 * kPi / 180;
        const Point from{20, 226}, to{20 + 118 * std::cos(angle), 226 - 118 * std::sin(angle)};
        if (!InDisc(p, wheel, 60) && NearSegment(p, from, to, 0.5)) paint.Over({0.1, 0.1, 0.1, 1});
    }
    if (InPolygon(p, kUpArrow)) paint.Over({0.10, 0.62, 0.22, 1});
    if (InPolygon(p, kRightArrow)) paint.Over({0.85, 0.16, 0.12, 1});

    // Alpha ramp: the same blue from transparent at the left to opaque at the right.
    if (InRect(p, 150, 196, 312, 228)) {
        paint.Clear();
        paint.Over({0.12, 0.22, 0.75, (p.x - 150) / 162});
    }
    // A hole right through the card.
    if (InDisc(p, {282, 52}, 22)) paint.Clear();

    // Frame: top red, right green, bottom blue, left yellow; the top-left corner black.
    if (p.y < 4) paint.Over({0.90, 0.10, 0.10, 1});
    if (p.x >= kTestCardWidth - 4) paint.Over({0.10, 0.75, 0.20, 1});
    if (p.y >= kTestCardHeight - 4) paint.Over({0.15, 0.25, 0.90, 1});
    if (p.x < 4) paint.Over({0.95, 0.85, 0.10, 1});
    if (InRect(p, 0, 0, 16, 16)) paint.Over({0, 0, 0, 1});
    return paint;
}

uint8_t ToByte(double value) { return static_cast<uint8_t>(std::lround(std::clamp(value, 0.0, 1.0) * 255)); }

// Each pixel is the mean of its samples; colour is stored straight, and a
// pixel that ends fully transparent is black.
template <typename Sampler>
Image Render(int32_t width, int32_t height, int samplesPerSide, Sampler sample) {
    Image image(width, height);
    for (int32_t y = 0; y < height; ++y) {
        for (int32_t x = 0; x < width; ++x) {
            Paint sum;
            for (int sy = 0; sy < samplesPerSide; ++sy) {
                for (int sx = 0; sx < samplesPerSide; ++sx) {
                    const Paint s = sample(Point{x + (sx + 0.5) / samplesPerSide, y + (sy + 0.5) / samplesPerSide});
                    sum.r += s.r, sum.g += s.g, sum.b += s.b, sum.a += s.a;
                }
            }
            const double alpha = sum.a / (samplesPerSide * samplesPerSide);
            uint8_t* pixel = image.pixel(x, y);
            pixel[0] = alpha > 0 ? ToByte(sum.r / sum.a) : 0;
            pixel[1] = alpha > 0 ? ToByte(sum.g / sum.a) : 0;
            pixel[2] = alpha > 0 ? ToByte(sum.b / sum.a) : 0;
            pixel[3] = ToByte(alpha);
        }
    }
    return image;
}

}  // namespace

Image TestCard() { return Render(kTestCardWidth, kTestCardHeight, kSamplesPerSide, CardSample); }

Image TestMask(int32_t width, int32_t height) {
    const double cx = width / 2.0, cy = height / 2.0;
    const double rx = width * 0.46, ry = height * 0.44;
    const double edge = std::max(2.0, std::min(width, height) * 0.04);
    // A photo's mask has an edge many pixels wide already; one sample a pixel
    // keeps a 4000 x 3000 mask to a fraction of a second.
    const int samples = int64_t{width} * height > 1'000'000 ? 1 : kSamplesPerSide;
    return Render(width, height, samples, [&](Point p) {
        // Grey level: 0 (opaque) well inside the ellipse, 1 (transparent) outside.
        const double distance = std::hypot((p.x - cx) / rx, (p.y - cy) / ry);
        double level = std::clamp((distance - 1) * std::min(rx, ry) / edge + 1, 0.0, 1.0);
        if (InDisc(p, {cx - rx * 0.7, cy - ry * 0.7}, std::min(rx, ry) * 0.4)) level = 1;
        Paint paint;
        paint.Over({level, level, level, 1});
        return paint;
    });
}

}  // namespace pixturn
