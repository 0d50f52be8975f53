// The pixels pixturn writes are exactly those the methods must give: each
// command is run on a file and its output compared with the tests' slow models
// (the shear rotation, the coordinate maps of the mirrors and turns), every
// method on one host and the rotation on each kind of host. The file formats
// are checked against libpng's own reading and writing.
#include <png.h>

#include <algorithm>

#include <gtest/gtest.h>

#include "tests/support/method_models.h"
#include "tests/support/rotation_model.h"
#include "tests/tools/pixturn_runner.h"

namespace pixturn_test {
namespace {

using simhost::Rgba;
using simhost::Storage;
using test_support::ModelRotate;

constexpr uint32_t kAllOnes = 0xFFFFFFFF;
namespace methods = simhost::methods;

// A command on a file, and what the method it calls gives for the file's pixels
// as the host stores them in the receiver.
struct MethodCase {
    const char* name;
    std::vector<std::string> arguments;  // after the input file
    const simhost::PictureMethod* method;
    test_support::Arguments modelArguments = {};
    simhost::HostKind host = simhost::HostKind::Desktop;
    Storage receiver = Storage::GWorld32;
};

Image Rotated(const Image& input, double angle, uint32_t background) {
    return *ModelRotate(input, angle, background, Storage::GWorld32);
}

// The rotation as each kind of host stores the file's pixels and the pictures it makes for the plug-in.
MethodCase RotateOn(const char* name, const char* host, simhost::HostKind kind, Storage receiver) {
    return {name, {"rotate", "--angle", "33", "--background", "#40506070", "--host", host}, &methods::kRotate,
            {.angle = 33, .background = 0x70405060}, kind, receiver};
}

// Every method and every form of colour, on a desktop host whose 32-bit worlds
// keep every pixel as it is; then the rotation on each kind of host.
const MethodCase kMethods[] = {
    {"RotateDefaultBackground", {"rotate", "--angle", "30"}, &methods::kRotate, {.angle = 30, .background = kAllOnes}},
    // The default the registered declaration gives: six hex digits (alpha 0) before 2011.04.
    {"RotateDefaultBackgroundBefore2011_04", {"rotate", "--angle", "20", "--host-version", "2011.03"},
     &methods::kRotate, {.angle = 20, .background = 0x00FFFFFF}},
    {"RotateXojoLiteral", {"rotate", "--angle", "-12.5", "--background", "&c10203040"}, &methods::kRotate,
     {.angle = -12.5, .background = 0x40102030}},
    {"RotateRawValue", {"rotate", "--angle", "200", "--background", "0x80FF0000"}, &methods::kRotate,
     {.angle = 200, .background = 0x80FF0000}},
    {"RotateCssWithAlpha", {"rotate", "--angle", "10", "--background", "#10203040"}, &methods::kRotate,
     {.angle = 10, .background = 0x40102030}},
    {"RotateCssShort", {"rotate", "--angle", "10", "--background", "#aBc"}, &methods::kRotate,
     {.angle = 10, .background = 0xFFAABBCC}},
    {"RotateNamed", {"rotate", "--angle", "10", "--background", "Navy"}, &methods::kRotate,
     {.angle = 10, .background = 0xFF000080}},
    {"RotateMaskCut", {"rotate-mask", "--angle", "30", "--cut"}, &methods::kRotateImageAndMask,
     {.angle = 30, .cut = true}},
    {"Rotate90", {"rotate90"}, &methods::kRotate90},
    {"Rotate180", {"rotate180"}, &methods::kRotate180},
    {"Rotate270", {"rotate270"}, &methods::kRotate270},
    {"Mirror", {"mirror"}, &methods::kMirror},
    {"HMirror", {"hmirror"}, &methods::kHMirror},
    {"VMirror", {"vmirror"}, &methods::kVMirror},
    {"MirrorInPlace", {"mirror-in-place"}, &methods::kMirrorInPlace},
    {"HMirrorInPlace", {"hmirror-in-place"}, &methods::kHMirrorInPlace},
    {"VMirrorInPlace", {"vmirror-in-place"}, &methods::kVMirrorInPlace},
    {"Clone", {"clone"}, &methods::kClone},
    {"CloneToSize", {"clone", "--size", "13x4"}, &methods::kCloneToSize, {.width = 13, .height = 4}},
    {"Bitmap", {"bitmap"}, &methods::kBitmap},
    RotateOn("RotateOnDesktop", "desktop", simhost::HostKind::Desktop, Storage::GWorld32),
    RotateOn("RotateOnDesktop24", "desktop24", simhost::HostKind::Desktop, Storage::GWorld24),
    RotateOn("RotateOnDesktop16", "desktop16", simhost::HostKind::Desktop, Storage::GWorld16),
    RotateOn("RotateOnConsole", "console", simhost::HostKind::Console, Storage::HostBitmap),
    RotateOn("RotateOnWeb", "web", simhost::HostKind::Web, Storage::HostBitmap),
};

class MethodPixels : public testing::TestWithParam<MethodCase> {};

TEST_P(MethodPixels, FileHoldsWhatTheMethodGives) {
    const ScratchDirectory dir;
    const Image input = RandomPixels(9, 7, 11);
    WriteRgbaPng(dir / "in.png", input);
    std::vector<std::string> arguments = GetParam().arguments;
    arguments.insert(arguments.begin() + 1, dir / "in.png");
    arguments.insert(arguments.end(), {"-o", dir / "out.png"});
    const RunResult run = RunPixturn(arguments);
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.err, "");
    const MethodCase& c = GetParam();
    EXPECT_EQ(ReadPng(dir / "out.png").image, test_support::ModelMethod(*c.method, test_support::Stored(input, c.receiver),
                                                                       c.modelArguments, {.kind = c.host}));
}

INSTANTIATE_TEST_SUITE_P(Pixturn, MethodPixels, testing::ValuesIn(kMethods), [](const auto& info) { return info.param.name; });

Image Grey(const Image& image) {
    Image grey = image;
    for (Rgba& p : grey.pixels) p = {p.r, p.r, p.r, 255};
    return grey;
}

TEST(PixturnRotateMask, PictureAndMaskTurnTogether) {
    const ScratchDirectory dir;
    const Image input = RandomPixels(8, 5, 3);
    const Image mask = Grey(RandomPixels(8, 5, 4));
    WriteRgbaPng(dir / "in.png", input);
    WriteRgbaPng(dir / "mask.png", mask);
    const RunResult run = RunPixturn({"rotate-mask", dir / "in.png", "--mask", dir / "mask.png", "--angle", "-40", "-o",
                                      dir / "out.png", "--mask-out", dir / "out-mask.png"});
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(ReadPng(dir / "out.png").image, Rotated(input, -40, kAllOnes));
    const ReadBack writtenMask = ReadPng(dir / "out-mask.png");
    EXPECT_EQ(writtenMask.format, PNG_FORMAT_GRAY);
    EXPECT_EQ(writtenMask.image, Grey(Rotated(mask, -40, kAllOnes)));
}

// Worked numbers of the estimate: W1 = 113, G = 100, X = 144, Y = 147 for a
// 100 x 50 picture at 30 degrees. The largest picture is answered without its
// pixels: within an address space far smaller than its 4 GiB.
TEST(PixturnMemory, EstimateForAFileAndForASize) {
    const ScratchDirectory dir;
    WriteRgbaPng(dir / "in.png", RandomPixels(100, 50, 5));
    for (const std::string& source : {dir / "in.png", std::string("--size=100x50")}) {
        const RunResult run = RunPixturn({"memory", source, "--angle", "30"});
        ASSERT_EQ(run.status, 0) << run.err;
        EXPECT_EQ(run.out.substr(0, run.out.find(" (")), "153048 bytes") << run.out;
    }
    const RunResult largest = RunPixturn({"memory", "--size", "32767x32767", "--angle", "0"}, {.before = MemoryLimit(1000)});
    ASSERT_EQ(largest.status, 0) << largest.err;
    EXPECT_EQ(largest.out.substr(0, largest.out.find(" (")), std::to_string(int64_t{32767} * 32767 * 4) + " bytes");
}

// A PNG of each of the reader's conversions (bits widened or narrowed, grey made
// colour, palettes looked up, alpha added, interlacing), against the RGBA it must give.
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
        {"Grey1", {4, 1, PNG_COLOR_TYPE_GRAY, 1, {0xA0}},
         {{255, 255, 255, 255}, {0, 0, 0, 255}, {255, 255, 255, 255}, {0, 0, 0, 255}}},
        {"GreyAlpha8", {2, 1, PNG_COLOR_TYPE_GRAY_ALPHA, 8, {10, 0, 200, 99}}, {{10, 10, 10, 0}, {200, 200, 200, 99}}},
        {"Rgba16",
         {1, 1, PNG_COLOR_TYPE_RGBA, 16, {0xFF, 0xFF, 0x7F, 0x80, 0x00, 0x00, 0x12, 0xFF}},
         {{255, 127, 0, 19}}},  // 0x12FF rounds up: its high byte alone would give 18
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

// Pictures go out in the smallest colour type that keeps them, at any level.
TEST(PixturnPng, WrittenInTheSmallestColourTypeThatKeepsEveryPixel) {
    const ScratchDirectory dir;
    Image opaque = RandomPixels(7, 5, 31);
    for (Rgba& p : opaque.pixels) p.a = 255;
    Image grey = Grey(opaque);
    Image greyAlpha = Grey(opaque);
    greyAlpha.pixels[3].a = 7;
    const std::pair<Image, uint32_t> cases[] = {{RandomPixels(7, 5, 32), PNG_FORMAT_RGBA},
                                                {opaque, PNG_FORMAT_RGB},
                                                {grey, PNG_FORMAT_GRAY},
                                                {greyAlpha, PNG_FORMAT_GA}};
    for (const auto& [image, format] : cases) {
        WriteRgbaPng(dir / "in.png", image);
        for (const char* level : {"0", "9"}) {
            ASSERT_EQ(RunPixturn({"clone", dir / "in.png", "-o", dir / "out.png", "--png-level", level}).status, 0);
            const ReadBack written = ReadPng(dir / "out.png");
            EXPECT_EQ(written.format, format);
            EXPECT_EQ(written.image, image) << format;
        }
    }
}

// JPEG keeps no alpha: pixels are laid over white, or the --flatten colour.
TEST(PixturnJpeg, FlattenedOverAColourAndReadBackOpaque) {
    const ScratchDirectory dir;
    const Image flat{16, 16, std::vector<Rgba>(256, Rgba{200, 100, 50, 51})};
    WriteRgbaPng(dir / "in.png", flat);
    const std::pair<const char*, Rgba> cases[] = {{"white", {244, 224, 214, 255}}, {"#f00", {244, 20, 10, 255}}};
    for (const auto& [under, expected] : cases) {
        ASSERT_EQ(RunPixturn({"clone", dir / "in.png", "-o", dir / "out.JPG", "--flatten", under, "--quality", "100"}).status, 0);
        EXPECT_EQ(ReadText(dir / "out.JPG").substr(0, 3), "\xFF\xD8\xFF");
        ASSERT_EQ(RunPixturn({"clone", dir / "out.JPG", "-o", dir / "back.png"}).status, 0);
        for (const Rgba& p : ReadPng(dir / "back.png").image.pixels) {
            EXPECT_NEAR(p.r, expected.r, 2) << under;
            EXPECT_NEAR(p.g, expected.g, 2) << under;
            EXPECT_NEAR(p.b, expected.b, 2) << under;
            EXPECT_EQ(p.a, 255);
        }
    }
    ASSERT_EQ(RunPixturn({"clone", dir / "in.png", "-o", dir / "low.jpg", "--quality", "10"}).status, 0);
    EXPECT_LT(ReadText(dir / "low.jpg").size(), ReadText(dir / "out.JPG").size());
}

// A camera held upright writes its sensor's rows as they came and Orientation 6
// ("turn a quarter clockwise to view"): a wide file whose left half is red and
// right half blue shows as a tall picture, red on top.
TEST(PixturnJpeg, ExifOrientationIsAppliedUnlessTurnedOff) {
    const ScratchDirectory dir;
    Image sensor{16, 8, std::vector<Rgba>(128)};
    for (int32_t y = 0; y < 8; ++y)
        for (int32_t x = 0; x < 16; ++x) sensor.at(x, y) = x < 8 ? Rgba{255, 0, 0, 255} : Rgba{0, 0, 255, 255};
    WriteRgbaPng(dir / "in.png", sensor);
    ASSERT_EQ(RunPixturn({"clone", dir / "in.png", "-o", dir / "plain.jpg", "--quality", "100"}).status, 0);
    const std::string exif("\xFF\xE1\x00\x22" "Exif\0\0" "II*\0\x08\0\0\0" "\x01\0" "\x12\x01\x03\0\x01\0\0\0\x06\0\0\0"
                           "\0\0\0\0", 36);
    const std::string plain = ReadText(dir / "plain.jpg");
    WriteText(dir / "camera.jpg", plain.substr(0, 2) + exif + plain.substr(2));

    ASSERT_EQ(RunPixturn({"clone", dir / "camera.jpg", "-o", dir / "shown.png"}).status, 0);
    const Image shown = ReadPng(dir / "shown.png").image;
    ASSERT_EQ(std::pair(shown.width, shown.height), std::pair(8, 16));
    EXPECT_GT(shown.at(4, 3).r, 200);
    EXPECT_GT(shown.at(4, 12).b, 200);
    ASSERT_EQ(RunPixturn({"clone", dir / "camera.jpg", "-o", dir / "stored.png", "--no-auto-orient"}).status, 0);
    const Image stored = ReadPng(dir / "stored.png").image;
    EXPECT_EQ(std::pair(stored.width, stored.height), std::pair(16, 8));
}

}  // namespace
}  // namespace pixturn_test
