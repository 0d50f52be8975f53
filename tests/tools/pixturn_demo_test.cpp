// What a user sees first: the demo's gallery (checked against the methods'
// models and opened in a real browser), the start-up listing, the help and
// version, and the command installed under a prefix.
#include <algorithm>
#include <cstdio>

#include <gtest/gtest.h>

#include "tests/support/rotation_model.h"
#include "tests/tools/pixturn_runner.h"

namespace pixturn_test {
namespace {

using simhost::Rgba;
using test_support::Rearranged;
using test_support::Rearrangement;

// The values of an attribute on the page, in order ("src" of every <img>).
std::vector<std::string> AttributeValues(const std::string& html, const std::string& attribute) {
    const std::string opening = " " + attribute + "=\"";
    std::vector<std::string> values;
    for (size_t at = html.find(opening); at != std::string::npos; at = html.find(opening, at + 1)) {
        const size_t start = at + opening.size();
        values.push_back(html.substr(start, html.find('"', start) - start));
    }
    return values;
}

TEST(PixturnDemo, EveryMethodOnTheTestCardAsTheModelsSayAndTheGalleryLoads) {
    const ScratchDirectory dir;
    const RunResult run = RunPixturn({"demo", dir / "sheet"});
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.err, "");
    const std::string lastLine = run.out.substr(run.out.rfind('\n', run.out.size() - 2) + 1);
    EXPECT_EQ(lastLine, dir / "sheet/index.html" + "\n");

    const std::string html = ReadText(dir / "sheet/index.html");
    const std::vector<std::string> links = AttributeValues(html, "href");
    EXPECT_EQ(links.size(), 24u);
    for (const std::string& image : AttributeValues(html, "src")) {
        const Image shown = ReadPng(dir / ("sheet/" + image)).image;
        EXPECT_LE(std::max(shown.width, shown.height), 360) << image;
    }
    for (const char* returned : {"<b>a new picture</b>", "<b>p itself</b>", "<b>True, p changed</b>", " MiB)</b>"})
        EXPECT_NE(html.find(returned), std::string::npos) << returned;

    const auto read = [&](const std::string& name) { return ReadPng(dir / ("sheet/" + name + ".png")).image; };
    const Image card = read("input");
    ASSERT_EQ(std::pair(card.width, card.height), std::pair(320, 240));
    EXPECT_EQ(read("rotate-30"), *test_support::ModelRotate(card, 30, 0xFFFFFFFF, simhost::Storage::GWorld32));
    EXPECT_EQ(read("rotate-minus-12.5-transparent").at(0, 0), (Rgba{0, 0, 0, 0}));
    EXPECT_EQ(read("rotate-135-navy").at(0, 0), (Rgba{0x20, 0x30, 0x60, 255}));
    EXPECT_EQ(read("rotate90"), Rearranged(card, Rearrangement::QuarterAnticlockwise));
    EXPECT_EQ(read("hmirror-in-place"), Rearranged(card, Rearrangement::LeftRight));
    EXPECT_EQ(read("bitmap"), card);
    const Image larger = read("clone-to-size");
    ASSERT_EQ(std::pair(larger.width, larger.height), std::pair(401, 301));
    EXPECT_EQ(larger.at(319, 239), card.at(319, 239));
    EXPECT_EQ(larger.at(400, 300), (Rgba{255, 255, 255, 255}));
    // The mask's bite in its upper left is white: the picture shows through it
    // not at all once the mask is applied.
    const Image mask = read("input-mask");
    const Image masked = read("input-masked");
    for (size_t i = 0; i < mask.pixels.size(); ++i) {
        if (mask.pixels[i].r == 255) {
            ASSERT_EQ(masked.pixels[i].a, 0) << i;
        }
    }
    EXPECT_EQ(std::pair(read("rotate-mask-30-cut-mask").width, read("rotate-mask-30-masked").height), std::pair(320, 368));

    // In Debian's Chromium, as a user opens it, 1400 px wide.
    const RunResult browser = RunShell("bash " PIXTURN_SOURCE_DIR "/scripts/open-page.sh " + dir / "sheet/index.html");
    int images = 0, broken = 0, unresolved = 0, width = 0;
    ASSERT_EQ(std::sscanf(browser.out.c_str(), "images %d broken %d links %*d unresolved %d width %d", &images, &broken,
                          &unresolved, &width), 4) << browser.out << browser.err;
    EXPECT_EQ(images, 24);
    EXPECT_EQ(broken, 0);
    EXPECT_EQ(unresolved, 0);
    EXPECT_LE(width, 1400);
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
    EXPECT_NE(module.out.find("BitmapQLM(extends ref as Picture) as picture"), std::string::npos) << module.out;

    const RunResult extension = RunPixturn({"methods", "--host-version", "2012.5"});
    ASSERT_EQ(extension.status, 0) << extension.err;
    EXPECT_NE(extension.out.find("registered: class extension Picture"), std::string::npos) << extension.out;
    EXPECT_NE(extension.out.find("RotateQLM(angle as double"), std::string::npos) << extension.out;
}

TEST(PixturnHelp, HelpAndVersion) {
    const RunResult help = RunPixturn({"help"});
    ASSERT_EQ(help.status, 0);
    EXPECT_EQ(RunPixturn({"--help"}).out, help.out);
    EXPECT_EQ(help.out.rfind("usage: pixturn COMMAND", 0), 0u) << help.out;
    EXPECT_NE(help.out.find("\n  pixturn rotate FILE... --angle DEG [OPTION...]\n"), std::string::npos) << help.out;
    EXPECT_NE(RunPixturn({"help", "rotate"}).out.find("usage: pixturn rotate FILE... --angle DEG"), std::string::npos);
    EXPECT_EQ(RunPixturn({"--version"}).out, std::string("pixturn ") + PIXTURN_VERSION + "\n");
}

// cmake --install lays out bin/pixturn and lib/pixturn/ (the plug-in, its
// Info.plist, the frameworks' stand-ins); the installed command finds them from
// where it is, with nothing pointing into the build folder.
TEST(PixturnInstall, InstalledCommandFindsTheInstalledPlugin) {
    const ScratchDirectory prefix;
    const RunResult install = RunShell("cmake --install " + std::string(PIXTURN_BUILD_DIR) + " --prefix " + prefix / "");
    ASSERT_EQ(install.status, 0) << install.err;
    EXPECT_TRUE(std::filesystem::exists(prefix / "lib/pixturn/Info.plist"));
    const RunResult run = RunShell("env -u PIXTURN_PLUGIN " + prefix / "bin/pixturn" + " methods");
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.out.find("plug-in: " + prefix / "lib/pixturn/libPixTurn.so\n"), std::string::npos) << run.out;
    const RunResult dynamic = RunShell("readelf -d " + prefix / "bin/pixturn" + " " + prefix / "lib/pixturn/libPixTurn.so");
    EXPECT_EQ(dynamic.out.find(PIXTURN_BUILD_DIR), std::string::npos) << dynamic.out;
    EXPECT_NE(dynamic.out.find("[$ORIGIN/../lib/pixturn]"), std::string::npos) << dynamic.out;
}

}  // namespace
}  // namespace pixturn_test
