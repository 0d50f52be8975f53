// "RotateImageAndMaskQLM" through the shipped library: picture and mask turned
// alike (against the slow model of the turn), whole or cut to the receiver's
// size around the centre, and a mask side that fails without failing the method.
#include <gtest/gtest.h>

#include <tuple>

#include "simhost/simulated_host.h"
#include "tests/harness/plugin_bench.h"
#include "tests/support/pictures.h"
#include "tests/support/rotation_model.h"

using simhost::HostKind;
using simhost::Rgba;
using simhost::Storage;
using test_support::Image;

namespace {

constexpr uint32_t kAllOnes = 0xFFFFFFFF;

struct Bench : test_support::PluginBench {
    using PluginBench::PluginBench;
    REALpicture MaskedPicture(Storage storage, int32_t width, int32_t height, uint32_t seed, bool withMask) {
        REALpicture picture = RandomPicture(storage, width, height, seed);
        if (withMask) {
            REALpicture mask = RandomPicture(storage, width, height, seed + 1);
            host.SetMask(picture, mask);
            host.Release(mask);
        }
        return picture;
    }
    REALpicture Call(REALpicture picture, double angle, bool cut) {
        return plugin.Call<REALpicture>(simhost::methods::kRotateImageAndMask, picture, angle, static_cast<signed char>(cut));
    }
};

// What a cut result shows of the whole turn: the receiver's size from (dx, dy);
// where that reaches past the turn, what the new picture held.
Image CutFrom(const Image& whole, int32_t width, int32_t height, Rgba untouched) {
    const int32_t dx = (whole.width - width) / 2, dy = (whole.height - height) / 2;
    Image cut{width, height, std::vector<Rgba>(static_cast<size_t>(width) * height, untouched)};
    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width; ++x)
            if (x + dx >= 0 && x + dx < whole.width && y + dy >= 0 && y + dy < whole.height)
                cut.at(x, y) = whole.at(x + dx, y + dy);
    return cut;
}

struct MaskCase {
    HostKind kind;
    Storage storage;  // of the receiver, its mask and new pictures
    double angle;     // 90 cuts from x = -25 of a 50 x 100 turn
    bool withMask;
    const char* name;
};

const MaskCase kMaskCases[] = {
    {HostKind::Desktop, Storage::GWorld32, 30, true, "Desktop30"},
    {HostKind::Desktop, Storage::GWorld32, 90, true, "Desktop90"},
    {HostKind::Desktop, Storage::GWorld32, 0, false, "Desktop0NoMask"},
    {HostKind::Console, Storage::HostBitmap, 30, false, "Console30NoMask"},
    {HostKind::Web, Storage::HostBitmap, -45, true, "WebMinus45"},
};

class RotateImageAndMaskTest : public ::testing::TestWithParam<std::tuple<MaskCase, bool>> {};

TEST_P(RotateImageAndMaskTest, PictureAndMaskTurnAlike) {
    const auto [maskCase, cut] = GetParam();
    simhost::HostConfig config;
    config.kind = maskCase.kind;
    config.newPictureFill = 0x80402010;
    Bench bench(config);
    REALpicture source = bench.MaskedPicture(maskCase.storage, 100, 50, 1, maskCase.withMask);
    REALpicture result = bench.Call(source, maskCase.angle, cut);
    ASSERT_NE(result, nullptr);

    auto expected = [&](REALpicture picture, Rgba untouched) {
        const Image turned = *test_support::ModelRotate(test_support::ReadImage(bench.host, picture), maskCase.angle,
                                                        kAllOnes, maskCase.storage);
        return cut ? CutFrom(turned, 100, 50, untouched) : turned;
    };
    EXPECT_EQ(test_support::ReadImage(bench.host, result),
              expected(source, test_support::StoredPixel(maskCase.storage, 0x40, 0x20, 0x10, 0x80)));
    if (maskCase.withMask) {
        // A mask the host makes starts opaque black.
        ASSERT_NE(bench.host.MaskOf(result), nullptr);
        EXPECT_EQ(test_support::ReadImage(bench.host, bench.host.MaskOf(result)),
                  expected(bench.host.MaskOf(source), Rgba{0, 0, 0, 255}));
    } else {
        EXPECT_EQ(bench.host.MaskOf(result), nullptr);
    }
    bench.ExpectBalancedAndRelease({result});
    bench.host.Release(source);
}

INSTANTIATE_TEST_SUITE_P(Cases, RotateImageAndMaskTest,
                         ::testing::Combine(::testing::ValuesIn(kMaskCases), ::testing::Bool()),
                         [](const auto& info) {
                             return std::string(std::get<0>(info.param).name) +
                                    (std::get<1>(info.param) ? "Cut" : "Whole");
                         });

// Without a mask the whole turn is "RotateQLM" with the all-ones background, and
// the 30-degree cut of 100 x 50 is its rectangle from (6, 22).
TEST(RotateImageAndMaskCallTest, WithoutAMaskItIsRotateWithAllOnes) {
    Bench bench(simhost::HostConfig{});
    REALpicture source = bench.RandomPicture(Storage::GWorld32, 100, 50, 3);
    REALpicture rotated = bench.plugin.Call<REALpicture>(simhost::methods::kRotate, source, 30.0, kAllOnes);
    REALpicture whole = bench.Call(source, 30, false);
    REALpicture cut = bench.Call(source, 30, true);
    ASSERT_TRUE(rotated && whole && cut);
    const Image turned = test_support::ReadImage(bench.host, rotated);
    EXPECT_EQ(test_support::ReadImage(bench.host, whole), turned);
    const Image centre = test_support::ReadImage(bench.host, cut);
    ASSERT_EQ(centre.width * centre.height, 100 * 50);
    for (int32_t y = 0; y < 50; ++y)
        for (int32_t x = 0; x < 100; ++x) ASSERT_EQ(centre.at(x, y), turned.at(x + 6, y + 22));
    bench.ExpectBalancedAndRelease({rotated, whole, cut});
    EXPECT_EQ(bench.Call(nullptr, 30, true), nullptr);
    bench.host.Release(source);
}

// The picture's turn makes three new pictures and the cut one the fourth; the
// mask's turn fails from the fifth on, and the picture comes back without it.
TEST(RotateImageAndMaskCallTest, AFailedMaskTurnLeavesTheMaskOut) {
    simhost::HostConfig config;
    config.newPictureFailsFromCall = 5;
    Bench bench(config);
    REALpicture source = bench.MaskedPicture(Storage::GWorld32, 20, 10, 4, true);
    REALpicture result = bench.Call(source, 30, true);
    ASSERT_NE(result, nullptr);
    EXPECT_EQ(bench.host.MaskOf(result), nullptr);
    bench.ExpectBalancedAndRelease({result});
    EXPECT_EQ(bench.Call(source, 30, true), nullptr) << "no new picture for the turn itself";
    EXPECT_EQ(bench.host.LedgerProblems(), std::vector<std::string>{});
    bench.host.Release(source);
}

}  // namespace
