// Every picture method through the shipped library's method table, on every host
// kind and storage, against the slow models: mirrors and quarter turns as
// coordinate maps, rotations as the shear model (whole and cut), copies as the
// source itself. The receiver and its mask are left alone, results carry no mask
// of their own but the turned one of "RotateImageAndMaskQLM", and nothing stays
// held.
#include <gtest/gtest.h>

#include <string>
#include <tuple>

#include "tests/harness/plugin_bench.h"

using simhost::HostKind;
using simhost::MethodForm;
using simhost::PictureMethod;
using simhost::Storage;
using test_support::HostCase;
using test_support::Image;
using test_support::ReadImage;
namespace methods = simhost::methods;

namespace {

class PictureMethodTest : public ::testing::TestWithParam<std::tuple<HostCase, const PictureMethod*>>,
                          protected test_support::PluginBench {
protected:
    PictureMethodTest() : PluginBench({.kind = Host().kind, .newPictureFill = 0x80402010}) {}
    static const HostCase& Host() { return std::get<0>(GetParam()); }
    static const PictureMethod& Method() { return *std::get<1>(GetParam()); }
    // A 16-bit world, or a picture the host only describes, is read through a
    // copy but cannot be written in place.
    static bool Succeeds() {
        return Method().form != MethodForm::InPlace ||
               (Host().storage != Storage::GWorld16 && Host().storage != Storage::VectorOnly);
    }
};

TEST_P(PictureMethodTest, GivesTheModelsPictureAndHoldsNothing) {
    const bool turnsTheMask = &Method() == &methods::kRotateImageAndMask;
    // A quarter turn cut to the receiver's size reaches past the turn on two sides,
    // by an odd number of pixels across, whose half is taken toward zero.
    for (auto [width, height, angle, cut] : {std::tuple{1, 1, 30.0, false}, {1, 7, 30.0, false}, {9, 1, 30.0, true},
                                             {23, 16, 90.0, true}, {5, 3, 0.0, true}}) {
        SCOPED_TRACE(::testing::Message() << width << " x " << height);
        const test_support::Arguments arguments{.angle = angle, .cut = cut};
        REALpicture receiver = RandomPicture(Host().storage, width, height, uint32_t(width * 7919 + height));
        REALpicture mask = RandomPicture(Host().storage, width, height, 5);
        host.SetMask(receiver, mask);
        host.Release(mask);
        const Image before = ReadImage(host, receiver);
        const Image maskBefore = ReadImage(host, mask);
        REALpicture result = Apply(Method(), receiver, arguments);
        ASSERT_EQ(result != nullptr, Succeeds());
        if (result != nullptr) {
            EXPECT_EQ(ReadImage(host, result), Expected(Method(), before, arguments));
        }
        if (turnsTheMask) {
            // Into a mask the host makes, which starts opaque black where the cut reaches past the turn.
            const Image turnedMask = *Expected(Method(), maskBefore, {.angle = angle});
            ASSERT_NE(host.MaskOf(result), nullptr);
            EXPECT_EQ(ReadImage(host, host.MaskOf(result)),
                      arguments.cut ? test_support::CutFromCentre(turnedMask, width, height, {0, 0, 0, 255}) : turnedMask);
        } else if (result != receiver) {
            EXPECT_TRUE(result == nullptr || host.MaskOf(result) == nullptr);
        }
        if (result != receiver) {
            EXPECT_EQ(ReadImage(host, receiver), before);
        }
        EXPECT_EQ(host.MaskOf(receiver), mask);
        EXPECT_EQ(ReadImage(host, mask), maskBefore);
        if (&Method() == &methods::kBitmap) {
            // Handed back as it is when already a 32-bit pixel map, with a reference for the program.
            EXPECT_EQ(result == receiver, Host().storage != Storage::GWorld24 && Host().storage != Storage::GWorld16);
            if (result == receiver) host.Release(result);
        }
        ExpectBalancedAndRelease({result}, receiver);
        host.Release(receiver);
    }
}

std::vector<const PictureMethod*> PictureResults() {
    std::vector<const PictureMethod*> pictures;
    for (const PictureMethod* method : simhost::kPictureMethods)
        if (method->form != MethodForm::MemoryEstimate) pictures.push_back(method);
    return pictures;
}

INSTANTIATE_TEST_SUITE_P(HostsAndMethods, PictureMethodTest,
                         ::testing::Combine(::testing::ValuesIn(test_support::kHostCases),
                                            ::testing::ValuesIn(PictureResults())),
                         [](const auto& info) {
                             const PictureMethod& method = *std::get<1>(info.param);
                             return std::string(std::get<0>(info.param).name) + "_" + method.name +
                                    (method.form == MethodForm::Size ? "ToSize" : "");
                         });

TEST(PictureMethodCalls, NilReceiversAndEmptySizesGiveNil) {
    test_support::PluginBench bench(HostKind::Desktop);
    for (const PictureMethod* method : PictureResults()) EXPECT_EQ(bench.Apply(*method, nullptr), nullptr);
    REALpicture source = bench.RandomPicture(Storage::GWorld32, 3, 2, 1);
    for (auto [width, height] : {std::pair{0, 5}, {5, 0}, {-1, 5}, {5, -7}})
        EXPECT_EQ(bench.Apply(methods::kCloneToSize, source, {.width = width, .height = height}), nullptr);
    bench.host.Release(source);
    bench.ExpectBalancedAndRelease({});
}

// The picture's turn makes three new pictures and the cut one the fourth; the
// mask's turn fails from the fifth on, and the picture comes back without it.
TEST(PictureMethodCalls, AFailedMaskTurnLeavesTheMaskOut) {
    test_support::PluginBench bench(simhost::HostConfig{.newPictureFailsFromCall = 5});
    REALpicture source = bench.RandomPicture(Storage::GWorld32, 20, 10, 4);
    bench.host.SetMask(source, bench.RandomPicture(Storage::GWorld32, 20, 10, 5));
    bench.host.Release(bench.host.MaskOf(source));
    const test_support::Arguments cut{.cut = true};
    REALpicture result = bench.Apply(methods::kRotateImageAndMask, source, cut);
    ASSERT_NE(result, nullptr);
    EXPECT_EQ(bench.host.MaskOf(result), nullptr);
    bench.ExpectBalancedAndRelease({result});
    EXPECT_EQ(bench.Apply(methods::kRotateImageAndMask, source, cut), nullptr) << "no new picture for the turn itself";
    bench.ExpectBalancedAndRelease({});
    bench.host.Release(source);
}

// The host makes no picture with a side over 32767, which in-place mirrors need not ask for.
TEST(PictureMethodCalls, NewPicturesHaveSidesUpTo32767AndInPlaceMirrorsNoLimit) {
    test_support::PluginBench bench(HostKind::Desktop);
    for (const PictureMethod* method : PictureResults()) {
        if (method->form != MethodForm::Picture && method->form != MethodForm::InPlace) continue;
        for (auto [width, height] : {std::pair{32767, 1}, {1, 32767}, {32768, 1}, {1, 32768}}) {
            SCOPED_TRACE(::testing::Message() << method->name << " " << width << " x " << height);
            REALpicture receiver = bench.RandomPicture(Storage::GWorld32, width, height, 3);
            const Image before = ReadImage(bench.host, receiver);
            REALpicture result = bench.Apply(*method, receiver);
            const bool fits = width <= 32767 && height <= 32767;
            if (method == &methods::kBitmap) {
                EXPECT_EQ(result, receiver);
            } else {
                ASSERT_EQ(result != nullptr, fits || method->form == MethodForm::InPlace);
            }
            if (result != nullptr) {
                EXPECT_EQ(ReadImage(bench.host, result), bench.Expected(*method, before));
            }
            if (result == receiver && method == &methods::kBitmap) bench.host.Release(result);
            bench.ExpectBalancedAndRelease({result}, receiver);
            bench.host.Release(receiver);
        }
    }
}

// The models' own orientation, on pixels written out by hand: the method tests
// hold the plug-in to them.
TEST(Models, ThreeByTwoTurnsAndMirrorEqualsHalfTurn) {
    const simhost::Rgba a{1, 2, 3, 255}, b{4, 5, 6, 255}, c{7, 8, 9, 255}, d{10, 11, 12, 255}, e{13, 14, 15, 255},
        f{16, 17, 18, 255};
    const Image picture{3, 2, {a, b, c, d, e, f}};
    const simhost::HostConfig desktop;
    EXPECT_EQ(test_support::ModelMethod(methods::kRotate90, picture, {}, desktop), (Image{2, 3, {c, f, b, e, a, d}}));
    EXPECT_EQ(test_support::ModelMethod(methods::kRotate270, picture, {}, desktop), (Image{2, 3, {d, a, e, b, f, c}}));
    for (const PictureMethod* halfTurn : {&methods::kRotate180, &methods::kMirror})
        EXPECT_EQ(test_support::ModelMethod(*halfTurn, picture, {}, desktop), (Image{3, 2, {f, e, d, c, b, a}}));
}

// Between pictures of the same format "VMirrorQLM" moves rows as raw bytes: the
// top bit of a host bitmap's alpha byte, which no pixel write can set, arrives.
TEST(PictureMethodCalls, VMirrorKeepsEveryBitOfHostBitmapRows) {
    test_support::PluginBench bench(HostKind::Console);
    REALpicture picture = bench.RandomPicture(Storage::HostBitmap, 5, 4, 8);
    for (int32_t y = 0; y < 4; ++y)
        for (int32_t x = y & 1; x < 5; x += 2) {
            std::vector<uint8_t> raw = bench.host.RawPixel(picture, x, y);
            raw[3] |= 0x80;
            bench.host.SetRawPixel(picture, x, y, raw);
        }
    REALpicture mirrored = bench.Apply(methods::kVMirror, picture);
    ASSERT_NE(mirrored, nullptr);
    for (int32_t y = 0; y < 4; ++y)
        for (int32_t x = 0; x < 5; ++x)
            EXPECT_EQ(bench.host.RawPixel(mirrored, x, 3 - y), bench.host.RawPixel(picture, x, y)) << x << "," << y;
    bench.ExpectBalancedAndRelease({mirrored});
    bench.host.Release(picture);
}

}  // namespace
