// The loops specialised by format pair against the readable per-pixel definition:
// for every pair of formats and every mapping the same bytes land in the same
// places, and nothing else is written. The editors are bound by hand over memory
// of the test's own, with padded rows, and host bitmap rows lying bottom row
// first so that only their row table finds them.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "transforms/pixel_moves.h"

namespace {

struct PictureMemory {
    std::vector<uint8_t> bytes;
    std::vector<uint8_t*> rows;
};

void BindByHand(PictureEditor& editor, PictureMemory& memory, int32_t format, int32_t width, int32_t height) {
    const int32_t pixelSize = format == PixelFormatRGB24 ? 3 : 4;
    const int32_t stride = width * pixelSize + 5;
    memory.bytes.resize(size_t(stride) * height);
    std::mt19937 random(17);
    for (uint8_t& byte : memory.bytes) byte = uint8_t(random());
    for (int32_t y = 0; y < height; ++y) memory.rows.push_back(&memory.bytes[size_t(stride) * (height - 1 - y)]);
    editor.pixelFormat = format;
    editor.bytesPerPixel = pixelSize;
    editor.width = width;
    editor.height = height;
    editor.rowBytes = format == PixelFormatHostBGRA ? width * 4 : stride;
    editor.rowTable = memory.rows.data();
    editor.baseAddress = editor.currentRow = format == PixelFormatHostBGRA ? memory.rows[0] : memory.bytes.data();
}

const int32_t kFormats[] = {PixelFormatARGB32, PixelFormatRGB24, PixelFormatHostBGRA};
const PixelMapping kMappings[] = {PixelMapping::HalfTurn, PixelMapping::LeftRight, PixelMapping::TopBottom,
                                  PixelMapping::QuarterAnticlockwise, PixelMapping::QuarterClockwise};

class PixelMovesTest : public ::testing::TestWithParam<std::tuple<int32_t, int32_t, PixelMapping>> {};

TEST_P(PixelMovesTest, SpecialisedLoopsWriteWhatTheDefinitionWrites) {
    const auto [sourceFormat, destinationFormat, mapping] = GetParam();
    const bool exchanged = mapping == PixelMapping::QuarterAnticlockwise || mapping == PixelMapping::QuarterClockwise;
    // 70 rows run past one strip of the quarter turns.
    for (auto [w, h] : {std::pair{1, 1}, {1, 5}, {7, 1}, {5, 3}, {6, 70}}) {
        PictureMemory source, byLoops, byDefinition;
        PictureReader reader;
        PictureWriter fast, slow;
        BindByHand(reader, source, sourceFormat, w, h);
        BindByHand(fast, byLoops, destinationFormat, exchanged ? h : w, exchanged ? w : h);
        BindByHand(slow, byDefinition, destinationFormat, exchanged ? h : w, exchanged ? w : h);
        MovePixels(reader, fast, mapping);
        MovePixelsOneByOne(reader, slow, mapping);
        EXPECT_EQ(byLoops.bytes, byDefinition.bytes) << w << " x " << h;
    }
}

INSTANTIATE_TEST_SUITE_P(EveryFormatPair, PixelMovesTest,
                         ::testing::Combine(::testing::ValuesIn(kFormats), ::testing::ValuesIn(kFormats),
                                            ::testing::ValuesIn(kMappings)),
                         [](const auto& info) {
                             return "From" + std::to_string(std::get<0>(info.param)) + "To" +
                                    std::to_string(std::get<1>(info.param)) + "Mapping" +
                                    std::to_string(static_cast<int>(std::get<2>(info.param)));
                         });

}  // namespace
