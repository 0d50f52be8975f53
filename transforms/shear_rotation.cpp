// RotateQLM: the receiver turned by any angle in degrees, anticlockwise on the
// screen, with the background colour wherever no source pixel lands.
//
// Angle. The angle is brought into [0, 360] (a tiny negative angle becomes
// exactly 360 and is sheared, not cloned). An exact 0, 90, 180 or 270 is a clone
// or a quarter turn and blends nothing. Any other angle is first brought within
// 45 degrees of zero by one quarter turn (45 < a <= 135 turns by 90, 135 < a <=
// 225 by 180, 225 < a <= 315 by 270), so an exact 45, 135, 225 or 315 keeps a
// residual of +45. An angle above 315 keeps its residual: sine and tangent treat
// it as the equal negative angle. The working picture is the quarter-turned copy
// or the receiver itself; either way the method holds one reference to it.
//
// Three shears (Paeth). With rad = a * pi / 180 (multiplied first, then divided),
// s = sin rad, t = tan(rad / 2), c = cos rad, rows are sheared by t, columns by s,
// rows by t again; together they move working pixel (x, y) to
// (x c + y s, y c - x s) plus a constant shift per pass. W x H is the working
// picture; shear_geometry.h gives the pass pictures' sizes:
//
//   pass   picture   width                     height
//   1      P1        W1 = trunc(|t| H) + W     H
//   2      P2        W1                        H2 = trunc(H c + W |s|) + 1
//   3      result    trunc(W c + H |s|) + 1    trunc(H c + W |s|) + 1  (= H2)
//
// trunc rounds toward zero as the x86 conversion does: a size from NaN or out of
// the 32-bit range comes out as INT32_MIN and is refused. Every picture is 1 to
// 32767 pixels a side; the truncated sums of passes 2 and 3 are refused above
// 32766 so that the + 1 stays within the limit.
//
// Skews. A line is shifted by a skew of offset = floor(skew) whole pixels, and
// blended with weight = skew - offset. Pass 1 gives row y the skew (k + 0.5) t
// with k = y, or y - H when t < 0, so its offsets are never negative. Pass 2
// starts at (W - 1) s when s > 0, else at -((W - W1) s), and subtracts s from
// column to column; pass 3 starts at -((W - 1) s t) when s >= 0, else at
// (-hf - (W - 1) s) t, and adds t from row to row. The skews are carried by
// these repeated sums, never recomputed from the line number: their rounding is
// part of the result.
//
// Blending and the trailing pixel. A source pixel P landing with weight w is
// written as P - trunc(P w - Q w), Q being the source pixel before it, or the
// background before the first one; the blend lies between P and Q. A line
// shifted by a fraction of a pixel covers one pixel more than it has: the pixel
// after its last one is written as background - trunc(background w - Q w), so a
// line fades into the background instead of stopping at a hard edge. That is
// the + 1 of passes 2 and 3. All products are formed in doubles exactly as
// written (the build allows no fused multiply-add); skews.h and skew_loops.h
// hold the shears, the latter blending in integers the lines whose weight is
// proven to give the same pixels (exact_blend.h).
//
// Memory. Each pass picture is released as soon as the next pass has read it,
// so besides the receiver at most the working picture and two pass pictures are
// alive at once.
#include <cmath>
#include <cstdint>
#include <utility>

#include "picture/copying.h"
#include "picture/picture_editor.h"
#include "plugin/host_entry_points.h"
#include "plugin/methods.h"
#include "transforms/angle.h"
#include "transforms/owned_picture.h"
#include "transforms/shear_geometry.h"
#include "transforms/skew_loops.h"

