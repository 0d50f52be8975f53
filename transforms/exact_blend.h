// The shears' blend in integer lanes, for the lines where it provably gives the
// pixels of the double arithmetic that defines it.
//
// The definition. A channel P (0..255) landing with weight w in [0, 1] after a
// channel Q is written as P - trunc(fl(P w) - fl(Q w)), fl being rounding to the
// nearest double. With d = |P - Q| and E = d w exactly, the claim is
//     P - trunc(fl(P w) - fl(Q w)) = P - floor(E)   when P >= Q,
//                                    P + floor(E)   when P < Q,
// and floor(E) = floor(d w32 / 2^32) with w32 = floor(w 2^32), on every line
// whose weight PlanBlend marks exact.
//
// Proof. (1) The double. Each of the three roundings is of a value below 256,
// where doubles lie at most 2^-45 apart, so each errs by at most 2^-46 and
// x = fl(fl(P w) - fl(Q w)) lies within 3 * 2^-46 < 2^-44 of (P - Q) w = +-E;
// fl(a) - fl(b) = -(fl(b) - fl(a)) exactly, so the sign is P - Q's. If E is
// farther than 2^-44 from every integer n >= 1, x lies strictly between the same
// two integers as +-E (or within (-1, 1) when E < 1), and trunc(x) = +-floor(E).
// If w's significand has at most 45 bits (0.5, 0.25 ...), P w, Q w and (P - Q) w
// have at most 53 and are doubles: x = +-E exactly, whatever E's distance.
// (2) The integers. floor(d w32 / 2^32) <= floor(E), and it is smaller exactly
// when d (w 2^64 - w32 2^32), the part of d w 2^64 that w32 leaves out, carries
// past a multiple of 2^64, i.e. when (d w 2^64 mod 2^64) < d (w 2^64 - w32 2^32).
// (3) Deciding. For w >= 2^-11 the double w is a multiple of 2^-63, so w64 =
// w 2^64 is an integer and d w64 mod 2^64 is E's fraction exactly, in 64-bit
// wrapping arithmetic. PlanBlend walks d = 1 .. 255 and marks the line exact only
// if every d passes (1) and (2): the fraction is not within 2^20 (2^-44 of a
// unit) of an integer n >= 1 (or the doubles are exact) and not below
// d (w64 mod 2^32); or else, for a few such d, both formulas agree on every pair
// (P, Q) at that distance, tried one by one with the definition's own doubles.
// For w < 2^-11 every E is below 1/8: the double truncates to 0 and
// floor(d w32 / 2^32) is 0, so the line is exact. A weight of 1 or more (a tiny
// negative skew rounding up) is left to the doubles.
// (4) The lanes. BlendPixels takes d = |P - Q| per byte as the OR of the two
// saturating differences, and floor(d w32 / 2^32) with w32 = h 2^16 + l as
// floor((d h + floor(d l / 2^16)) / 2^16) = hi(d h) + carry(lo(d h) + hi(d l)),
// hi and lo being the halves of 16 x 16-bit products; the sum is below 2^17, so
// the carry is 0 or 1. The result is at most d, so P - f and P + f stay in 0..255
// and byte arithmetic is exact. The AVX2 form is the same arithmetic, twice as
// wide.
//
// tests/unit/fast_loops_test.cpp runs all 65536 (P, Q) pairs through the row
// shear in every vector width the processor has, for thousands of weights,
// adversarial ones included, against the doubles.
#pragma once

#include <cstdint>

#include <immintrin.h>

struct BlendPlan {
    bool exact = false;  // every d of this line blends in integers as in doubles
    uint16_t high = 0;   // floor(w 2^32) = high 2^16 + low
    uint16_t low = 0;
};

BlendPlan PlanBlend(double weight);

// The 16-bit lanes of one blend: high and low halves of w32 for the four
// pixels of the first (lanes 0..7) and second (8..15) half of a vector.
struct BlendLanes {
    __m128i high[2], low[2];
};

