// The specialised shears against HorizSkew and VertSkew, byte for byte, over every
// pair of pixel formats: random bytes (the unused top bit of a host bitmap's
// alpha byte included), skews with offsets far outside the line on both sides,
// weights of 0 and exactly 1 (-1e-17 splits into -1 and 1.0).
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "picture/picture_editor.h"
#include "tests/unit/memory_picture.h"
#include "transforms/skew_loops.h"
#include "transforms/skews.h"

namespace {

class SkewLoopsTest : public ::testing::TestWithParam<std::tuple<int32_t, int32_t>> {};

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

INSTANTIATE_TEST_SUITE_P(FormatPairs, SkewLoopsTest,
                         ::testing::Combine(::testing::ValuesIn(kPixelFormats), ::testing::ValuesIn(kPixelFormats)),
                         [](const auto& info) {
                             return "From" + std::to_string(std::get<0>(info.param)) + "To" +
                                    std::to_string(std::get<1>(info.param));
                         });

}  // namespace
