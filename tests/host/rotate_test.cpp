// "RotateQLM" through the shipped library: every pixel against the slow model on
// desktop 32- and 24-bit receivers and console host bitmaps, sizes and limits,
// bad angles, and faults from which nothing stays held.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <tuple>

#include "simhost/simulated_host.h"
#include "tests/harness/plugin_bench.h"
#include "tests/support/pictures.h"
#include "tests/support/rotation_model.h"

using simhost::HostKind;
using simhost::Storage;
using test_support::Image;

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

struct Bench : test_support::PluginBench {
    explicit Bench(HostKind kind, void (*configure)(simhost::HostConfig&) = [](auto&) {})
        : PluginBench([&] {
              simhost::HostConfig config = test_support::ConfigFor(kind);
              configure(config);
              return config;
          }()) {}
    REALpicture Rotate(REALpicture picture, double angle, uint32_t background) {
        return plugin.Call<REALpicture>(simhost::methods::kRotate, picture, angle, background);
    }
};

struct HostCase {
    HostKind kind;
    Storage receiver, newPictures;
    const char* name;
};

const HostCase kHostCases[] = {
    {HostKind::Desktop, Storage::GWorld32, Storage::GWorld32, "Desktop32"},
    {HostKind::Desktop, Storage::GWorld24, Storage::GWorld32, "Desktop24"},
    {HostKind::Console, Storage::HostBitmap, Storage::HostBitmap, "Console"},
};

const double kAngles[] = {0,  90, 180,   270,    360, -360, 720,   45,      135,   46,  315,
                          330, 30, 60, 1e-10, -1e-20, -30, -135, 400, 225.5, 1000.25, 89.999};

class RotateModelTest : public ::testing::TestWithParam<std::tuple<HostCase, double>> {};

TEST_P(RotateModelTest, EveryPixelIsTheModels) {
    const auto [hostCase, angle] = GetParam();
    Bench bench(hostCase.kind);
    std::mt19937 random(static_cast<uint32_t>(std::fabs(angle) * 1000) + 1);
    for (const auto& [width, height] : {std::pair{23, 17}, {1, 9}, {40, 1}}) {
        REALpicture source = bench.RandomPicture(hostCase.receiver, width, height, random());
        const uint32_t background = random();
        const Image before = test_support::ReadImage(bench.host, source);
        REALpicture result = bench.Rotate(source, angle, background);
        ASSERT_NE(result, nullptr);
        EXPECT_EQ(bench.host.StorageOf(result), hostCase.newPictures);
        EXPECT_EQ(bench.host.MaskOf(result), nullptr);
        EXPECT_EQ(test_support::ReadImage(bench.host, result),
                  test_support::ModelRotate(before, angle, background, hostCase.newPictures))
            << width << "x" << height;
        EXPECT_EQ(test_support::ReadImage(bench.host, source), before) << "the receiver is left alone";
        bench.ExpectBalancedAndRelease({result});
        bench.host.Release(source);
    }
}

INSTANTIATE_TEST_SUITE_P(HostsAndAngles, RotateModelTest,
                         ::testing::Combine(::testing::ValuesIn(kHostCases), ::testing::ValuesIn(kAngles)),
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
    Bench bench(HostKind::Console);
    REALpicture source = bench.RandomPicture(Storage::HostBitmap, size.width, size.height, 5);
    REALpicture result = bench.Rotate(source, size.angle, 0);
    EXPECT_EQ(result ? bench.host.Width(result) : 0, size.expectedWidth);
    EXPECT_EQ(result ? bench.host.Height(result) : 0, size.expectedHeight);
    bench.ExpectBalancedAndRelease({result});
    bench.host.Release(source);
}

INSTANTIATE_TEST_SUITE_P(
    Sizes, RotateSizeTest,
    ::testing::Values(SizeCase{100, 50, 30, 112, 94}, SizeCase{100, 50, 60, 94, 112}, SizeCase{100, 50, 45, 107, 107},
                      SizeCase{100, 50, 330, 112, 94}, SizeCase{100, 50, 1e-10, 101, 51},
                      SizeCase{100, 50, -1e-20, 101, 51}, SizeCase{32766, 1, 1e-10, 32767, 2},
                      SizeCase{32767, 1, 1e-10, 0, 0}, SizeCase{1, 32766, 1e-10, 2, 32767},
                      SizeCase{1, 32767, 1e-10, 0, 0}, SizeCase{7, 5, std::nan(""), 0, 0},
                      SizeCase{7, 5, kInfinity, 0, 0}, SizeCase{7, 5, -kInfinity, 0, 0}));

