// PNG files through libpng: every PNG kind (grey, grey with alpha, RGB, RGBA,
// palette with or without transparency, 1 to 16 bits) read as 8-bit RGBA;
// pictures written as 8-bit RGBA and masks as 8-bit grey.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

#include "tools/pixturn/image.h"

namespace pixturn {

bool HasPngSignature(const uint8_t* bytes, size_t count);

// path names the file in messages. Throws Failure for a corrupt file or one over
// the host's size limit.
Image ReadPng(FILE* file, const std::string& path);

void WritePng(FILE* file, const Image& image, ImageRole role, const std::string& path);

}  // namespace pixturn
