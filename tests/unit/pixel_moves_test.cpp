// The loops specialised by format pair against the readable per-pixel definition:
// for every pair of formats and every mapping the same bytes land in the same
// places, and nothing else is written.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <tuple>

#include "tests/unit/memory_picture.h"
#include "transforms/pixel_moves.h"

namespace {

const PixelMapping kMappings[] = {PixelMapping::HalfTurn, PixelMapping::LeftRight, PixelMapping::TopBottom,
                                  PixelMapping::QuarterAnticlockwise, PixelMapping::QuarterClockwise};

class PixelMovesTest : public ::testing::TestWithParam<std::tuple<int32_t, int32_t, PixelMapping>> {};

TEST_P(PixelMovesTest, SpecialisedLoopsWriteWhatTheDefinitionWrites) {
    const auto [sourceFormat, destinationFormat, mapping] = GetParam();
    const bool exchanged = mapping == PixelMapping::QuarterAnticlockwise || mapping == PixelMapping::QuarterClockwise;
    // 70 x 66 runs past one tile of the quarter turns both ways.
    for (auto [w, h] : {std::pair{1, 1}, {1, 5}, {7, 1}, {5, 3}, {70, 66}}) {
        std::mt19937 random(17);
        MemoryPicture<PictureReader> source(sourceFormat, w, h, random);
        MemoryPicture<PictureWriter> fast(destinationFormat, exchanged ? h : w, exchanged ? w : h, random);
        MemoryPicture<PictureWriter> slow(destinationFormat, exchanged ? h : w, exchanged ? w : h, random);
        slow.bytes = fast.bytes;
        MovePixels(source.editor, fast.editor, mapping);
        MovePixelsOneByOne(source.editor, slow.editor, mapping);
        EXPECT_EQ(fast.bytes, slow.bytes) << w << " x " << h;
    }
}

INSTANTIATE_TEST_SUITE_P(EveryFormatPair, PixelMovesTest,
                         ::testing::Combine(::testing::ValuesIn(kPixelFormats), ::testing::ValuesIn(kPixelFormats),
                                            ::testing::ValuesIn(kMappings)),
                         [](const auto& info) {
                             return "From" + std::to_string(std::get<0>(info.param)) + "To" +
                                    std::to_string(std::get<1>(info.param)) + "Mapping" +
                                    std::to_string(static_cast<int>(std::get<2>(info.param)));
                         });

}  // namespace
