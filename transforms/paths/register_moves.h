// The loops that only move 4-byte pixels, for the mirrors, written once for any
// register of a path: Vectors gives Vector, kPixels (4, 8 or 16) and Load, Store,
// Keep and Reversed. The four-pixel paths use them with their own primitives;
// AVX2 and AVX-512 call them from functions that carry their instruction set as
// their own target and inline everything they call (flatten): a function without
// the instruction set could not inline the register's operations.
#pragma once

#include <cstddef>
#include <cstdint>

// AVX2 and AVX-512 inline these loops whole (flatten) into functions that carry
// their instruction set. GCC still warns, for the loops' own copies, that a
// 256- or 512-bit register passes differently without that instruction set;
// no call goes through those copies.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpsabi"

namespace register_moves {

inline uint8_t* PixelAt(uint8_t* row, int32_t x) {
    return row + 4 * static_cast<ptrdiff_t>(x);
}

// Pixels x, x + 1, ... of a `count`-pixel row into another row while whole
// registers fit, as words masked with bitsKept, in the same order or reversed;
// returns the first pixel not moved.
template <typename Vectors>
int32_t MoveRow(uint8_t* from, uint8_t* to, int32_t count, int32_t x, bool reversed, uint32_t bitsKept) {
    constexpr int32_t n = Vectors::kPixels;
    for (; x + n <= count; x += n) {
        typename Vectors::Vector pixels = Vectors::Keep(Vectors::Load(PixelAt(from, x)), bitsKept);
        if (reversed) pixels = Vectors::Reversed(pixels);
        Vectors::Store(PixelAt(to, reversed ? count - n - x : x), pixels);
    }
    return x;
}

// Pixel k of row a trades places with pixel width - 1 - k of row b, for k from
// the given one while whole registers fit below count; returns the first k not
// exchanged. Within one row (a == b) count is at most width / 2, so the pixels
// at k and those ending at width - 1 - k never overlap. A nonzero askAhead asks
// for both walks' lines that many bytes ahead.
template <typename Vectors>
int32_t ExchangeReversed(uint8_t* a, uint8_t* b, int32_t width, int32_t count, int32_t k, ptrdiff_t askAhead) {
    constexpr int32_t n = Vectors::kPixels;
    for (; k + n <= count; k += n) {
        uint8_t* inA = PixelAt(a, k);
        uint8_t* inB = PixelAt(b, width - n - k);
        if (askAhead != 0) {
            __builtin_prefetch(inA + askAhead, 1);
            __builtin_prefetch(inB - askAhead, 1);
        }
        const typename Vectors::Vector fromA = Vectors::Load(inA);
        Vectors::Store(inA, Vectors::Reversed(Vectors::Load(inB)));
        Vectors::Store(inB, Vectors::Reversed(fromA));
    }
    return k;
}

}  // namespace register_moves

#pragma GCC diagnostic pop
