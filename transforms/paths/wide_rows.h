// The loop of an exact row's integer blend (skew_loops::IntegerRow) in a register
// wider than four pixels, written once for AVX2 and AVX-512 in the way
// register_moves.h writes the mirrors' loops: Wide gives kPixels and
// BlendPixels<hostAlpha>(source, destination, high, low), which blends the
// kPixels source pixels at `source`, each after the pixel before it, into
// `destination`, taking only addresses and the halves of the line's weight.
#pragma once

#include <cstdint>

namespace wide_rows {

// The destination pixels Wide::kPixels at a time where all of them have their
// source pixel and the one before it, four at a time elsewhere; returns the first
// pixel past the last whole register.
template <typename Wide, typename Row>
int32_t BlendRow(const Row& row, int32_t toWidth) {
    constexpr int32_t n = Wide::kPixels;
    const uint16_t high = row.Plan().high;
    const uint16_t low = row.Plan().low;
    int32_t d = 0;
    for (; d + n <= toWidth; d += n) {
        const int32_t j = row.SourceIndex(d);
        if (j < 1 || j + n > row.SourceWidth())
            for (int32_t four = 0; four < n; four += 4) row.Four(d + four);
        else
            Wide::template BlendPixels<Row::kHostAlpha>(row.SourcePixel(j), row.DestinationPixel(d), high, low);
    }
    return d;
}

}  // namespace wide_rows
