// A slow model of "RotateQLM", written from the arithmetic alone: angle
// normalisation, exact quarter angles, the quarter-turn reduction, the three
// shears with their sizes, limits and carried skews, and the way the host's new
// pictures store what the plug-in writes into them, pass after pass.
#pragma once

#include <cstdint>
#include <optional>

#include "simhost/simulated_host.h"
#include "tests/support/pictures.h"

namespace test_support {

// What a picture of that storage shows after the channels (low 8 bits each)
// have been written into it: a 24-bit world reads alpha 255, a 16-bit one keeps
// 5 bits a channel and 1 of alpha, a host bitmap keeps 7 bits of alpha.
simhost::Rgba StoredPixel(simhost::Storage storage, int32_t r, int32_t g, int32_t b, int32_t a);
Image Stored(const Image& image, simhost::Storage storage);

// The picture "RotateQLM" gives for a receiver showing `source`, when every
// picture the host makes for the plug-in has storage `newPictures` (GWorld32,
// GWorld24 or HostBitmap); nullopt where the method gives nil. Angles are
// normalised by repeated steps of 360 degrees, so keep them within millions.
std::optional<Image> ModelRotate(const Image& source, double angle, uint32_t background, simhost::Storage newPictures);

}  // namespace test_support
