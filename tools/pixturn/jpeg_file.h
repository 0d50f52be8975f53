// JPEG files through libjpeg-turbo: grey, YCbCr and Adobe CMYK files read as RGB
// with A = 255, turned upright by their EXIF orientation; pictures written as RGB
// laid over a colour (JPEG keeps no alpha), masks as grey.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

#include "tools/pixturn/image.h"

namespace pixturn {

bool HasJpegSignature(const uint8_t* bytes, size_t count);

// path names the file in messages. Throws Failure for a corrupt file (damaged
// entropy-coded data included, which libjpeg would otherwise only warn about) or
// one over the host's size limit.
// settings.autoOrient: turn and mirror the pixels as the file's EXIF Orientation
// says, as photo viewers show them; settings.sizeOnly: read the header alone.
Image ReadJpeg(FILE* file, const std::string& path, const ReadSettings& settings);

struct JpegSettings {
    int quality = 92;              // libjpeg's quality scale, 1 to 100
    uint32_t flatten = 0xFFFFFFFF;  // 0xAARRGGBB, AA unused: what transparent pixels are laid over
};

void WriteJpeg(FILE* file, const Image& image, ImageRole role, const JpegSettings& settings, const std::string& path);

}  // namespace pixturn
