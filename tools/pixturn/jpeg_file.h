// JPEG files through libjpeg-turbo: grey, YCbCr and Adobe CMYK files read as RGB
// with A = 255; pictures written as RGB (JPEG keeps no alpha), masks as grey.
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
Image ReadJpeg(FILE* file, const std::string& path);

void WriteJpeg(FILE* file, const Image& image, ImageRole role, const std::string& path);

}  // namespace pixturn
