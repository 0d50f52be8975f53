// The pixels pixturn writes are exactly those the plug-in gives on the chosen
// host: each method is run by the command on a file and, in this process, on
// the same pixels through the registered table, and the two are compared. The
// file formats are checked against libpng's own reading and writing.
#include <png.h>

#include <algorithm>
#include <functional>

#include <gtest/gtest.h>

#include "tests/harness/plugin_bench.h"
#include "tests/tools/pixturn_runner.h"

namespace pixturn_test {
namespace {

using simhost::HostKind;
using simhost::Rgba;
using simhost::Storage;

struct HostCase {
    const char* name;
    HostKind kind;
    Storage storage;
};

const HostCase kHosts[] = {
    {"desktop", HostKind::Desktop, Storage::GWorld32},  {"desktop24", HostKind::Desktop, Storage::GWorld24},
    {"desktop16", HostKind::Desktop, Storage::GWorld16}, {"console", HostKind::Console, Storage::HostBitmap},
    {"web", HostKind::Web, Storage::HostBitmap},
};

// The plug-in loaded here as pixturn loads it, on the same kind of host.
struct Reference : test_support::PluginBench {
    explicit Reference(const HostCase& host, double version = 2019.0)
        : PluginBench(Config(host, version)), storage(host.storage) {}

    static simhost::HostConfig Config(const HostCase& host, double version) {
        simhost::HostConfig config = test_support::ConfigFor(host.kind);
        config.version = version;
        return config;
    }
    REALpicture Picture(const Image& image) {
        REALpicture picture = host.MakePicture(storage, image.width, image.height);
        test_support::WriteImage(host, picture, image);
        return picture;
    }
    Image Read(REALpicture picture) const { return test_support::ReadImage(host, picture); }

