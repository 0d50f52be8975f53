// "RotateImageAndMaskQLM" through the shipped library: picture and mask turned
// alike (against the slow model of the turn), whole or cut to the receiver's
// size around the centre, and a mask side that fails without failing the method.
// Without a mask it is the picture side alone, which every host's method test
// checks.
#include <gtest/gtest.h>

#include <tuple>

#include "tests/harness/plugin_bench.h"
#include "tests/support/rotation_model.h"

using simhost::HostKind;
using simhost::Rgba;
using simhost::Storage;
using test_support::Image;

namespace {

struct Bench : test_support::PluginBench {
    using PluginBench::PluginBench;
    REALpicture MaskedPicture(Storage storage, int32_t width, int32_t height, uint32_t seed) {
        REALpicture picture = RandomPicture(storage, width, height, seed);
        REALpicture mask = RandomPicture(storage, width, height, seed + 1);
        host.SetMask(picture, mask);
        host.Release(mask);
        return picture;
    }
};

struct MaskCase {
    HostKind kind;
    Storage storage;  // of the receiver, its mask and new pictures
    double angle;     // 90 cuts from x = -25 of a 50 x 100 turn
    const char* name;
};

const MaskCase kMaskCases[] = {
    {HostKind::Desktop, Storage::GWorld32, 30, "Desktop30"},
    {HostKind::Desktop, Storage::GWorld32, 90, "Desktop90"},
    {HostKind::Web, Storage::HostBitmap, -45, "WebMinus45"},
};

class RotateImageAndMaskTest : public ::testing::TestWithParam<std::tuple<MaskCase, bool>> {};

TEST_P(RotateImageAndMaskTest, PictureAndMaskTurnAlike) {
    const auto [maskCase, cut] = GetParam();
    simhost::HostConfig config = test_support::ConfigFor(maskCase.kind);
    config.newPictureFill = 0x80402010;
    Bench bench(config);
    REALpicture source = bench.MaskedPicture(maskCase.storage, 100, 50, 1);
    const test_support::Arguments arguments{.angle = maskCase.angle, .cut = cut};
    REALpicture result = bench.Apply(simhost::methods::kRotateImageAndMask, source, arguments);
    ASSERT_NE(result, nullptr);
    EXPECT_EQ(test_support::ReadImage(bench.host, result),
              bench.Expected(simhost::methods::kRotateImageAndMask, test_support::ReadImage(bench.host, source),
                             arguments));
    // The mask turns the same way into a mask the host makes, which starts opaque black.
    const Image turnedMask = *test_support::ModelRotate(test_support::ReadImage(bench.host, bench.host.MaskOf(source)),
                                                        maskCase.angle, 0xFFFFFFFF, maskCase.storage);
    ASSERT_NE(bench.host.MaskOf(result), nullptr);
    EXPECT_EQ(test_support::ReadImage(bench.host, bench.host.MaskOf(result)),
              cut ? test_support::CutFromCentre(turnedMask, 100, 50, Rgba{0, 0, 0, 255}) : turnedMask);
    bench.ExpectBalancedAndRelease({result});
    bench.host.Release(source);
}

INSTANTIATE_TEST_SUITE_P(Cases, RotateImageAndMaskTest,
                         ::testing::Combine(::testing::ValuesIn(kMaskCases), ::testing::Bool()),
                         [](const auto& info) {
                             return std::string(std::get<0>(info.param).name) +
                                    (std::get<1>(info.param) ? "Cut" : "Whole");
                         });

// The picture's turn makes three new pictures and the cut one the fourth; the
// mask's turn fails from the fifth on, and the picture comes back without it.
TEST(RotateImageAndMaskCallTest, AFailedMaskTurnLeavesTheMaskOut) {
    simhost::HostConfig config;
    config.newPictureFailsFromCall = 5;
    Bench bench(config);
    REALpicture source = bench.MaskedPicture(Storage::GWorld32, 20, 10, 4);
    const test_support::Arguments cut{.angle = 30, .cut = true};
    REALpicture result = bench.Apply(simhost::methods::kRotateImageAndMask, source, cut);
    ASSERT_NE(result, nullptr);
    EXPECT_EQ(bench.host.MaskOf(result), nullptr);
    bench.ExpectBalancedAndRelease({result});
    EXPECT_EQ(bench.Apply(simhost::methods::kRotateImageAndMask, source, cut), nullptr)
        << "no new picture for the turn itself";
    bench.ExpectBalancedAndRelease({});
    bench.host.Release(source);
}

}  // namespace
