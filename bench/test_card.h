// The picture every benchmark works on: the same 4000 x 3000 pixels for the
// plug-in and for each peer library, made from the coordinates alone so that every
// run and every machine times the same work.
#pragma once

#include <cstdint>
#include <vector>

#include "simhost/simulated_host.h"

namespace test_card {

constexpr int32_t kWidth = 4000;
constexpr int32_t kHeight = 3000;
constexpr int64_t kPixels = int64_t{kWidth} * kHeight;
constexpr int64_t kBytes = kPixels * 4;

simhost::Rgba PixelAt(int32_t x, int32_t y);

// Writes the card into a host picture of kWidth x kHeight.
void Paint(simhost::SimulatedHost& host, REALpicture picture);

// The card as bytes R, G, B, A, rows top to bottom without padding.
std::vector<uint8_t> RgbaBytes();

}  // namespace test_card
