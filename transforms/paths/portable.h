// The fast loops' primitives in plain C++, for a processor with neither SSE2 nor
// NEON, and the reference the others are tested against on every target: four
// 4-byte pixels as four little-endian words (every target this builds for is
// little-endian, as the codecs' kBitsKept assume), the integer blend byte by
// byte, the shears' products in scalar doubles, each rounded on its own as the
// plain shears round them. exact_blend.h has the blend's proof.
#pragma once

#include <cstdint>
#include <cstring>

#include "picture/pixel_formats.h"
#include "transforms/exact_blend.h"

struct PortablePath {
    struct Vector {
        uint32_t word[4];
    };
    static constexpr int32_t kPixels = 4;

    static Vector Load(const uint8_t* p) {
        Vector v;
        std::memcpy(v.word, p, 16);
        return v;
    }
    static void Store(uint8_t* p, const Vector& v) { std::memcpy(p, v.word, 16); }
    static Vector FromWords(uint32_t a, uint32_t b, uint32_t c, uint32_t d) { return {{a, b, c, d}}; }
    static Vector Splat(uint32_t word) { return {{word, word, word, word}}; }
    static Vector Keep(const Vector& v, uint32_t bits) {
        return {{v.word[0] & bits, v.word[1] & bits, v.word[2] & bits, v.word[3] & bits}};
    }
    static Vector Reversed(const Vector& v) { return {{v.word[3], v.word[2], v.word[1], v.word[0]}}; }
    // Four rows of four pixels as their four columns.
    static void Transpose(const Vector rows[4], Vector columns[4]) {
        for (int i = 0; i < 4; ++i)
            columns[i] = {{rows[0].word[i], rows[1].word[i], rows[2].word[i], rows[3].word[i]}};
    }

    // A host bitmap's alpha byte holds v in its low 7 bits and reads as
    // 2 v + (v & 1); it is written back halved, its top bit clear.
    static Vector WidenHostAlpha(const Vector& v) {
        Vector widened;
        for (int i = 0; i < 4; ++i) {
            const uint32_t alpha = v.word[i] & 0x7F000000;
            widened.word[i] = (v.word[i] & 0x00FFFFFF) | (alpha << 1) | (alpha & 0x01000000);
        }
        return widened;
    }
    static Vector NarrowHostAlpha(const Vector& v) {
        Vector narrowed;
        for (int i = 0; i < 4; ++i) narrowed.word[i] = (v.word[i] & 0x00FFFFFF) | ((v.word[i] >> 1) & 0x7F000000);
        return narrowed;
    }

    // w32 = floor(w 2^32) of each of the four pixels' lines.
    struct Lanes {
        uint32_t w32[4];
    };
    static Lanes LanesOf(const BlendPlan& first, const BlendPlan& second, const BlendPlan& third,
                         const BlendPlan& fourth) {
        auto w32 = [](const BlendPlan& plan) { return uint32_t(plan.high) << 16 | plan.low; };
        return {{w32(first), w32(second), w32(third), w32(fourth)}};
    }

    // Sixteen channels p blended after the sixteen channels q: p - f where
    // p >= q, p + f where p < q, f = floor(|p - q| w32 / 2^32) in 64 bits.
    static Vector Blend(const Vector& p, const Vector& q, const Lanes& lanes) {
        Vector blended;
        for (int i = 0; i < 4; ++i) {
            blended.word[i] = 0;
            for (int shift = 0; shift < 32; shift += 8) {
                const uint32_t pc = (p.word[i] >> shift) & 0xFF, qc = (q.word[i] >> shift) & 0xFF;
                const uint32_t distance = pc >= qc ? pc - qc : qc - pc;
                const uint32_t f = static_cast<uint32_t>((uint64_t{distance} * lanes.w32[i]) >> 32);
                blended.word[i] |= (pc >= qc ? pc - f : pc + f) << shift;
            }
        }
        return blended;
    }

    // A pixel's four channels times its line's weight, and p - trunc(own - left)
    // per channel: the plain shears' operations, one scalar double at a time.
    using Weight = double;
    static Weight WeightOf(double weight) { return weight; }
    struct Products {
        double channel[4];
    };
    static Products Weighted(const Pixel& p, Weight weight) {
        return {{p.r * weight, p.g * weight, p.b * weight, p.a * weight}};
    }
    static Pixel Blended(const Pixel& p, const Products& own, const Products& left) {
        return {p.r - static_cast<int32_t>(own.channel[0] - left.channel[0]),
                p.g - static_cast<int32_t>(own.channel[1] - left.channel[1]),
                p.b - static_cast<int32_t>(own.channel[2] - left.channel[2]),
                p.a - static_cast<int32_t>(own.channel[3] - left.channel[3])};
    }
};
