// The specialised loops against their per-pixel definitions, byte for byte, on
// editors bound by hand over memory of the test's own and filled with random
// bytes: world rows padded, host bitmap rows stored bottom-up behind their row
// table, so that a row reached by stride rather than through the table shows.
// The unit tests and the fuzz target's direct checks share these comparisons.
#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "picture/picture_editor.h"
#include "picture/pixel_formats.h"
#include "transforms/exact_blend.h"
#include "transforms/pixel_moves.h"
#include "transforms/skew_loops.h"
#include "transforms/skews.h"

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

// Every width of the integer row blend this processor runs.
inline std::vector<BlendWidth> SupportedBlendWidths() {
    std::vector<BlendWidth> widths{BlendWidth::kSse2};
    if (Supports(BlendWidth::kAvx2)) widths.push_back(BlendWidth::kAvx2);
    return widths;
}

// MovePixels against MovePixelsOneByOne, into pictures of the same random bytes.
inline std::string CompareMoves(PictureReader& source, int32_t destinationFormat, PixelMapping mapping,
                                std::mt19937& random) {
    const bool exchanged = mapping == PixelMapping::QuarterAnticlockwise || mapping == PixelMapping::QuarterClockwise;
    const int32_t width = exchanged ? source.height : source.width;
    const int32_t height = exchanged ? source.width : source.height;
    std::mt19937 same = random;
    MemoryPicture<PictureWriter> fast(destinationFormat, width, height, random);
    MemoryPicture<PictureWriter> plain(destinationFormat, width, height, same);
    MovePixels(source, fast.editor, mapping);
    MovePixelsOneByOne(source, plain.editor, mapping);
    return fast.bytes == plain.bytes ? "" : "MovePixels differs from MovePixelsOneByOne";
}

// The rows (or columns) of source sheared, line i by skews[i], into a picture
// `extra` pixels longer along the line, of the same random bytes each time:
// ShearRows in every blend width this processor has, or ShearColumns, against
// HorizSkew or VertSkew line by line.
inline std::string CompareShears(PictureReader& source, int32_t destinationFormat, bool columns, int32_t extra,
                                 const std::vector<double>& skews, const Pixel& background, std::mt19937& random) {
    const int32_t lines = columns ? source.width : source.height;
    const int32_t width = source.width + (columns ? 0 : extra), height = source.height + (columns ? extra : 0);
    const std::mt19937 start = random;
    MemoryPicture<PictureWriter> plain(destinationFormat, width, height, random);
    for (int32_t line = 0; line < lines; ++line) {
        const SkewStep split = SplitSkew(skews.at(static_cast<size_t>(line)));
        (columns ? VertSkew : HorizSkew)(source, plain.editor, line, split.offset, split.weight, background.r,
                                         background.g, background.b, background.a);
    }
    // Columns blend in SSE2 only.
    for (const BlendWidth blend : columns ? std::vector{BlendWidth::kSse2} : SupportedBlendWidths()) {
        std::mt19937 same = start;
        MemoryPicture<PictureWriter> fast(destinationFormat, width, height, same);
        size_t next = 0;
        auto nextSkew = [&] { return skews.at(next++); };
        if (columns)
            ShearColumns(source, fast.editor, lines, background, nextSkew);
        else
            ShearRows(source, fast.editor, lines, background, nextSkew, blend);
        if (next != static_cast<size_t>(lines)) return "not one skew per line";
        if (fast.bytes != plain.bytes)
            return std::string(columns ? "ShearColumns differs from VertSkew"
                                       : "ShearRows differs from HorizSkew") +
                   (blend == BlendWidth::kAvx2 ? " (AVX2)" : "");
    }
    return {};
}
