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
#include "transforms/pixel_moves.h"
#include "transforms/processor_paths.h"
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

// Every path of the fast loops this processor runs, the portable one included.
inline std::vector<ProcessorPath> SupportedPaths() {
    std::vector<ProcessorPath> paths;
    for (const ProcessorPath path : {ProcessorPath::kPortable, ProcessorPath::kSse2, ProcessorPath::kAvx2,
                                     ProcessorPath::kAvx512, ProcessorPath::kNeon})
        if (Supports(path)) paths.push_back(path);
    return paths;
}

inline std::string InPath(ProcessorPath path) { return " (path " + std::to_string(static_cast<int>(path)) + ")"; }

// MovePixels in every path this processor runs against MovePixelsOneByOne, into
// pictures of the same random bytes.
inline std::string CompareMoves(PictureReader& source, int32_t destinationFormat, PixelMapping mapping,
                                std::mt19937& random) {
    const bool exchanged = mapping == PixelMapping::QuarterAnticlockwise || mapping == PixelMapping::QuarterClockwise;
    const int32_t width = exchanged ? source.height : source.width;
    const int32_t height = exchanged ? source.width : source.height;
    const std::mt19937 start = random;
    MemoryPicture<PictureWriter> plain(destinationFormat, width, height, random);
    MovePixelsOneByOne(source, plain.editor, mapping);
    for (const ProcessorPath path : SupportedPaths()) {
        std::mt19937 same = start;
        MemoryPicture<PictureWriter> fast(destinationFormat, width, height, same);
        MovePixels(source, fast.editor, mapping, path);
        if (fast.bytes != plain.bytes) return "MovePixels differs from MovePixelsOneByOne" + InPath(path);
    }
    return {};
}

// The rows (or columns) of source sheared, line i by skews[i], into a picture
// `extra` pixels longer along the line, of the same random bytes each time:
// ShearRows or ShearColumns in every path this processor runs, against
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
    for (const ProcessorPath path : SupportedPaths()) {
        std::mt19937 same = start;
        MemoryPicture<PictureWriter> fast(destinationFormat, width, height, same);
        size_t next = 0;
        auto nextSkew = [&] { return skews.at(next++); };
        if (columns)
            ShearColumns(source, fast.editor, lines, background, nextSkew, path);
        else
            ShearRows(source, fast.editor, lines, background, nextSkew, path);
        if (next != static_cast<size_t>(lines)) return "not one skew per line";
        if (fast.bytes != plain.bytes)
            return std::string(columns ? "ShearColumns differs from VertSkew"
                                       : "ShearRows differs from HorizSkew") +
                   InPath(path);
    }
    return {};
}
