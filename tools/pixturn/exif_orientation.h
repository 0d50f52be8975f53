// The EXIF Orientation of a photo: how the camera was held, which viewers undo
// when they show the picture. Cameras store the sensor's rows as they came and
// write the tag rather than turn the pixels.
#pragma once

#include <cstddef>
#include <cstdint>

#include "tools/pixturn/image.h"

namespace pixturn {

// The Orientation tag (1 to 8) of an APP1 segment's data ("Exif\0\0" and a TIFF
// header with IFD0); 0 when the segment is not EXIF, is cut short or has none.
int ExifOrientation(const uint8_t* data, size_t size);

// The image as a viewer shows a file with that orientation: 2 mirrored
// left-right, 3 turned half way, 4 mirrored top-bottom, 5 mirrored along the
// main diagonal, 6 turned a quarter clockwise, 7 mirrored along the other
// diagonal, 8 turned a quarter anticlockwise; other values leave it.
Image Oriented(Image image, int orientation);

}  // namespace pixturn
