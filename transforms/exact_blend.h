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
// (4) The lanes. Each path (transforms/paths/) takes d = |P - Q| per byte and
// computes floor(d w32 / 2^32), exact integers throughout:
// - portable: d w32 in a 64-bit integer, shifted right by 32;
// - SSE2 (and AVX2, the same operations twice as wide): d as the OR of the two
//   saturating byte differences, and with w32 = h 2^16 + l,
//   floor((d h + floor(d l / 2^16)) / 2^16) = hi(d h) + carry(lo(d h) + hi(d l)),
//   hi and lo being the halves of 16 x 16-bit products; the sum is below 2^17,
//   so the carry is 0 or 1;
// - NEON: d the same way, and floor((d h + floor(d l / 2^16)) / 2^16) directly,
//   with the 16 x 16-bit products widened to 32-bit lanes, where the sum stays
//   below 2^25 and nothing wraps.
// The three are one value: d w32 / 2^32 = (d h + d l / 2^16) / 2^16, and
// floor(a / 2^16) = floor(floor(a) / 2^16) for every real a >= 0, where
// floor(d h + d l / 2^16) = d h + floor(d l / 2^16). The result is at most d, so P - f and P + f stay in 0..255 and
// byte arithmetic is exact; where P = Q, d and f are 0 and either sign gives P.
//
// tests/unit/fast_loops_test.cpp runs all 65536 (P, Q) pairs through the row
// shear in every path the processor runs, for thousands of weights, adversarial
// ones included, against the doubles.
#pragma once

#include <cstdint>

struct BlendPlan {
    bool exact = false;  // every d of this line blends in integers as in doubles
    uint16_t high = 0;   // floor(w 2^32) = high 2^16 + low
    uint16_t low = 0;
};

BlendPlan PlanBlend(double weight);
