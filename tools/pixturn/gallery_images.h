// Pictures the demo's gallery shows besides the methods' own results: small
// copies for the page, and a picture with its mask applied.
#pragma once

#include "tools/pixturn/image.h"

namespace pixturn {

// The image shrunk to fit side x side, each pixel the alpha-weighted mean of the
// pixels it covers (so that transparent pixels lend no colour); the image as it
// is when it already fits.
Image Thumbnail(const Image& image, int32_t side);

// The picture as the host shows it with its mask: the mask's grey level (0 black
// opaque, 255 white transparent) taken off each pixel's alpha. Same sizes.
Image WithMaskApplied(const Image& picture, const Image& mask);

}  // namespace pixturn
