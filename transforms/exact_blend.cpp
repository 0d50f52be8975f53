// Deciding per line whether the integer blend is exact; exact_blend.h has the proof.
#include "transforms/exact_blend.h"

#include <bit>
#include <cmath>
#include <cstdint>

namespace {

// The integers against the doubles for every pair at distance d, the
// definition's own arithmetic settling a d the bounds cannot.
bool DistanceBlendsExactly(int32_t d, double weight, uint32_t w32) {
    const int32_t floorOfWeighted = static_cast<int32_t>((uint64_t(uint32_t(d)) * w32) >> 32);
    for (int32_t low = 0; low + d <= 255; ++low) {
        const int32_t high = low + d;
        if (high - static_cast<int32_t>(high * weight - low * weight) != high - floorOfWeighted) return false;
        if (low - static_cast<int32_t>(low * weight - high * weight) != low + floorOfWeighted) return false;
    }
    return true;
}

// Lines with more doubtful distances than this take the doubles: settling one
// costs about as much as blending a few hundred pixels.
constexpr int kMostDistancesSettled = 8;

}  // namespace

BlendPlan PlanBlend(double weight) {
    BlendPlan plan;
    if (!(weight >= 0.0 && weight < 1.0)) return plan;
    // ldexp scales exactly; below 1 the result fits, and conversion truncates.
    const uint32_t w32 = static_cast<uint32_t>(std::ldexp(weight, 32));
    plan.high = static_cast<uint16_t>(w32 >> 16);
    plan.low = static_cast<uint16_t>(w32 & 0xFFFF);
    if (weight < 0x1p-11) {
        plan.exact = true;
        return plan;
    }
    const uint64_t w64 = static_cast<uint64_t>(std::ldexp(weight, 64));
    const uint64_t leftOut = w64 & 0xFFFFFFFFu;
    // 2^-44 of a unit, a bound on the double's error, in units of 2^-64.
    constexpr uint64_t kDoubleError = uint64_t(1) << 20;
    const bool doublesExact = std::bit_width(w64 >> std::countr_zero(w64)) <= 45;
    // Every doubtful fraction lies within 2^20 above a wrap of 2^64 or below
    // d (w64 mod 2^32) < 2^40: one comparison passes all the others.
    constexpr uint64_t kScreen = uint64_t(1) << 41;
    uint64_t fraction = 0;
    int settled = 0;
    for (uint64_t d = 1; d <= 255; ++d) {
        fraction += w64;
        if (fraction + kDoubleError >= kScreen) continue;
        const bool atLeastOne = w64 > UINT64_MAX / d;  // d w >= 1
        const bool nearInteger = fraction >= 0 - kDoubleError || (atLeastOne && fraction <= kDoubleError);
        const bool doubtful = (nearInteger && !doublesExact) || (atLeastOne && fraction < d * leftOut);
        if (doubtful && (++settled > kMostDistancesSettled ||
                         !DistanceBlendsExactly(static_cast<int32_t>(d), weight, w32)))
            return plan;
    }
    plan.exact = true;
    return plan;
}
