// PNG files through libpng: every PNG kind (grey, grey with alpha, RGB, RGBA,
// palette with or without transparency, 1 to 16 bits) read as 8-bit RGBA;
// pictures written in the smallest 8-bit colour type that keeps every pixel
// (grey, grey with alpha, RGB or RGBA), masks as 8-bit grey.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>

#include "tools/pixturn/image.h"

namespace pixturn {

bool HasPngSignature(const uint8_t* bytes, size_t count);

// path names the file in messages. Throws Failure for a corrupt file or one over
// the host's size limit.
// With settings.sizeOnly, only the header is read.
Image ReadPng(FILE* file, const std::string& path, const ReadSettings& settings);

// level: zlib's compression level, 0 (none) to 9 (smallest); none: fast.
void WritePng(FILE* file, const Image& image, ImageRole role, std::optional<int> level, const std::string& path);

}  // namespace pixturn