inline BlendLanes LanesOf(const BlendPlan& first, const BlendPlan& second, const BlendPlan& third,
                          const BlendPlan& fourth) {
    auto pair = [](uint16_t a, uint16_t b) {
        return _mm_setr_epi16(int16_t(a), int16_t(a), int16_t(a), int16_t(a), int16_t(b), int16_t(b), int16_t(b),
                              int16_t(b));
    };
    return {{pair(first.high, second.high), pair(third.high, fourth.high)},
            {pair(first.low, second.low), pair(third.low, fourth.low)}};
}

inline BlendLanes LanesOf(const BlendPlan& plan) { return LanesOf(plan, plan, plan, plan); }

// The widest vectors the blend runs in: SSE2 always (the build assumes no more),
// AVX2 where the processor has it, asked once per process.
enum class BlendWidth { kSse2, kAvx2 };
BlendWidth WidestBlend();
bool Supports(BlendWidth width);

// floor(d w32 / 2^32) for eight 16-bit distances d <= 255.
inline __m128i FloorOfWeighted(__m128i distance, __m128i high, __m128i low) {
    const __m128i bias = _mm_set1_epi16(int16_t(0x8000));
    const __m128i lowHalf = _mm_mullo_epi16(distance, high);
    const __m128i sum = _mm_add_epi16(lowHalf, _mm_mulhi_epu16(distance, low));
    // -1 where the sum wrapped, i.e. is below lowHalf as unsigned numbers.
    const __m128i carry = _mm_cmpgt_epi16(_mm_xor_si128(lowHalf, bias), _mm_xor_si128(sum, bias));
    return _mm_sub_epi16(_mm_mulhi_epu16(distance, high), carry);
}

// Sixteen channels p blended after the sixteen channels q, byte by byte.
inline __m128i BlendPixels(__m128i p, __m128i q, const BlendLanes& lanes) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i above = _mm_subs_epu8(p, q);
    const __m128i distance = _mm_or_si128(above, _mm_subs_epu8(q, p));
    const __m128i floors =
        _mm_packus_epi16(FloorOfWeighted(_mm_unpacklo_epi8(distance, zero), lanes.high[0], lanes.low[0]),
                         FloorOfWeighted(_mm_unpackhi_epi8(distance, zero), lanes.high[1], lanes.low[1]));
    // p - f where p >= q; where p < q, f negated first: p + f.
    const __m128i notAbove = _mm_cmpeq_epi8(above, zero);
    return _mm_sub_epi8(p, _mm_sub_epi8(_mm_xor_si128(floors, notAbove), notAbove));
}

// The same blend for thirty-two channels of one weight, in AVX2 registers.
__attribute__((target("avx2"))) inline __m256i FloorOfWeighted(__m256i distance, __m256i high, __m256i low) {
    const __m256i bias = _mm256_set1_epi16(int16_t(0x8000));
    const __m256i lowHalf = _mm256_mullo_epi16(distance, high);
    const __m256i sum = _mm256_add_epi16(lowHalf, _mm256_mulhi_epu16(distance, low));
    const __m256i carry = _mm256_cmpgt_epi16(_mm256_xor_si256(lowHalf, bias), _mm256_xor_si256(sum, bias));
    return _mm256_sub_epi16(_mm256_mulhi_epu16(distance, high), carry);
}

__attribute__((target("avx2"))) inline __m256i BlendPixels(__m256i p, __m256i q, const BlendPlan& plan) {
    const __m256i high = _mm256_set1_epi16(int16_t(plan.high)), low = _mm256_set1_epi16(int16_t(plan.low));
    const __m256i zero = _mm256_setzero_si256();
    const __m256i above = _mm256_subs_epu8(p, q);
    const __m256i distance = _mm256_or_si256(above, _mm256_subs_epu8(q, p));
    // Unpacking and packing work within each 128-bit half, so pack restores
    // the order unpack took apart.
    const __m256i floors = _mm256_packus_epi16(FloorOfWeighted(_mm256_unpacklo_epi8(distance, zero), high, low),
                                               FloorOfWeighted(_mm256_unpackhi_epi8(distance, zero), high, low));
    const __m256i notAbove = _mm256_cmpeq_epi8(above, zero);
    return _mm256_sub_epi8(p, _mm256_sub_epi8(_mm256_xor_si256(floors, notAbove), notAbove));
}
