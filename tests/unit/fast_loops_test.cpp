// The loops specialised by format pair against their per-pixel definitions, byte
// for byte, over every pair of pixel formats and random bytes (the unused top
// bit of a host bitmap's alpha byte included): the shears against HorizSkew and
// VertSkew with skews far outside the line on both sides and weights of 0 and
// exactly 1 (-1e-17 splits into -1 and 1.0); the mirrors and quarter turns
// against MovePixelsOneByOne. And the integer blend against the double
// arithmetic it replaces, over every (P, Q) pair.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "picture/picture_editor.h"
#include "tests/unit/loop_comparisons.h"
#include "transforms/exact_blend.h"
#include "transforms/shear_geometry.h"
#include "transforms/skew_loops.h"
#include "transforms/skews.h"

namespace {

// Under a sanitizer or an emulator every weight costs tens of times more;
// the adversarial weights stay, the random and rotation ones thin out.
#if defined(__SANITIZE_ADDRESS__) || !defined(__x86_64__)
constexpr int kThinning = 16;
constexpr int kLargestDenominator = 8;
#else
constexpr int kThinning = 1;
constexpr int kLargestDenominator = 24;
#endif

// Exact halves and k/n with their neighbours a few ulps away, 0, 1 and just
// below, subnormal and tiny weights around the 2^-11 bound, the weights real
// rotations give their lines, and random ones.
std::vector<double> BlendWeights() {
    std::vector<double> weights{0.0, 1.0, 1.0 - 0x1p-53, 0x1p-1074, 0x1p-1022, 1e-300, 1e-13, 0x1p-11};
    auto withNeighbours = [&](double w) {
        double below = w, above = w;
        weights.push_back(w);
        for (int ulp = 0; ulp < 3; ++ulp) {
            below = std::nextafter(below, 0.0);
            above = std::nextafter(above, 1.0);
            weights.push_back(below);
            weights.push_back(above);
        }
    };
    for (int n = 2; n <= kLargestDenominator; ++n)
        for (int k = 1; k < n; ++k) withNeighbours(static_cast<double>(k) / n);
    withNeighbours(0x1p-11);
    withNeighbours(0.5 - 1e-13);
    auto fraction = [](double skew) { return skew - std::floor(skew); };
    for (double angle : {30.0, 45.0, -30.0, 1e-10}) {
        const ShearFactors f = ShearFactorsOf(angle);
        double column = 3999 * f.s, row = -(3999 * f.s * f.t);
        for (int line = 0; line < 200 / kThinning; ++line) {
            weights.push_back(fraction((line + 0.5) * f.t));
            weights.push_back(fraction(column));
            weights.push_back(fraction(row));
            column -= f.s;
            row += f.t;
        }
    }
    std::mt19937_64 random(11);
    std::uniform_real_distribution<double> uniform(0.0, 1.0);
    for (int i = 0; i < 1000 / kThinning; ++i) weights.push_back(uniform(random));
    return weights;
}

// One row through the integer row shear in every path this processor runs: its
// pixels step through every (Q, P) pair in turn, all four channels alike.
TEST(ExactBlendTest, EveryPairBlendsAsTheDoublesOnLinesPlannedExact) {
    std::vector<uint8_t> values;
    for (int p = 0; p < 256; ++p)
        for (int q = 0; q < 256; ++q) values.insert(values.end(), {uint8_t(q), uint8_t(p)});
    const int32_t length = static_cast<int32_t>(values.size());
    std::vector<uint8_t> row(values.size() * 4), blended(values.size() * 4);
    for (size_t i = 0; i < values.size(); ++i) std::fill_n(&row[4 * i], 4, values[i]);

    int exactLines = 0;
    const std::vector<double> weights = BlendWeights();
    for (const double w : weights) {
        const BlendPlan plan = PlanBlend(w);
        if (!plan.exact) continue;
        ++exactLines;
        std::vector<uint8_t> definition(values.size() * 4);
        for (int32_t d = 1; d < length; ++d) {
            const int p = values[d], q = values[d - 1];
            std::fill_n(&definition[4 * d], 4, static_cast<uint8_t>(p - static_cast<int>(p * w - q * w)));
        }
        for (const ProcessorPath path : SupportedPaths()) {
            // Every byte starts unlike its expected value, so a pixel left unwritten shows.
            std::transform(definition.begin(), definition.end(), blended.begin(), [](uint8_t v) { return static_cast<uint8_t>(~v); });
            WithPath(path, [&]<typename Path>() {
                skew_loops::ShearRowInIntegers(skew_loops::IntegerRow<Path, PixelCodec<PixelFormatARGB32>>(
                                                   row.data(), length, blended.data(), SkewStep{0, w}, plan, Pixel{}),
                                               length);
            });
            const auto differs = std::mismatch(blended.begin() + 4, blended.end(), definition.begin() + 4);
            if (differs.first != blended.end()) {
                const size_t d = static_cast<size_t>(differs.first - blended.begin()) / 4;
                FAIL() << "P " << int(values[d]) << ", Q " << int(values[d - 1]) << ", w " << w << InPath(path)
                       << ": " << int(*differs.first) << " for " << int(*differs.second);
            }
        }
    }
    // Most lines must take the integers, or the planner has lost its point.
    EXPECT_GT(exactLines, static_cast<int>(weights.size()) / 2);
}

class SkewLoopsTest : public ::testing::TestWithParam<std::tuple<int32_t, int32_t>> {};

TEST_P(SkewLoopsTest, RowsAndColumnsMatchThePlainShears) {
    const auto [sourceFormat, destinationFormat] = GetParam();
    std::mt19937 random(7);
    std::uniform_int_distribution<int32_t> side(1, 90);
    std::uniform_real_distribution<double> step(-1.0, 1.0);
    for (int round = 0; round < 40; ++round) {
        const Pixel background{int32_t(random() % 256), int32_t(random() % 256), int32_t(random() % 256),
                               int32_t(random() % 256)};
        MemoryPicture<PictureReader> source(sourceFormat, side(random), side(random), random);
        for (const bool columns : {false, true}) {
            const int32_t extra = side(random) % 40;
            const int32_t span = (columns ? source.editor.height : source.editor.width) + extra;
            const size_t lines = static_cast<size_t>(columns ? source.editor.width : source.editor.height);
            std::vector<double> skews{-1e-17, -0.0, 0.0, 3.0, -2.0, 0.5};
            for (double skew = std::uniform_real_distribution<double>(-1.5 * span, 1.5 * span)(random);
                 skews.size() < lines; skew += step(random))
                skews.push_back(skew);
            skews.resize(lines);
            ASSERT_EQ(CompareShears(source.editor, destinationFormat, columns, extra, skews, background, random), "")
                << "round " << round;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(FormatPairs, SkewLoopsTest,
                         ::testing::Combine(::testing::ValuesIn(kPixelFormats), ::testing::ValuesIn(kPixelFormats)),
                         [](const auto& info) {
                             return "From" + std::to_string(std::get<0>(info.param)) + "To" +
                                    std::to_string(std::get<1>(info.param));
                         });

class PixelMovesTest : public ::testing::TestWithParam<std::tuple<int32_t, int32_t, PixelMapping>> {};

TEST_P(PixelMovesTest, SpecialisedLoopsWriteWhatTheDefinitionWrites) {
    const auto [sourceFormat, destinationFormat, mapping] = GetParam();
    // 134 x 130 runs past one tile of the quarter turns both ways, and past the
    // widest register's last whole step in every row.
    for (auto [w, h] : {std::pair{1, 1}, {1, 5}, {7, 1}, {5, 3}, {134, 130}}) {
        std::mt19937 random(17);
        MemoryPicture<PictureReader> source(sourceFormat, w, h, random);
        EXPECT_EQ(CompareMoves(source.editor, destinationFormat, mapping, random), "") << w << " x " << h;
    }
}

INSTANTIATE_TEST_SUITE_P(EveryFormatPair, PixelMovesTest,
                         ::testing::Combine(::testing::ValuesIn(kPixelFormats), ::testing::ValuesIn(kPixelFormats),
                                            ::testing::Values(PixelMapping::HalfTurn, PixelMapping::LeftRight,
                                                              PixelMapping::TopBottom,
                                                              PixelMapping::QuarterAnticlockwise,
                                                              PixelMapping::QuarterClockwise)),
                         [](const auto& info) {
                             return "From" + std::to_string(std::get<0>(info.param)) + "To" +
                                    std::to_string(std::get<1>(info.param)) + "Mapping" +
                                    std::to_string(static_cast<int>(std::get<2>(info.param)));
                         });

}  // namespace
