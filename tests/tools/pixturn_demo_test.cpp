// The demo's outputs, the start-up listing and the help: what a user sees first.
#include <algorithm>

#include <gtest/gtest.h>

#include "tests/tools/pixturn_runner.h"

namespace pixturn_test {
namespace {

const char* const kXojoMethods[] = {
    "RotateQLM",         "RotateImageAndMaskQLM", "Rotate90QLM",      "Rotate180QLM",      "Rotate270QLM",
    "RotateMemoryQLM",   "MirrorQLM",             "HMirrorQLM",       "VMirrorQLM",        "MirrorPictureQLM",
    "HMirrorPictureQLM", "VMirrorPictureQLM",     "CloneQLM",         "BitmapQLM"};

std::vector<std::string> ImagesOnSheet(const std::string& html) {
    const std::string opening = "<img src=\"";
    std::vector<std::string> images;
    for (size_t at = html.find(opening); at != std::string::npos; at = html.find(opening, at + 1)) {
        const size_t start = at + opening.size();
        images.push_back(html.substr(start, html.find('"', start) - start));
    }
    return images;
}

TEST(PixturnDemo, EveryMethodOnTheTestCardWithAContactSheet) {
    const ScratchDirectory dir;
    const RunResult run = RunPixturn({"demo", dir / "sheet"});
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.err, "");
    const std::string lastLine = run.out.substr(run.out.rfind('\n', run.out.size() - 2) + 1);
    EXPECT_EQ(lastLine, dir / "sheet/index.html" + "\n");

    const std::string html = ReadText(dir / "sheet/index.html");
    for (const char* method : kXojoMethods) EXPECT_NE(html.find(method), std::string::npos) << method;
    EXPECT_NE(html.find("RotateMemoryQLM(30)</code><br>= "), std::string::npos);
    const std::vector<std::string> images = ImagesOnSheet(html);
    EXPECT_EQ(images.size(), 21u);
    for (const std::string& image : images) EXPECT_NO_THROW(ReadPng(dir / ("sheet/" + image))) << image;

    const Image card = ReadPng(dir / "sheet/input.png").image;
    ASSERT_EQ(std::pair(card.width, card.height), std::pair(320, 240));
    EXPECT_TRUE(std::any_of(card.pixels.begin(), card.pixels.end(), [](auto p) { return p.a == 0; }));
    EXPECT_TRUE(std::any_of(card.pixels.begin(), card.pixels.end(), [](auto p) { return p.a > 0 && p.a < 255; }));
    const Image quarter = ReadPng(dir / "sheet/rotate90.png").image;
    EXPECT_EQ(std::pair(quarter.width, quarter.height), std::pair(240, 320));
    EXPECT_EQ(ReadPng(dir / "sheet/hmirror.png").image, test_support::Rearranged(card, test_support::Rearrangement::LeftRight));
    EXPECT_EQ(ReadPng(dir / "sheet/hmirror-in-place.png").image, test_support::Rearranged(card, test_support::Rearrangement::LeftRight));
    EXPECT_EQ(ReadPng(dir / "sheet/clone.png").image, card);
    EXPECT_TRUE(ReadPng(dir / "sheet/rotate-mask-30-mask.png").grey);
}

TEST(PixturnDemo, OnTheUsersPictureOnAConsoleHost) {
    const ScratchDirectory dir;
    Image photo = RandomPixels(30, 20, 8);
    for (simhost::Rgba& p : photo.pixels) p.a = 255;
    WriteRgbaPng(dir / "photo.png", photo);
    const RunResult run = RunPixturn({"demo", dir / "out", "--input", dir / "photo.png", "--host", "console"});
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.out.find("photo.png (30 x 20) on the console host"), std::string::npos) << run.out;
    EXPECT_EQ(ReadPng(dir / "out/input.png").image, photo);
    const Image rotated = ReadPng(dir / "out/rotate-mask-30-cut.png").image;
    EXPECT_EQ(std::pair(rotated.width, rotated.height), std::pair(30, 20));
}

TEST(PixturnMethods, ListsWhatTheHostReceivedForEachRegistrationForm) {
    const RunResult module = RunPixturn({"methods"});
    ASSERT_EQ(module.status, 0) << module.err;
    EXPECT_NE(module.out.find("registered: module of global methods PicturePixTurnExtensionQLM"), std::string::npos)
        << module.out;
    EXPECT_NE(module.out.find("methods: 15\n"), std::string::npos);
    for (const char* method : kXojoMethods)
        EXPECT_NE(module.out.find(std::string(method) + "(extends ref as Picture"), std::string::npos) << method;

    const RunResult extension = RunPixturn({"methods", "--host-version", "2012.5"});
    ASSERT_EQ(extension.status, 0) << extension.err;
    EXPECT_NE(extension.out.find("registered: class extension Picture"), std::string::npos) << extension.out;
    EXPECT_NE(extension.out.find("RotateQLM(angle as double"), std::string::npos) << extension.out;
}

TEST(PixturnHelp, NamesEveryCommandAndItsXojoMethod) {
    const RunResult run = RunPixturn({"--help"});
    ASSERT_EQ(run.status, 0);
    for (const char* command : {"rotate ", "rotate-mask ", "rotate90 ", "rotate180 ", "rotate270 ", "memory ",
                                "mirror ", "hmirror ", "vmirror ", "mirror-in-place ", "hmirror-in-place ",
                                "vmirror-in-place ", "clone ", "bitmap ", "methods ", "demo "})
        EXPECT_NE(run.out.find(std::string("pixturn ") + command), std::string::npos) << command;
    for (const char* option : {"--angle DEG", "--background COLOUR", "--host KIND", "--host-version V", "-o, --output",
                               "--mask FILE", "--cut", "--mask-out FILE", "--size WxH", "--input FILE"})
        EXPECT_NE(run.out.find(option), std::string::npos) << option;
    for (const char* method : kXojoMethods) EXPECT_NE(run.out.find(method), std::string::npos) << method;
}

}  // namespace
}  // namespace pixturn_test
