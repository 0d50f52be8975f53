// The loops that only move 4-byte pixels, for the mirrors, written once for a
// register of any width. Registers gives kPixels (4, 8 or 16) and three steps
// that take and give only addresses: Move and MoveReversed (kPixels pixels as
// words masked with the bits a copy keeps, in order or last first) and
// ExchangeReversed (two groups trade places, each reversed). Fours makes them of
// a path's own four-pixel primitives. AVX2 and AVX-512 write theirs with their
// instruction set as the functions' own target, and call these loops from
// functions of that target that inline everything they call (flatten); since no
// register crosses a call, a compiler never passes one where it lacks the
// instruction set.
#pragma once

#include <cstddef>
#include <cstdint>

namespace register_moves {

template <typename Path>
struct Fours {
    static constexpr int32_t kPixels = 4;
    static void Move(const uint8_t* from, uint8_t* to, uint32_t bitsKept) {
        Path::Store(to, Path::Keep(Path::Load(from), bitsKept));
    }
    static void MoveReversed(const uint8_t* from, uint8_t* to, uint32_t bitsKept) {
        Path::Store(to, Path::Reversed(Path::Keep(Path::Load(from), bitsKept)));
    }
    static void ExchangeReversed(uint8_t* a, uint8_t* b) {
        const typename Path::Vector fromA = Path::Load(a);
        Path::Store(a, Path::Reversed(Path::Load(b)));
        Path::Store(b, Path::Reversed(fromA));
    }
};

inline uint8_t* PixelAt(uint8_t* row, int32_t x) { return row + 4 * static_cast<ptrdiff_t>(x); }

// Pixels x, x + 1, ... of a `count`-pixel row into another row while whole
// registers fit, in the same order or reversed; returns the first pixel not moved.
template <typename Registers>
int32_t MoveRow(uint8_t* from, uint8_t* to, int32_t count, int32_t x, bool reversed, uint32_t bitsKept) {
    constexpr int32_t n = Registers::kPixels;
    for (; x + n <= count; x += n)
        if (reversed)
            Registers::MoveReversed(PixelAt(from, x), PixelAt(to, count - n - x), bitsKept);
        else
            Registers::Move(PixelAt(from, x), PixelAt(to, x), bitsKept);
    return x;
}

// Pixel k of row a trades places with pixel width - 1 - k of row b, for k from
// the given one while whole registers fit below count; returns the first k not
// exchanged. Within one row (a == b) count is at most width / 2, so the pixels
// at k and those ending at width - 1 - k never overlap. A nonzero askAhead asks
// for both walks' lines that many bytes ahead.
template <typename Registers>
int32_t ExchangeReversed(uint8_t* a, uint8_t* b, int32_t width, int32_t count, int32_t k, ptrdiff_t askAhead) {
    constexpr int32_t n = Registers::kPixels;
    for (; k + n <= count; k += n) {
        uint8_t* inA = PixelAt(a, k);
        uint8_t* inB = PixelAt(b, width - n - k);
        if (askAhead != 0) {
            __builtin_prefetch(inA + askAhead, 1);
            __builtin_prefetch(inB - askAhead, 1);
        }
        Registers::ExchangeReversed(inA, inB);
    }
    return k;
}

}  // namespace register_moves
