// An editor bound by hand over memory of the test's own, filled with random
// bytes, for comparing specialised loops with the per-pixel definition: world
// rows padded, host bitmap rows stored bottom-up behind their row table, so that
// a row reached by stride rather than through the table shows.
#pragma once

#include <cstdint>
#include <random>
#include <vector>

#include "picture/picture_editor.h"
#include "picture/pixel_formats.h"

template <typename Editor>
struct MemoryPicture {
    MemoryPicture(int32_t format, int32_t width, int32_t height, std::mt19937& random) {
        const bool hostBitmap = format == PixelFormatHostBGRA;
        const int32_t bytesPerPixel = format == PixelFormatRGB24 ? 3 : 4;
        const int32_t stride = width * bytesPerPixel + (hostBitmap ? 0 : 12);
        bytes.resize(static_cast<size_t>(stride) * height);
        for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random());
        for (int32_t y = 0; y < height; ++y)
            rows.push_back(&bytes[static_cast<size_t>(hostBitmap ? height - 1 - y : y) * stride]);
        editor.width = width;
        editor.height = height;
        editor.pixelFormat = format;
        editor.bytesPerPixel = bytesPerPixel;
        editor.rowBytes = hostBitmap ? width * 4 : stride;
        editor.rowTable = hostBitmap ? rows.data() : nullptr;
        editor.baseAddress = editor.currentRow = rows[0];
    }
    std::vector<uint8_t> bytes;
    std::vector<uint8_t*> rows;
    Editor editor;
};

inline constexpr int32_t kPixelFormats[] = {PixelFormatARGB32, PixelFormatRGB24, PixelFormatHostBGRA};
