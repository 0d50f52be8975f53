// The fast loops' primitives in SSE2, which every x86 build assumes: four
// 4-byte pixels in one register. exact_blend.h has the blend's proof; the
// products are SSE2's packed doubles, whose multiplication, subtraction and
// truncating conversion round exactly as the plain shears' scalar operations.
#pragma once

#include <cstdint>

#include <emmintrin.h>

#include "picture/pixel_formats.h"
#include "transforms/exact_blend.h"

struct Sse2Path {
    using Vector = __m128i;
    static constexpr int32_t kPixels = 4;

    static Vector Load(const uint8_t* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
    static void Store(uint8_t* p, Vector v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }
    static Vector FromWords(uint32_t a, uint32_t b, uint32_t c, uint32_t d) {
        return _mm_setr_epi32(int32_t(a), int32_t(b), int32_t(c), int32_t(d));
    }
    static Vector Splat(uint32_t word) { return _mm_set1_epi32(int32_t(word)); }
    static Vector Keep(Vector v, uint32_t bits) { return _mm_and_si128(v, _mm_set1_epi32(int32_t(bits))); }
    static Vector Reversed(Vector v) { return _mm_shuffle_epi32(v, _MM_SHUFFLE(0, 1, 2, 3)); }
    static void Transpose(const Vector rows[4], Vector columns[4]) {
        const __m128i low01 = _mm_unpacklo_epi32(rows[0], rows[1]), low23 = _mm_unpacklo_epi32(rows[2], rows[3]);
        const __m128i high01 = _mm_unpackhi_epi32(rows[0], rows[1]), high23 = _mm_unpackhi_epi32(rows[2], rows[3]);
        columns[0] = _mm_unpacklo_epi64(low01, low23);
        columns[1] = _mm_unpackhi_epi64(low01, low23);
        columns[2] = _mm_unpacklo_epi64(high01, high23);
        columns[3] = _mm_unpackhi_epi64(high01, high23);
    }

    static Vector WidenHostAlpha(Vector stored) {
        const __m128i alpha = _mm_and_si128(stored, _mm_set1_epi32(0x7F000000));
        const __m128i widened = _mm_or_si128(_mm_add_epi8(alpha, alpha), _mm_and_si128(alpha, _mm_set1_epi32(0x01000000)));
        return _mm_or_si128(_mm_and_si128(stored, _mm_set1_epi32(0x00FFFFFF)), widened);
    }
    static Vector NarrowHostAlpha(Vector channels) {
        const __m128i halved = _mm_and_si128(_mm_srli_epi32(channels, 1), _mm_set1_epi32(0x7F000000));
        return _mm_or_si128(_mm_and_si128(channels, _mm_set1_epi32(0x00FFFFFF)), halved);
    }

    // The 16-bit lanes of one blend: high and low halves of w32 for the four
    // pixels of the first (lanes 0..7) and second (8..15) half of a vector.
    struct Lanes {
        __m128i high[2], low[2];
    };
    static Lanes LanesOf(const BlendPlan& first, const BlendPlan& second, const BlendPlan& third,
                         const BlendPlan& fourth) {
        auto pair = [](uint16_t a, uint16_t b) {
            return _mm_setr_epi16(int16_t(a), int16_t(a), int16_t(a), int16_t(a), int16_t(b), int16_t(b),
                                  int16_t(b), int16_t(b));
        };
        return {{pair(first.high, second.high), pair(third.high, fourth.high)},
                {pair(first.low, second.low), pair(third.low, fourth.low)}};
    }

    // floor(d w32 / 2^32) for eight 16-bit distances d <= 255.
    static __m128i FloorOfWeighted(__m128i distance, __m128i high, __m128i low) {
        const __m128i bias = _mm_set1_epi16(int16_t(0x8000));
        const __m128i lowHalf = _mm_mullo_epi16(distance, high);
        const __m128i sum = _mm_add_epi16(lowHalf, _mm_mulhi_epu16(distance, low));
        // -1 where the sum wrapped, i.e. is below lowHalf as unsigned numbers.
        const __m128i carry = _mm_cmpgt_epi16(_mm_xor_si128(lowHalf, bias), _mm_xor_si128(sum, bias));
        return _mm_sub_epi16(_mm_mulhi_epu16(distance, high), carry);
    }

    // Sixteen channels p blended after the sixteen channels q, byte by byte.
    static Vector Blend(Vector p, Vector q, const Lanes& lanes) {
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

    // A pixel's four channels times the line's weight, as two pairs of doubles.
    using Weight = __m128d;
    static Weight WeightOf(double weight) { return _mm_set1_pd(weight); }
    struct Products {
        __m128d rg, ba;
    };
    static __m128i Channels(const Pixel& p) { return _mm_setr_epi32(p.r, p.g, p.b, p.a); }
    static Products Weighted(const Pixel& p, Weight weight) {
        const __m128i channels = Channels(p);
        return {_mm_mul_pd(_mm_cvtepi32_pd(channels), weight),
                _mm_mul_pd(_mm_cvtepi32_pd(_mm_unpackhi_epi64(channels, channels)), weight)};
    }
    // p - trunc(own - left) per channel, own being p's products.
    static Pixel Blended(const Pixel& p, const Products& own, const Products& left) {
        const __m128i truncated = _mm_unpacklo_epi64(_mm_cvttpd_epi32(_mm_sub_pd(own.rg, left.rg)),
                                                     _mm_cvttpd_epi32(_mm_sub_pd(own.ba, left.ba)));
        alignas(16) int32_t channels[4];
        _mm_store_si128(reinterpret_cast<__m128i*>(channels), _mm_sub_epi32(Channels(p), truncated));
        return {channels[0], channels[1], channels[2], channels[3]};
    }
};
