// The fast loops' primitives in NEON, for 64-bit ARM, where NEON is part of the
// baseline, and 32-bit ARM, where it is not: there every function here carries
// NEON as its own target and the path is taken only where the processor says it
// has NEON (processor_paths.cpp). exact_blend.h has the blend's proof; the
// products are the portable path's scalar doubles.
#pragma once

#include <cstdint>

#include <arm_neon.h>

#include "picture/pixel_formats.h"
#include "transforms/exact_blend.h"
#include "transforms/paths/portable.h"

#if defined(__aarch64__)
#define PIXTURN_NEON_FUNCTION
#else
#define PIXTURN_NEON_FUNCTION __attribute__((target("fpu=neon")))
#endif

struct NeonPath : PortablePath {
    using Vector = uint32x4_t;

    PIXTURN_NEON_FUNCTION static Vector Load(const uint8_t* p) { return vreinterpretq_u32_u8(vld1q_u8(p)); }
    PIXTURN_NEON_FUNCTION static void Store(uint8_t* p, Vector v) { vst1q_u8(p, vreinterpretq_u8_u32(v)); }
    PIXTURN_NEON_FUNCTION static Vector FromWords(uint32_t a, uint32_t b, uint32_t c, uint32_t d) {
        const uint32_t words[4] = {a, b, c, d};
        return vld1q_u32(words);
    }
    PIXTURN_NEON_FUNCTION static Vector Splat(uint32_t word) { return vdupq_n_u32(word); }
    PIXTURN_NEON_FUNCTION static Vector Keep(Vector v, uint32_t bits) { return vandq_u32(v, vdupq_n_u32(bits)); }
    // Words 1 0 3 2, then the two halves exchanged.
    PIXTURN_NEON_FUNCTION static Vector Reversed(Vector v) {
        const uint32x4_t pairsReversed = vrev64q_u32(v);
        return vextq_u32(pairsReversed, pairsReversed, 2);
    }
    PIXTURN_NEON_FUNCTION static void Transpose(const Vector rows[4], Vector columns[4]) {
        // Even words of rows 0 and 1 interleaved, then odd ones; likewise 2 and 3.
        const uint32x4x2_t upper = vtrnq_u32(rows[0], rows[1]), lower = vtrnq_u32(rows[2], rows[3]);
        columns[0] = vcombine_u32(vget_low_u32(upper.val[0]), vget_low_u32(lower.val[0]));
        columns[1] = vcombine_u32(vget_low_u32(upper.val[1]), vget_low_u32(lower.val[1]));
        columns[2] = vcombine_u32(vget_high_u32(upper.val[0]), vget_high_u32(lower.val[0]));
        columns[3] = vcombine_u32(vget_high_u32(upper.val[1]), vget_high_u32(lower.val[1]));
    }

    PIXTURN_NEON_FUNCTION static Vector WidenHostAlpha(Vector stored) {
        const uint32x4_t alpha = vandq_u32(stored, vdupq_n_u32(0x7F000000));
        const uint32x4_t widened = vorrq_u32(vshlq_n_u32(alpha, 1), vandq_u32(alpha, vdupq_n_u32(0x01000000)));
        return vorrq_u32(vandq_u32(stored, vdupq_n_u32(0x00FFFFFF)), widened);
    }
    PIXTURN_NEON_FUNCTION static Vector NarrowHostAlpha(Vector channels) {
        const uint32x4_t halved = vandq_u32(vshrq_n_u32(channels, 1), vdupq_n_u32(0x7F000000));
        return vorrq_u32(vandq_u32(channels, vdupq_n_u32(0x00FFFFFF)), halved);
    }

    // The high and low halves of w32 for each of the four pixels, four 16-bit
    // lanes each.
    struct Lanes {
        uint16x4_t high[4], low[4];
    };
    PIXTURN_NEON_FUNCTION static Lanes LanesOf(const BlendPlan& first, const BlendPlan& second,
                                               const BlendPlan& third, const BlendPlan& fourth) {
        return {{vdup_n_u16(first.high), vdup_n_u16(second.high), vdup_n_u16(third.high), vdup_n_u16(fourth.high)},
                {vdup_n_u16(first.low), vdup_n_u16(second.low), vdup_n_u16(third.low), vdup_n_u16(fourth.low)}};
    }

    // floor(d w32 / 2^32) for one pixel's four distances d <= 255, as
    // floor((d high + floor(d low / 2^16)) / 2^16) in 32-bit lanes: the sum is
    // below 2^25, nothing wraps.
    PIXTURN_NEON_FUNCTION static uint16x4_t FloorOfWeighted(uint16x4_t distance, uint16x4_t high, uint16x4_t low) {
        return vshrn_n_u32(vaddq_u32(vmull_u16(distance, high), vshrq_n_u32(vmull_u16(distance, low), 16)), 16);
    }

    // Sixteen channels p blended after the sixteen channels q, byte by byte.
    PIXTURN_NEON_FUNCTION static Vector Blend(Vector pWords, Vector qWords, const Lanes& lanes) {
        const uint8x16_t p = vreinterpretq_u8_u32(pWords), q = vreinterpretq_u8_u32(qWords);
        const uint8x16_t above = vqsubq_u8(p, q);
        const uint8x16_t distance = vorrq_u8(above, vqsubq_u8(q, p));
        const uint16x8_t first = vmovl_u8(vget_low_u8(distance)), second = vmovl_u8(vget_high_u8(distance));
        const uint16x8_t floorsFirst =
            vcombine_u16(FloorOfWeighted(vget_low_u16(first), lanes.high[0], lanes.low[0]),
                         FloorOfWeighted(vget_high_u16(first), lanes.high[1], lanes.low[1]));
        const uint16x8_t floorsSecond =
            vcombine_u16(FloorOfWeighted(vget_low_u16(second), lanes.high[2], lanes.low[2]),
                         FloorOfWeighted(vget_high_u16(second), lanes.high[3], lanes.low[3]));
        const uint8x16_t floors = vcombine_u8(vmovn_u16(floorsFirst), vmovn_u16(floorsSecond));
        // p - f where p > q, p + f elsewhere (where p = q, f is 0).
        const uint8x16_t notAbove = vceqq_u8(above, vdupq_n_u8(0));
        return vreinterpretq_u32_u8(vbslq_u8(notAbove, vaddq_u8(p, floors), vsubq_u8(p, floors)));
    }
};
