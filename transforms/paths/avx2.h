// AVX2 for the rows of the shears, where the processor has it: the SSE2 path's
// primitives, an exact row's integer blend eight pixels at a time, the same
// arithmetic as SSE2's twice as wide (exact_blend.h has the proof), and the
// mirrors' moves eight pixels at a time. Every function that touches a 256-bit
// register carries AVX2 as its own target; the path is taken only where the
// processor says it has AVX2.
#pragma once

#include <cstdint>

#include <immintrin.h>

#include "transforms/paths/register_moves.h"
#include "transforms/paths/sse2.h"
#include "transforms/paths/wide_rows.h"

struct Avx2Path : Sse2Path {
    using Sse2Path::FloorOfWeighted;
    using Sse2Path::Blend;

    // Eight pixels in one register, for the mirrors' moves (register_moves.h) and
    // the exact rows (wide_rows.h).
    struct Wide {
        static constexpr int32_t kPixels = 8;
        __attribute__((target("avx2"))) static __m256i Load(const uint8_t* p) {
            return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
        }
        __attribute__((target("avx2"))) static void Store(uint8_t* p, __m256i v) {
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v);
        }
        __attribute__((target("avx2"))) static __m256i Keep(__m256i v, uint32_t bits) {
            return _mm256_and_si256(v, _mm256_set1_epi32(int32_t(bits)));
        }
        __attribute__((target("avx2"))) static __m256i Reversed(__m256i v) {
            return _mm256_permutevar8x32_epi32(v, _mm256_setr_epi32(7, 6, 5, 4, 3, 2, 1, 0));
        }
        __attribute__((target("avx2"))) static void Move(const uint8_t* from, uint8_t* to, uint32_t bitsKept) {
            Store(to, Keep(Load(from), bitsKept));
        }
        __attribute__((target("avx2"))) static void MoveReversed(const uint8_t* from, uint8_t* to,
                                                                  uint32_t bitsKept) {
            Store(to, Reversed(Keep(Load(from), bitsKept)));
        }
        __attribute__((target("avx2"))) static void ExchangeReversed(uint8_t* a, uint8_t* b) {
            const __m256i fromA = Load(a);
            Store(a, Reversed(Load(b)));
            Store(b, Reversed(fromA));
        }
        template <bool kHostAlpha>
        __attribute__((target("avx2"))) static void BlendPixels(const uint8_t* source, uint8_t* destination,
                                                                 uint16_t high, uint16_t low) {
            __m256i p = Load(source);
            __m256i q = Load(source - 4);
            if constexpr (kHostAlpha) {
                p = WidenHostAlpha8(p);
                q = WidenHostAlpha8(q);
            }
            const __m256i blended = Blend(p, q, _mm256_set1_epi16(int16_t(high)), _mm256_set1_epi16(int16_t(low)));
            Store(destination, kHostAlpha ? NarrowHostAlpha8(blended) : blended);
        }
    };
    __attribute__((target("avx2"), flatten)) static int32_t MoveWideRow(uint8_t* from, uint8_t* to, int32_t count,
                                                                        bool reversed, uint32_t bitsKept) {
        return register_moves::MoveRow<Wide>(from, to, count, 0, reversed, bitsKept);
    }
    __attribute__((target("avx2"), flatten)) static int32_t ExchangeWideReversed(uint8_t* a, uint8_t* b,
                                                                                 int32_t width, int32_t count,
                                                                                 ptrdiff_t askAhead) {
        return register_moves::ExchangeReversed<Wide>(a, b, width, count, 0, askAhead);
    }

    __attribute__((target("avx2"))) static __m256i FloorOfWeighted(__m256i distance, __m256i high, __m256i low) {
        const __m256i bias = _mm256_set1_epi16(int16_t(0x8000));
        const __m256i lowHalf = _mm256_mullo_epi16(distance, high);
        const __m256i sum = _mm256_add_epi16(lowHalf, _mm256_mulhi_epu16(distance, low));
        const __m256i carry = _mm256_cmpgt_epi16(_mm256_xor_si256(lowHalf, bias), _mm256_xor_si256(sum, bias));
        return _mm256_sub_epi16(_mm256_mulhi_epu16(distance, high), carry);
    }

    // Thirty-two channels of one weight.
    __attribute__((target("avx2"))) static __m256i Blend(__m256i p, __m256i q, __m256i high, __m256i low) {
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

    __attribute__((target("avx2"))) static __m256i WidenHostAlpha8(__m256i stored) {
        const __m256i alpha = _mm256_and_si256(stored, _mm256_set1_epi32(0x7F000000));
        const __m256i widened =
            _mm256_or_si256(_mm256_add_epi8(alpha, alpha), _mm256_and_si256(alpha, _mm256_set1_epi32(0x01000000)));
        return _mm256_or_si256(_mm256_and_si256(stored, _mm256_set1_epi32(0x00FFFFFF)), widened);
    }
    __attribute__((target("avx2"))) static __m256i NarrowHostAlpha8(__m256i channels) {
        const __m256i halved = _mm256_and_si256(_mm256_srli_epi32(channels, 1), _mm256_set1_epi32(0x7F000000));
        return _mm256_or_si256(_mm256_and_si256(channels, _mm256_set1_epi32(0x00FFFFFF)), halved);
    }

    // An exact row's destination pixels eight at a time (wide_rows.h).
    template <typename Row>
    __attribute__((target("avx2"), flatten)) static int32_t BlendWideRow(const Row& row, int32_t toWidth) {
        return wide_rows::BlendRow<Wide>(row, toWidth);
    }
};