namespace {

constexpr int32_t kMaxTruncatedSide = kMaxPictureSide - 1;

// The working picture's size and what the three passes share.
struct Shear {
    int32_t width;   // W
    int32_t height;  // H
    ShearFactors factors;
    Pixel background;
};

Pixel BackgroundChannels(uint32_t background) {
    return {int32_t(background >> 16 & 0xFF), int32_t(background >> 8 & 0xFF), int32_t(background & 0xFF),
            int32_t(background >> 24)};
}

// Brings a within 45 degrees of zero by one quarter turn. The working picture
// comes with one reference that the caller owns; without REALLockObject the
// receiver could not be held, nor read.
OwnedPicture TakeWorkingPicture(REALpicture picture, double& a) {
    switch (QuarterTurnsToWithin45(a)) {
        case 1: a -= 90.0; return OwnedPicture(rbRotate90(picture));
        case 2: a -= 180.0; return OwnedPicture(rbRotate180(picture));
        case 3: a -= 270.0; return OwnedPicture(rbRotate270(picture));
    }
    if (picture == nullptr || !REALLockObject.IsAvailable()) return OwnedPicture();
    REALLockObject(picture);
    return OwnedPicture(picture);
}

// Pass 1: the working picture's rows sheared by t into P1.
OwnedPicture FirstShear(PictureReader& working, const Shear& shear) {
    const int32_t w1 = FirstShearWidth(shear.factors, shear.width, shear.height);
    if (!IsValidPictureSize(w1, shear.height)) return OwnedPicture();
    PictureWriter writer;
    if (!BindNewPicture(writer, w1, shear.height)) return OwnedPicture();
    int32_t y = 0;
    ShearRows(working, writer, shear.height, shear.background, [&] {
        const double t = shear.factors.t;
        const int32_t k = t < 0 ? y - shear.height : y;
        ++y;
        return (k + 0.5) * t;
    });
    return OwnedPicture(writer.RenderPictureWriter());
}

// Pass 2: P1's columns sheared by s into P2. P1 goes once read: the writer is
// finished, the reader released, then P1.
OwnedPicture SecondShear(OwnedPicture p1, const Shear& shear) {
    PictureReader reader;
    if (!reader.GetPictureEditor(p1.Get(), true, false)) return OwnedPicture();
    const int32_t w1 = reader.width;
    if (w1 <= 0) return OwnedPicture();
    const int32_t h = TruncatedHeight(shear.factors, shear.width, shear.height);
    if (h < 0 || h > kMaxTruncatedSide) return OwnedPicture();
    PictureWriter writer;
    if (!BindNewPicture(writer, w1, h + 1)) return OwnedPicture();
    const double s = shear.factors.s;
    double skew = s > 0 ? (shear.width - 1) * s : -((shear.width - w1) * s);
    ShearColumns(reader, writer, w1, shear.background, [&] { return std::exchange(skew, skew - s); });
    return OwnedPicture(writer.RenderPictureWriter());
}

// Pass 3: P2's rows sheared by t into the result; P2 goes as P1 did.
OwnedPicture ThirdShear(OwnedPicture p2, const Shear& shear) {
    PictureReader reader;
    if (!reader.GetPictureEditor(p2.Get(), true, false)) return OwnedPicture();
    const int32_t hf = TruncatedHeight(shear.factors, shear.width, shear.height);
    const int32_t wf = TruncatedWidth(shear.factors, shear.width, shear.height);
    if (hf < 0 || hf > kMaxTruncatedSide || wf < 0 || wf > kMaxTruncatedSide) return OwnedPicture();
    PictureWriter writer;
    if (!BindNewPicture(writer, wf + 1, hf + 1)) return OwnedPicture();
    const double s = shear.factors.s, t = shear.factors.t;
    double skew = s >= 0 ? -((shear.width - 1) * s * t) : (-hf - (shear.width - 1) * s) * t;
    ShearRows(reader, writer, hf + 1, shear.background, [&] { return std::exchange(skew, skew + t); });
    return OwnedPicture(writer.RenderPictureWriter());
}

}  // namespace

REALpicture rbRotate(REALpicture picture, double angle, uint32_t background) {
    // An infinity normalises to NaN, and NaN makes every size invalid: nil
    // either way, without binding anything.
    if (!std::isfinite(angle)) return nullptr;
    double a = NormaliseAngle(angle);
    if (a == 0.0) return ClonePicture(picture);
    if (a == 90.0) return rbRotate90(picture);
    if (a == 180.0) return rbRotate180(picture);
    if (a == 270.0) return rbRotate270(picture);

    // Declared in this order, the reader is released before the working picture.
    OwnedPicture working = TakeWorkingPicture(picture, a);
    PictureReader reader;
    if (!reader.GetPictureEditor(working.Get(), true, false)) return nullptr;

    const Shear shear{reader.width, reader.height, ShearFactorsOf(a), BackgroundChannels(background)};
    OwnedPicture p1 = FirstShear(reader, shear);
    if (!p1) return nullptr;
    OwnedPicture p2 = SecondShear(std::move(p1), shear);
    if (!p2) return nullptr;
    return ThirdShear(std::move(p2), shear).Release();
}