// A hair off zero: every pixel stays in place, and the line each pass adds for
// its trailing pixels is pure background.
TEST(RotateTest, ATinyAngleAddsABackgroundRowAndColumn) {
    Bench bench(HostKind::Desktop);
    REALpicture source = bench.RandomPicture(Storage::GWorld32, 100, 50, 8);
    const Image before = test_support::ReadImage(bench.host, source);
    REALpicture result = bench.Rotate(source, 1e-10, 0x80102030);
    ASSERT_NE(result, nullptr);
    const Image after = test_support::ReadImage(bench.host, result);
    const simhost::Rgba background{0x10, 0x20, 0x30, 0x80};
    for (int32_t y = 0; y <= 50; ++y)
        for (int32_t x = 0; x <= 100; ++x) ASSERT_EQ(after.at(x, y), x < 100 && y < 50 ? before.at(x, y) : background);
    bench.ExpectBalancedAndRelease({result});
    EXPECT_EQ(bench.Rotate(nullptr, 30, 0), nullptr);
    bench.host.Release(source);
}

struct FaultCase {
    const char* name;
    HostKind kind;
    void (*configure)(simhost::HostConfig&);
    double angle;  // 30 makes three new pictures, 60 four (the quarter turn first)
    bool succeeds;
};

template <int Call>
void NewPictureFailsFrom(simhost::HostConfig& config) {
    config.newPictureFailsFromCall = Call;
}

const FaultCase kFaultCases[] = {
    {"FirstNewPictureFails", HostKind::Desktop, NewPictureFailsFrom<1>, 30, false},
    {"SecondNewPictureFails", HostKind::Console, NewPictureFailsFrom<2>, 30, false},
    {"ThirdNewPictureFails", HostKind::Desktop, NewPictureFailsFrom<3>, 30, false},
    {"FourthNewPictureFails", HostKind::Console, NewPictureFailsFrom<4>, 60, false},
    {"FourthNewPictureFailsAfterThree", HostKind::Console, NewPictureFailsFrom<4>, 30, true},
    {"NoNewPicture", HostKind::Desktop, [](auto& c) { c.missingEntryPoints = {"newPicture"}; }, 30, false},
    {"NoLockObject", HostKind::Desktop, [](auto& c) { c.missingEntryPoints = {"REALLockObject"}; }, 60, false},
    {"NoClearCache", HostKind::Desktop, [](auto& c) { c.missingEntryPoints = {"REALPictureClearCache"}; }, 60, true},
    {"DescriptionLocksFail", HostKind::Console, [](auto& c) { c.failingDescriptionTypes = {10}; }, 30, false},
    {"NoFramework", HostKind::Desktop, [](auto& c) { c.system.applicationServicesInstalled = false; }, 30, false},
    {"NoSetGWorld", HostKind::Desktop, [](auto& c) { c.system.missingFunctions = {"SetGWorld"}; }, 60, true},
    {"NoHostKindAnswer", HostKind::Undecided, [](auto&) {}, 60, true},
    {"NewPicturesOf24Bits", HostKind::Desktop, [](auto& c) { c.newPictureStorage = Storage::GWorld24; }, 60, true},
    {"NewPicturesOf16Bits", HostKind::Desktop, [](auto& c) { c.newPictureStorage = Storage::GWorld16; }, 30, false},
};

class RotateFaultTest : public ::testing::TestWithParam<FaultCase> {};

TEST_P(RotateFaultTest, NilOrTheModelsPictureAndNothingHeld) {
    const FaultCase fault = GetParam();
    Bench bench(fault.kind, fault.configure);
    REALpicture source = bench.RandomPicture(
        fault.kind == HostKind::Desktop ? Storage::GWorld32 : Storage::HostBitmap, 7, 5, 4);
    REALpicture result = bench.Rotate(source, fault.angle, 0xFFFFFFFF);
    ASSERT_EQ(result != nullptr, fault.succeeds);
    if (result != nullptr) {
        EXPECT_EQ(test_support::ReadImage(bench.host, result),
                  test_support::ModelRotate(test_support::ReadImage(bench.host, source), fault.angle, 0xFFFFFFFF,
                                            bench.host.StorageOf(result)));
    }
    bench.ExpectBalancedAndRelease({result});
    bench.host.Release(source);
}

INSTANTIATE_TEST_SUITE_P(Faults, RotateFaultTest, ::testing::ValuesIn(kFaultCases),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace
