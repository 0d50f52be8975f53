// "RotateQLM" through the shipped library: every pixel against the slow model on
// every host kind and storage, at angles on and
// around every boundary of the quarter-turn reduction; result sizes, the 32767
// limit of every pass picture, and angles that give nil.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <tuple>

#include "tests/harness/plugin_bench.h"

using simhost::HostKind;
using simhost::Storage;
using test_support::Image;
using test_support::PluginBench;

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// One exact quarter (the rest take the same clone or turn), the quarter-turn
// bounds and their neighbours, negative and whole-turn-and-more angles, and a
// tiny negative angle, which normalises to exactly 360 and is sheared by it.
const double kAngles[] = {0, 90, 180, 270, 45, 46, 135, 225.5, 315, 330, 30, 60, 1e-10, -30, -135, 1000.25, 89.999,
                          -1e-20};

class RotateModelTest : public ::testing::TestWithParam<std::tuple<test_support::HostCase, double>> {};

TEST_P(RotateModelTest, EveryPixelIsTheModels) {
    const auto [hostCase, angle] = GetParam();
    PluginBench bench(hostCase.kind);
    std::mt19937 random(static_cast<uint32_t>(std::fabs(angle) * 1000) + 1);
    for (const auto& [width, height] : {std::pair{23, 17}, {1, 9}, {40, 1}}) {
        REALpicture source = bench.RandomPicture(hostCase.storage, width, height, random());
        const test_support::Arguments arguments{.angle = angle, .background = uint32_t(random())};
        const Image before = test_support::ReadImage(bench.host, source);
        REALpicture result = bench.Apply(simhost::methods::kRotate, source, arguments);
        ASSERT_NE(result, nullptr);
        EXPECT_EQ(test_support::ReadImage(bench.host, result),
                  bench.Expected(simhost::methods::kRotate, before, arguments))
            << width << "x" << height;
        EXPECT_EQ(test_support::ReadImage(bench.host, source), before) << "the receiver is left alone";
        bench.ExpectBalancedAndRelease({result});
        bench.host.Release(source);
    }
}

INSTANTIATE_TEST_SUITE_P(HostsAndAngles, RotateModelTest,
                         ::testing::Combine(::testing::ValuesIn(test_support::kHostCases),
                                            ::testing::ValuesIn(kAngles)),
                         [](const auto& info) {
                             return std::string(std::get<0>(info.param).name) + "_" + std::to_string(info.index);
                         });

// The worked sizes, a tiny angle's extra line each way, the 32767 limit of every
// pass picture, and angles that give nil (expected size 0 x 0).
struct SizeCase {
    int32_t width, height;
    double angle;
    int32_t expectedWidth, expectedHeight;
};

class RotateSizeTest : public ::testing::TestWithParam<SizeCase> {};

TEST_P(RotateSizeTest, ResultSizeOrNil) {
    const SizeCase size = GetParam();
    PluginBench bench(HostKind::Console);
    REALpicture source = bench.RandomPicture(Storage::HostBitmap, size.width, size.height, 5);
    REALpicture result = bench.Apply(simhost::methods::kRotate, source, {.angle = size.angle});
    EXPECT_EQ(result ? bench.host.Width(result) : 0, size.expectedWidth);
    EXPECT_EQ(result ? bench.host.Height(result) : 0, size.expectedHeight);
    bench.ExpectBalancedAndRelease({result});
    bench.host.Release(source);
}

INSTANTIATE_TEST_SUITE_P(
    Sizes, RotateSizeTest,
    ::testing::Values(SizeCase{100, 50, 30, 112, 94}, SizeCase{100, 50, 60, 94, 112}, SizeCase{100, 50, 45, 107, 107},
                      SizeCase{100, 50, 330, 112, 94}, SizeCase{100, 50, 1e-10, 101, 51},
                      SizeCase{32766, 1, 1e-10, 32767, 2}, SizeCase{32767, 1, 1e-10, 0, 0},
                      SizeCase{1, 32766, 1e-10, 2, 32767}, SizeCase{1, 32767, 1e-10, 0, 0},
                      SizeCase{7, 5, std::nan(""), 0, 0}, SizeCase{7, 5, kInfinity, 0, 0},
                      SizeCase{7, 5, -kInfinity, 0, 0}));

}  // namespace