    Storage storage;
};

Image Grey(const Image& mask) {
    Image grey = mask;
    for (Rgba& p : grey.pixels) p = {p.r, p.r, p.r, 255};
    return grey;
}

struct MethodCase {
    const char* command;
    std::vector<std::string> options;
    // Calls the method on the receiver and gives the picture to compare: the
    // result, or for the in-place methods the receiver itself; nil when the
    // method failed (the in-place ones cannot write 16-bit worlds).
    std::function<REALpicture(const simhost::PluginLibrary&, REALpicture)> call;
};

REALpicture InPlace(const simhost::PluginLibrary& plugin, const simhost::PictureMethod& method, REALpicture receiver) {
    return plugin.Call<bool>(method, receiver) ? receiver : nullptr;
}

const MethodCase kMethods[] = {
    {"rotate", {"--angle", "30"}, [](auto& p, auto r) { return p.template Call<REALpicture>(simhost::methods::kRotate, r, 30.0, 0xFFFFFFFFu); }},
    {"rotate", {"--angle", "-12.5", "--background", "&c10203040"},
     [](auto& p, auto r) { return p.template Call<REALpicture>(simhost::methods::kRotate, r, -12.5, 0x40102030u); }},
    {"rotate", {"--angle", "200", "--background", "0x80FF0000"},
     [](auto& p, auto r) { return p.template Call<REALpicture>(simhost::methods::kRotate, r, 200.0, 0x80FF0000u); }},
    {"rotate-mask", {"--angle", "30", "--cut"},
     [](auto& p, auto r) { return p.template Call<REALpicture>(simhost::methods::kRotateImageAndMask, r, 30.0, (signed char)1); }},
    {"rotate90", {}, [](auto& p, auto r) { return p.template Call<REALpicture>(simhost::methods::kRotate90, r); }},
    {"rotate180", {}, [](auto& p, auto r) { return p.template Call<REALpicture>(simhost::methods::kRotate180, r); }},
    {"rotate270", {}, [](auto& p, auto r) { return p.template Call<REALpicture>(simhost::methods::kRotate270, r); }},
    {"mirror", {}, [](auto& p, auto r) { return p.template Call<REALpicture>(simhost::methods::kMirror, r); }},
    {"hmirror", {}, [](auto& p, auto r) { return p.template Call<REALpicture>(simhost::methods::kHMirror, r); }},
    {"vmirror", {}, [](auto& p, auto r) { return p.template Call<REALpicture>(simhost::methods::kVMirror, r); }},
    {"mirror-in-place", {}, [](auto& p, auto r) { return InPlace(p, simhost::methods::kMirrorInPlace, r); }},
    {"hmirror-in-place", {}, [](auto& p, auto r) { return InPlace(p, simhost::methods::kHMirrorInPlace, r); }},
    {"vmirror-in-place", {}, [](auto& p, auto r) { return InPlace(p, simhost::methods::kVMirrorInPlace, r); }},
    {"clone", {}, [](auto& p, auto r) { return p.template Call<REALpicture>(simhost::methods::kClone, r); }},
    {"clone", {"--size", "13x4"},
     [](auto& p, auto r) { return p.template Call<REALpicture>(simhost::methods::kCloneToSize, r, int32_t{13}, int32_t{4}); }},
    {"bitmap", {}, [](auto& p, auto r) { return p.template Call<REALpicture>(simhost::methods::kBitmap, r); }},
};

class MethodPixels : public testing::TestWithParam<std::tuple<HostCase, MethodCase>> {};

TEST_P(MethodPixels, FileHoldsThePluginsResult) {
    const auto& [host, method] = GetParam();
    const ScratchDirectory dir;
    const Image input = RandomPixels(9, 7, 11);
    WriteRgbaPng(dir / "in.png", input);
    std::vector<std::string> arguments{method.command, dir / "in.png", "-o", dir / "out.png", "--host", host.name};
    arguments.insert(arguments.end(), method.options.begin(), method.options.end());
    const RunResult run = RunPixturn(arguments);

    Reference reference(host);
    const REALpicture receiver = reference.Picture(input);
    const REALpicture result = method.call(reference.plugin, receiver);
    if (result == nullptr) {
        EXPECT_EQ(run.status, 1);
        EXPECT_NE(run.err.find(" returned "), std::string::npos) << run.err;
        EXPECT_FALSE(std::filesystem::exists(dir / "out.png"));
        return;
    }
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.err, "");
    const ReadBack written = ReadPng(dir / "out.png");
    EXPECT_FALSE(written.grey);
    EXPECT_EQ(written.image, reference.Read(result));
}

INSTANTIATE_TEST_SUITE_P(PixturnHosts, MethodPixels, testing::Combine(testing::ValuesIn(kHosts), testing::ValuesIn(kMethods)),
                         [](const auto& info) {
                             std::string name = std::string(std::get<0>(info.param).name) + "_" +
                                                std::to_string(info.index % std::size(kMethods)) + "_" +
                                                std::get<1>(info.param).command;
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

class MaskPixels : public testing::TestWithParam<HostCase> {};

TEST_P(MaskPixels, PictureAndMaskTurnTogether) {
    const ScratchDirectory dir;
    const Image input = RandomPixels(8, 5, 3);
    const Image mask = Grey(RandomPixels(8, 5, 4));
    WriteRgbaPng(dir / "in.png", input);
    WriteRgbaPng(dir / "mask.png", mask);
    const RunResult run = RunPixturn({"rotate-mask", dir / "in.png", "--mask", dir / "mask.png", "--angle", "-40",
                                      "-o", dir / "out.png", "--mask-out", dir / "out-mask.png", "--host",
                                      GetParam().name});
    ASSERT_EQ(run.status, 0) << run.err;

    Reference reference(GetParam());
    const REALpicture receiver = reference.Picture(input);
    const REALpicture maskPicture = reference.Picture(mask);
    reference.host.SetMask(receiver, maskPicture);
    const REALpicture result = reference.plugin.Call<REALpicture>(simhost::methods::kRotateImageAndMask, receiver, -40.0, (signed char)0);
    ASSERT_NE(result, nullptr);
    ASSERT_NE(reference.host.MaskOf(result), nullptr);
    EXPECT_EQ(ReadPng(dir / "out.png").image, reference.Read(result));
    const ReadBack writtenMask = ReadPng(dir / "out-mask.png");
    EXPECT_TRUE(writtenMask.grey);
    EXPECT_EQ(writtenMask.image, Grey(reference.Read(reference.host.MaskOf(result))));
}

INSTANTIATE_TEST_SUITE_P(PixturnHosts, MaskPixels, testing::ValuesIn(kHosts),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(PixturnMemory, PrintsThePluginsNumberForAFileAndForASize) {
    const ScratchDirectory dir;
    WriteRgbaPng(dir / "in.png", RandomPixels(100, 50, 5));
    Reference reference(kHosts[0]);
    const std::vector<std::vector<std::string>> sources{{dir / "in.png"}, {"--size", "100x50"}};
    for (const std::vector<std::string>& source : sources) {
        std::vector<std::string> arguments{"memory", "--angle", "30"};
        arguments.insert(arguments.end(), source.begin(), source.end());
        const RunResult run = RunPixturn(arguments);
        ASSERT_EQ(run.status, 0) << run.err;
        const REALpicture picture = reference.host.MakePicture(Storage::GWorld32, 100, 50);
        const int64_t expected = reference.plugin.Call<int64_t>(simhost::methods::kRotateMemory, picture, 30.0);
        EXPECT_EQ(run.out.substr(0, run.out.find(' ')), std::to_string(expected)) << run.out;
    }
}

// Without --background, RotateQLM gets the default its declaration gives on
// that host version: six hex digits (alpha 0) before 2011.04.
TEST(PixturnRotate, DefaultBackgroundFollowsTheRegisteredDeclaration) {
    const ScratchDirectory dir;
    const Image input = RandomPixels(9, 7, 12);
    WriteRgbaPng(dir / "in.png", input);
    for (const auto& [version, background] : {std::pair{"2011.03", 0x00FFFFFFu}, std::pair{"2011.04", 0xFFFFFFFFu}}) {
        const RunResult run =
            RunPixturn({"rotate", dir / "in.png", "--angle", "20", "--host-version", version, "-o", dir / "out.png"});
        ASSERT_EQ(run.status, 0) << run.err;
        EXPECT_NE(run.out.find(background == 0xFFFFFFFFu ? "&cFFFFFFFF" : "&cFFFFFF00"), std::string::npos) << run.out;
        Reference reference(kHosts[0], std::stod(version));
        const REALpicture result =
            reference.plugin.Call<REALpicture>(simhost::methods::kRotate, reference.Picture(input), 20.0, background);
        EXPECT_EQ(ReadPng(dir / "out.png").image, reference.Read(result)) << version;
    }
}

// Every kind of PNG the command reads, against the RGBA it must give.
struct PngCase {
    const char* name;
    PngContents contents;
    std::vector<Rgba> expected;
};

std::vector<PngCase> PngCases() {
    const Image random = RandomPixels(9, 7, 9);
    PngContents interlaced(9, 7, PNG_COLOR_TYPE_RGBA, 8);
    interlaced.interlaced = true;
    for (const Rgba& p : random.pixels) interlaced.rows.insert(interlaced.rows.end(), {p.r, p.g, p.b, p.a});
    return {
        {"Grey8", {2, 2, PNG_COLOR_TYPE_GRAY, 8, {0, 77, 255, 128}},
         {{0, 0, 0, 255}, {77, 77, 77, 255}, {255, 255, 255, 255}, {128, 128, 128, 255}}},
        {"Grey1", {4, 1, PNG_COLOR_TYPE_GRAY, 1, {0xA0}},
         {{255, 255, 255, 255}, {0, 0, 0, 255}, {255, 255, 255, 255}, {0, 0, 0, 255}}},
        {"Grey16", {2, 1, PNG_COLOR_TYPE_GRAY, 16, {0x12, 0x34, 0x80, 0x80}}, {{18, 18, 18, 255}, {128, 128, 128, 255}}},
        {"GreyAlpha8", {2, 1, PNG_COLOR_TYPE_GRAY_ALPHA, 8, {10, 0, 200, 99}}, {{10, 10, 10, 0}, {200, 200, 200, 99}}},
        {"Rgb8", {2, 1, PNG_COLOR_TYPE_RGB, 8, {1, 2, 3, 250, 251, 252}}, {{1, 2, 3, 255}, {250, 251, 252, 255}}},
        {"Rgba16",
         {1, 1, PNG_COLOR_TYPE_RGBA, 16, {0xFF, 0xFF, 0x7F, 0x80, 0x00, 0x00, 0x12, 0x34}},
         {{255, 127, 0, 18}}},
        {"PaletteWithAlpha",
         {3, 1, PNG_COLOR_TYPE_PALETTE, 8, {2, 0, 1}, {10, 20, 30, 40, 50, 60, 70, 80, 90}, {0, 128}},
         {{70, 80, 90, 255}, {10, 20, 30, 0}, {40, 50, 60, 128}}},
        {"Palette4", {2, 1, PNG_COLOR_TYPE_PALETTE, 4, {0x10}, {1, 2, 3, 4, 5, 6}, {}}, {{4, 5, 6, 255}, {1, 2, 3, 255}}},
        {"InterlacedRgba", interlaced, random.pixels},
    };
}

class PngKinds : public testing::TestWithParam<PngCase> {};

TEST_P(PngKinds, ReadAsRgbaWithAlphaAsTheFourthChannel) {
    const ScratchDirectory dir;
    WritePng(dir / "in.png", GetParam().contents);
    const RunResult run = RunPixturn({"clone", dir / "in.png", "-o", dir / "out.png"});
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(ReadPng(dir / "out.png").image.pixels, GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(PixturnPng, PngKinds, testing::ValuesIn(PngCases()), [](const auto& info) { return info.param.name; });

TEST(PixturnJpeg, WrittenAsRgbAndReadBackOpaque) {
    const ScratchDirectory dir;
    const Image flat{16, 16, std::vector<Rgba>(256, Rgba{200, 100, 50, 60})};
    WriteRgbaPng(dir / "in.png", flat);
    ASSERT_EQ(RunPixturn({"clone", dir / "in.png", "-o", dir / "out.JPG"}).status, 0);
    EXPECT_EQ(ReadText(dir / "out.JPG").substr(0, 3), "\xFF\xD8\xFF");
    ASSERT_EQ(RunPixturn({"clone", dir / "out.JPG", "-o", dir / "back.png"}).status, 0);
    for (const Rgba& p : ReadPng(dir / "back.png").image.pixels) {
        EXPECT_NEAR(p.r, 200, 2);
        EXPECT_NEAR(p.g, 100, 2);
        EXPECT_NEAR(p.b, 50, 2);
        EXPECT_EQ(p.a, 255);
    }
}

}  // namespace
}  // namespace pixturn_test
