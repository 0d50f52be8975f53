// Picture helpers shared by the tests and the fuzz target.
#pragma once

#include <cstdint>
#include <vector>

#include "simhost/simulated_host.h"

namespace test_support {

// A picture's pixels as the host sees them, row by row.
struct Image {
    int32_t width = 0;
    int32_t height = 0;
    std::vector<simhost::Rgba> pixels;
    simhost::Rgba& at(int32_t x, int32_t y) { return pixels[static_cast<size_t>(y) * width + x]; }
    const simhost::Rgba& at(int32_t x, int32_t y) const { return pixels[static_cast<size_t>(y) * width + x]; }
    friend bool operator==(const Image&, const Image&) = default;
};

// How the mirrors and the quarter turns move pixels, as plain coordinate maps;
// the quarter turns exchange the picture's sides.
enum class Rearrangement { BothWays, LeftRight, TopBottom, QuarterAnticlockwise, QuarterClockwise };
Image Rearranged(const Image& from, Rearrangement rearrangement);

// Deterministic pseudo-random pixels (every channel, alpha included).
void FillRandom(simhost::SimulatedHost& host, REALpicture picture, uint32_t seed);
Image ReadImage(const simhost::SimulatedHost& host, REALpicture picture);
void WriteImage(simhost::SimulatedHost& host, REALpicture picture, const Image& image);

}  // namespace test_support
