// The specialised shears against HorizSkew and VertSkew, byte for byte, over every
// pair of pixel formats: random bytes (the unused top bit of a host bitmap's
// alpha byte included), skews with offsets far outside the line on both sides,
// weights of 0 and exactly 1 (-1e-17 splits into -1 and 1.0). The editors are set
// up by hand over plain memory: world rows padded, host bitmap rows stored
// bottom-up behind their row table, so that a row reached by stride shows.
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "picture/picture_editor.h"
#include "transforms/skew_loops.h"
#include "transforms/skews.h"

namespace {

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

struct FormatPair {
    int32_t source, destination;
};

class SkewLoopsTest : public ::testing::TestWithParam<FormatPair> {};

TEST_P(SkewLoopsTest, RowsAndColumnsMatchThePlainShears) {
    const auto [sourceFormat, destinationFormat] = GetParam();
    std::mt19937 random(7);
    std::uniform_int_distribution<int32_t> side(1, 90);
    std::uniform_real_distribution<double> step(-1.0, 1.0);
    for (int round = 0; round < 40; ++round) {
        const int32_t width = side(random), height = side(random);
        const Pixel background{int32_t(random() % 256), int32_t(random() % 256), int32_t(random() % 256),
                               int32_t(random() % 256)};
        MemoryPicture<PictureReader> source(sourceFormat, width, height, random);
        PictureReader& reader = source.editor;
        for (const bool columns : {false, true}) {
            const int32_t wider = width + (columns ? 0 : side(random) % 40);
            const int32_t taller = height + (columns ? side(random) % 40 : 0);
            MemoryPicture<PictureWriter> plain(destinationFormat, wider, taller, random);
            MemoryPicture<PictureWriter> fast(destinationFormat, wider, taller, random);
            fast.bytes = plain.bytes;

            const int32_t lines = columns ? width : height;
            const int32_t span = columns ? taller : wider;
            std::vector<double> skews{-1e-17, -0.0, 0.0, 3.0, -2.0, 0.5};
            for (double skew = std::uniform_real_distribution<double>(-1.5 * span, 1.5 * span)(random);
                 static_cast<int32_t>(skews.size()) < lines; skew += step(random))
                skews.push_back(skew);
            skews.resize(static_cast<size_t>(lines));

            for (int32_t line = 0; line < lines; ++line) {
                const SkewStep split = SplitSkew(skews[static_cast<size_t>(line)]);
                (columns ? VertSkew : HorizSkew)(reader, plain.editor, line, split.offset, split.weight, background.r,
                                                 background.g, background.b, background.a);
            }
            size_t next = 0;
            auto nextSkew = [&] { return skews.at(next++); };
            if (columns)
                ShearColumns(reader, fast.editor, lines, background, nextSkew);
            else
                ShearRows(reader, fast.editor, lines, background, nextSkew);
            EXPECT_EQ(next, skews.size()) << "one skew per line, in order";
            ASSERT_EQ(fast.bytes, plain.bytes) << (columns ? "columns" : "rows") << ", round " << round;
        }
    }
}

const FormatPair kFormatPairs[] = {
    {PixelFormatARGB32, PixelFormatARGB32},   {PixelFormatARGB32, PixelFormatRGB24},
    {PixelFormatARGB32, PixelFormatHostBGRA}, {PixelFormatRGB24, PixelFormatARGB32},
    {PixelFormatRGB24, PixelFormatRGB24},     {PixelFormatRGB24, PixelFormatHostBGRA},
    {PixelFormatHostBGRA, PixelFormatARGB32}, {PixelFormatHostBGRA, PixelFormatRGB24},
    {PixelFormatHostBGRA, PixelFormatHostBGRA},
};

INSTANTIATE_TEST_SUITE_P(FormatPairs, SkewLoopsTest, ::testing::ValuesIn(kFormatPairs), [](const auto& info) {
    return "From" + std::to_string(info.param.source) + "To" + std::to_string(info.param.destination);
});

}  // namespace
