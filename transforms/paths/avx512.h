// AVX-512 for the rows of the shears, where the processor has it (with its
// byte and word instructions, AVX512BW): the AVX2 path's primitives, an exact
// row's integer blend sixteen pixels at a time, and the mirrors' moves sixteen
// pixels at a time. The blend is the SSE2 blend's arithmetic (exact_blend.h has
// the proof) four times as wide; only the carry and the sign come as AVX-512's
// mask registers instead of vectors of ones. Every function that touches a
// 512-bit register carries AVX-512 as its own target; the path is taken only
// where the processor says it has both parts.
#pragma once

#include <cstdint>

#include <immintrin.h>

#include "transforms/paths/avx2.h"

#define PIXTURN_AVX512 __attribute__((target("avx512f,avx512bw")))
#define PIXTURN_AVX512_FLAT __attribute__((target("avx512f,avx512bw"), flatten))

struct Avx512Path : Avx2Path {
    using Avx2Path::Blend;
    using Avx2Path::FloorOfWeighted;

    // Sixteen pixels in one register, for the mirrors' moves (register_moves.h)
    // and the exact rows (wide_rows.h).
    struct Wide {
        static constexpr int32_t kPixels = 16;
        PIXTURN_AVX512 static __m512i Load(const uint8_t* p) { return _mm512_loadu_si512(p); }
        PIXTURN_AVX512 static void Store(uint8_t* p, __m512i v) { _mm512_storeu_si512(p, v); }
        PIXTURN_AVX512 static __m512i Keep(__m512i v, uint32_t bits) {
            return _mm512_and_si512(v, _mm512_set1_epi32(int32_t(bits)));
        }
        // The masked form with every lane kept, for the reason NarrowHostAlpha16 gives.
        PIXTURN_AVX512 static __m512i Reversed(__m512i v) {
            return _mm512_maskz_permutexvar_epi32(
                __mmask16(0xFFFF), _mm512_setr_epi32(15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0), v);
        }
        PIXTURN_AVX512 static void Move(const uint8_t* from, uint8_t* to, uint32_t bitsKept) {
            Store(to, Keep(Load(from), bitsKept));
        }
        PIXTURN_AVX512 static void MoveReversed(const uint8_t* from, uint8_t* to, uint32_t bitsKept) {
            Store(to, Reversed(Keep(Load(from), bitsKept)));
        }
        PIXTURN_AVX512 static void ExchangeReversed(uint8_t* a, uint8_t* b) {
            const __m512i fromA = Load(a);
            Store(a, Reversed(Load(b)));
            Store(b, Reversed(fromA));
        }
        template <bool kHostAlpha>
        PIXTURN_AVX512 static void BlendPixels(const uint8_t* source, uint8_t* destination, uint16_t high,
                                               uint16_t low) {
            __m512i p = Load(source);
            __m512i q = Load(source - 4);
            if constexpr (kHostAlpha) {
                p = WidenHostAlpha16(p);
                q = WidenHostAlpha16(q);
            }
            const __m512i blended = Blend(p, q, _mm512_set1_epi16(int16_t(high)), _mm512_set1_epi16(int16_t(low)));
            Store(destination, kHostAlpha ? NarrowHostAlpha16(blended) : blended);
        }
    };
    PIXTURN_AVX512_FLAT static int32_t MoveWideRow(uint8_t* from, uint8_t* to, int32_t count, bool reversed,
                                                   uint32_t bitsKept) {
        return register_moves::MoveRow<Wide>(from, to, count, 0, reversed, bitsKept);
    }
    PIXTURN_AVX512_FLAT static int32_t ExchangeWideReversed(uint8_t* a, uint8_t* b, int32_t width, int32_t count,
                                                            ptrdiff_t askAhead) {
        return register_moves::ExchangeReversed<Wide>(a, b, width, count, 0, askAhead);
    }

    PIXTURN_AVX512 static __m512i FloorOfWeighted(__m512i distance, __m512i high, __m512i low) {
        const __m512i lowHalf = _mm512_mullo_epi16(distance, high);
        const __m512i sum = _mm512_add_epi16(lowHalf, _mm512_mulhi_epu16(distance, low));
        const __mmask32 carry = _mm512_cmplt_epu16_mask(sum, lowHalf);
        const __m512i floor = _mm512_mulhi_epu16(distance, high);
        return _mm512_mask_add_epi16(floor, carry, floor, _mm512_set1_epi16(1));
    }

    // Sixty-four channels of one weight.
    PIXTURN_AVX512 static __m512i Blend(__m512i p, __m512i q, __m512i high, __m512i low) {
        const __m512i zero = _mm512_setzero_si512();
        const __m512i above = _mm512_subs_epu8(p, q);
        const __m512i distance = _mm512_or_si512(above, _mm512_subs_epu8(q, p));
        // Unpacking and packing work within each 128-bit quarter, so pack
        // restores the order unpack took apart.
        const __m512i floors = _mm512_packus_epi16(FloorOfWeighted(_mm512_unpacklo_epi8(distance, zero), high, low),
                                                   FloorOfWeighted(_mm512_unpackhi_epi8(distance, zero), high, low));
        const __mmask64 notAbove = _mm512_cmpeq_epi8_mask(above, zero);
        return _mm512_mask_add_epi8(_mm512_sub_epi8(p, floors), notAbove, p, floors);
    }

    PIXTURN_AVX512 static __m512i WidenHostAlpha16(__m512i stored) {
        const __m512i alpha = _mm512_and_si512(stored, _mm512_set1_epi32(0x7F000000));
        const __m512i widened =
            _mm512_or_si512(_mm512_add_epi8(alpha, alpha), _mm512_and_si512(alpha, _mm512_set1_epi32(0x01000000)));
        return _mm512_or_si512(_mm512_and_si512(stored, _mm512_set1_epi32(0x00FFFFFF)), widened);
    }
    PIXTURN_AVX512 static __m512i NarrowHostAlpha16(__m512i channels) {
        // The masked shift with every lane kept: GCC 12 takes the plain one's
        // undefined source operand for an uninitialised variable and warns.
        const __m512i halved =
            _mm512_and_si512(_mm512_maskz_srli_epi32(__mmask16(0xFFFF), channels, 1), _mm512_set1_epi32(0x7F000000));
        return _mm512_or_si512(_mm512_and_si512(channels, _mm512_set1_epi32(0x00FFFFFF)), halved);
    }

    // An exact row's destination pixels sixteen at a time (wide_rows.h).
    template <typename Row>
    PIXTURN_AVX512_FLAT static int32_t BlendWideRow(const Row& row, int32_t toWidth) {
        return wide_rows::BlendRow<Wide>(row, toWidth);
    }
};

#undef PIXTURN_AVX512
#undef PIXTURN_AVX512_FLAT
