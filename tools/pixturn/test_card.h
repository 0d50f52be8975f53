// The demo's built-in sample picture, drawn by the program itself: a test card
// on which anti-aliasing, alpha and orientation show at a glance.
#pragma once

#include "tools/pixturn/image.h"

namespace pixturn {

constexpr int32_t kTestCardWidth = 320;
constexpr int32_t kTestCardHeight = 240;

// A frame with a different colour on each side and a marked top-left corner, a
// colour wheel, a fan of one-pixel lines, arrows pointing up and right, an alpha
// ramp and a fully transparent hole, on a background darker at the bottom.
Image TestCard();

// A mask for a picture of the given size, as the host keeps masks (grey, black
// opaque, white transparent): an ellipse with a soft edge and a round bite out
// of its upper left, so that the mask's own orientation shows too.
Image TestMask(int32_t width, int32_t height);

}  // namespace pixturn
