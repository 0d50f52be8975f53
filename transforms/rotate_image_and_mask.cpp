// RotateImageAndMaskQLM: the receiver and its mask turned by the same angle, the
// turned mask given to the turned picture. Both turns use an all-ones background,
// so the uncovered corners are white in the picture and in the mask. With cut
// the result keeps the receiver's size and shows the centre of the turn.
//
// The mask is optional all the way: no mask, a mask whose turn fails or a result
// mask the host will not give leave the result without one; only a failed turn
// of the picture itself (or, with cut, no new picture) fails the method. The cut
// rectangle and the drawn mask size come from the pictures' sizes, never from
// the mask's, so picture and mask line up pixel for pixel.
#include <cstdint>

#include "picture/copying.h"
#include "picture/host_picture.h"
#include "picture/picture_editor.h"
#include "plugin/host_entry_points.h"
#include "plugin/methods.h"
#include "transforms/angle.h"
#include "transforms/owned_picture.h"

namespace {

constexpr uint32_t kAllOnesBackground = 0xFFFFFFFF;

struct Rectangle {
    int32_t x, y, width, height;
};

// Turns the receiver's mask, if it has one, and draws the turn through source
// into the mask of target (made if target has none). The references are given
// back in the order they were taken, last first.
void TurnMaskInto(REALpicture receiver, REALpicture target, double angle, const Rectangle& source) {
    const OwnedPicture mask(REALGetPictureMask(receiver, 0));
    if (!mask) return;
    const OwnedPicture turnedMask(rbRotate(mask.Get(), angle, kAllOnesBackground));
    if (!turnedMask) return;
    const OwnedPicture targetMask(REALGetPictureMask(target, 1));
    if (!targetMask) return;
    GraphicsDrawPicture(targetMask.Get(), turnedMask.Get(), 0, 0, source.width, source.height, source.x, source.y,
                        source.width, source.height);
}

}  // namespace

REALpicture RotateImageAndMaskQLM(REALpicture picture, double angle, signed char cut) {
    if (picture == nullptr) return nullptr;
    const int32_t width = ReadIntProperty(picture, "Width");
    const int32_t height = ReadIntProperty(picture, "Height");
    OwnedPicture turned(rbRotate(picture, angle, kAllOnesBackground));
    if (!turned) return nullptr;
    const int32_t turnedWidth = ReadIntProperty(turned.Get(), "Width");
    const int32_t turnedHeight = ReadIntProperty(turned.Get(), "Height");

    if (cut == 0) {
        TurnMaskInto(picture, turned.Get(), angle, {0, 0, turnedWidth, turnedHeight});
        return turned.Release();
    }

    // The centre of the turn: half the growth off each side, truncated toward zero.
    const Rectangle centre{WrappingSubtract(turnedWidth, width) / 2, WrappingSubtract(turnedHeight, height) / 2,
                           width, height};
    OwnedPicture result(NewDepth32Picture(width, height));
    if (!result) return nullptr;
    GraphicsDrawPicture(result.Get(), turned.Get(), 0, 0, width, height, centre.x, centre.y, width, height);
    TurnMaskInto(picture, result.Get(), angle, centre);
    return result.Release();
}
