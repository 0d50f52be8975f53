// Bad input of every kind: one line on stderr naming the file or argument, the
// exit status of its kind, and nothing left in the output directory (an output
// that stood there before is untouched). Then where outputs go: several files
// into a directory, standard input and output, the longest names, and an
// interrupted write.
#include <png.h>
#include <zlib.h>

#include <algorithm>
#include <csignal>

#include <gtest/gtest.h>

#include "simhost/built_plugin.h"
#include "tests/tools/pixturn_runner.h"

namespace pixturn_test {
namespace {

struct BadInput {
    const char* name;
    std::vector<std::string> arguments;  // "@" before a name puts it in the scratch directory
    int status;
    std::string message;  // part of the line on stderr
    // A limit set first: the memory a file may not make the command claim
    // ("m", in MiB), or the size of the files it writes ("f", in KiB beyond the
    // plug-in library's own size, which the host may copy).
    char limit = 0;
    long limitValue = 0;
};

const BadInput kBadInputs[] = {
    {"MissingFile", {"rotate90", "@missing.png", "-o", "@out.png"}, 1, "missing.png: cannot open: No such file"},
    {"Directory", {"rotate90", "@", "-o", "@out.png"}, 1, ": cannot read: Is a directory"},
    {"EmptyFile", {"rotate90", "@empty.png", "-o", "@out.png"}, 1, "empty.png: empty file"},
    {"NotAnImage", {"rotate90", "@notes.txt", "-o", "@out.png"}, 1, "notes.txt: not a PNG or JPEG file"},
    {"CorruptPng", {"rotate90", "@corrupt.png", "-o", "@out.png"}, 1, "corrupt.png: corrupt PNG file"},
    {"CorruptJpeg", {"rotate90", "@corrupt.jpg", "-o", "@out.png"}, 1, "corrupt.jpg: corrupt JPEG file"},
    {"OverSizeLimit", {"rotate90", "@huge.png", "-o", "@out.png"}, 1,
     "huge.png: 40000 x 1 pixels is over the host's limit of 32767"},
    {"AngleNotANumber", {"rotate", "@good.png", "--angle", "30deg", "-o", "@out.png"}, 2,
     "--angle: '30deg' is not a number"},
    {"AngleInfinite", {"rotate", "@good.png", "--angle", "1e999", "-o", "@out.png"}, 2,
     "--angle: '1e999' is not a finite number"},
    {"SizeNotANumber", {"clone", "@good.png", "--size", "10xten", "-o", "@out.png"}, 2, "--size: '10xten' is not a size"},
    {"MemorySizeOverLimit", {"memory", "--size", "40000x1", "--angle", "3"}, 2, "--size: 40000 x 1 is over the host's limit"},
    {"UnknownOption", {"rotate90", "@good.png", "--turbo", "-o", "@out.png"}, 2, "unknown option '--turbo'"},
    {"OptionOfAnotherCommand", {"rotate90", "@good.png", "--angle", "3", "-o", "@out.png"}, 2,
     "option --angle does not apply to 'rotate90'"},
    {"UnknownCommand", {"spin", "@good.png"}, 2, "unknown command 'spin'"},
    {"MissingOutput", {"rotate90", "@good.png"}, 2, "rotate90: missing --output OUTPUT (or --out-dir DIR)"},
    {"BadBackground", {"rotate", "@good.png", "--angle", "3", "--background", "#12345", "-o", "@out.png"}, 2,
     "--background: '#12345' is not a colour"},
    {"UnknownColourName", {"rotate", "@good.png", "--angle", "3", "--flatten", "reddish", "-o", "@out.jpg"}, 2,
     "--flatten: 'reddish' is not a colour"},
    {"PngLevelOutOfRange", {"rotate90", "@good.png", "--png-level", "10", "-o", "@out.png"}, 2,
     "--png-level: '10' is not a whole number from 0 to 9"},
    {"StandardOutputWithoutFormat", {"rotate90", "@good.png", "-o", "-"}, 2, "standard output needs --format"},
    {"SeveralFilesWithoutDirectory", {"rotate90", "@good.png", "@small.png", "-o", "@out.png"}, 2,
     "several FILEs need --out-dir"},
    {"PictureAndMaskToOneFile",
     {"rotate-mask", "@good.png", "--mask", "@good.png", "--angle", "3", "-o", "@same.png", "--mask-out", "@./same.png"},
     2, "same.png: named for both the picture and the mask"},
    // Both targets are checked before either file appears.
    {"MaskOutputIsADirectory",
     {"rotate-mask", "@good.png", "--mask", "@good.png", "--angle", "3", "-o", "@new.png", "--mask-out", "@taken.png"},
     1, "taken.png: cannot write: Is a directory"},
    // Header only, 32767 x 32767 claimed: refused for what the file holds, at no
    // cost of the 4 GiB it claims.
    {"HeaderOnlyPng", {"rotate90", "@claims.png", "-o", "@out.png"}, 1, "claims.png: corrupt PNG file", 'm', 1000},
    {"HeaderOnlyJpeg", {"rotate90", "@claims.jpg", "-o", "@out.png"}, 1, "claims.jpg: corrupt JPEG file", 'm', 1000},
    {"FileSizeLimit", {"rotate90", "@noise.png", "-o", "@out.png"}, 1, "out.png: cannot write", 'f', 64},
    {"InPlaceOnSixteenBitWorld", {"mirror-in-place", "@good.png", "--host", "desktop16", "-o", "@out.png"}, 1,
     "MirrorPictureQLM returned False"},
    {"UnknownHost", {"rotate90", "@good.png", "--host", "mac", "-o", "@out.png"}, 2, "--host: unknown host kind 'mac'"},
    {"UnknownOutputFormat", {"rotate90", "@good.png", "-o", "@out.gif"}, 2, "out.gif: unknown output format '.gif'"},
    {"OutputDirectoryMissing", {"rotate90", "@good.png", "-o", "@nowhere/out.png"}, 1, "nowhere/out.png: cannot write"},
    {"MaskOfAnotherSize", {"rotate-mask", "@good.png", "--mask", "@small.png", "--angle", "3", "-o", "@out.png"}, 1,
     "small.png: the mask is 3 x 3, the picture 6 x 4"},
    // The first shear would be 32768 pixels wide.
    {"MethodReturnsNil", {"rotate", "@wide.png", "--angle", "30", "-o", "@out.png"}, 1,
     "RotateQLM returned nil: RotateQLM(30, &cFFFFFFFF) on "},
    {"MissingPlugin", {"rotate90", "@good.png", "--plugin", "@libNone.so", "-o", "@out.png"}, 1, "libNone.so: cannot open"},
};

// A JPEG whose frame header is made to claim 32767 x 32767 and whose data ends
// soon after.
std::string ClaimingJpeg(const std::string& jpeg) {
    std::string claims = jpeg;
    const size_t frame = claims.find("\xFF\xC0");
    claims.replace(frame + 5, 4, "\x7F\xFF\x7F\xFF");
    return claims.substr(0, claims.find("\xFF\xDA") + 64);
}

std::string Chunk(const std::string& type, const std::string& data) {
    const auto word = [](uint32_t v) { return std::string{char(v >> 24), char(v >> 16), char(v >> 8), char(v)}; };
    const std::string body = type + data;
    return word(static_cast<uint32_t>(data.size())) + body +
           word(static_cast<uint32_t>(crc32(0, reinterpret_cast<const Bytef*>(body.data()), static_cast<uInt>(body.size()))));
}

// A PNG of a signature, an RGBA header of that size and the end: no pixel data.
std::string HeaderOnlyPng(uint32_t width, uint32_t height) {
    const std::string header{char(width >> 24), char(width >> 16), char(width >> 8), char(width),
                             char(height >> 24), char(height >> 16), char(height >> 8), char(height),
                             8, 6, 0, 0, 0};
    return std::string("\x89PNG\r\n\x1A\n", 8) + Chunk("IHDR", header) + Chunk("IEND", "");
}

// The command copies the plug-in into a memory file, which the file-size limit
// bounds too: the limit lies that far above the plug-in's size.
uintmax_t PluginSize() { return std::filesystem::file_size(simhost::DefaultPluginPath()); }

// The limit as the shell sets it, if any.
std::string LimitCommand(const BadInput& input) {
    if (input.limit == 'f') {
        // The shell counts this limit in blocks of 512 bytes.
        return "ulimit -f " + std::to_string(static_cast<long>(PluginSize() / 512) + input.limitValue * 2);
    }
    return input.limit == 'm' ? MemoryLimit(input.limitValue) : "";
}

class BadInputs : public testing::TestWithParam<BadInput> {};

TEST_P(BadInputs, OneLineNoOutput) {
    const ScratchDirectory dir;
    WriteRgbaPng(dir / "good.png", RandomPixels(6, 4, 1));
    WriteRgbaPng(dir / "small.png", RandomPixels(3, 3, 2));
    WritePng(dir / "wide.png", PngContents(32767, 4, PNG_COLOR_TYPE_GRAY, 1, std::vector<uint8_t>(4 * 4096, 0x0F)));
    const PngContents huge(40000, 1, PNG_COLOR_TYPE_GRAY, 1, std::vector<uint8_t>(5000, 0x55));
    WritePng(dir / "huge.png", huge);
    const std::string png = ReadText(dir / "good.png");
    WriteText(dir / "corrupt.png", png.substr(0, png.size() / 2));
    ASSERT_EQ(RunPixturn({"clone", dir / "good.png", "-o", dir / "good.jpg"}).status, 0);
    const std::string jpeg = ReadText(dir / "good.jpg");
    WriteText(dir / "corrupt.jpg", jpeg.substr(0, jpeg.size() / 2));
    WriteText(dir / "empty.png", "");
    WriteText(dir / "notes.txt", "not a picture\n");
    WriteText(dir / "claims.jpg", ClaimingJpeg(jpeg));
    WriteText(dir / "claims.png", HeaderOnlyPng(32767, 32767));
    // Pixels that do not compress, 256 KB more than the plug-in: past the limit of FileSizeLimit.
    WriteRgbaPng(dir / "noise.png", RandomPixels(1024, static_cast<int32_t>(PluginSize() / 4096) + 64, 3));
    std::filesystem::create_directory(dir / "taken.png");
    WriteText(dir / "out.png", "what was there before");
    const std::vector<std::string> before = dir.Files();

    std::vector<std::string> arguments;
    for (const std::string& argument : GetParam().arguments)
        arguments.push_back(argument[0] == '@' ? dir / argument.substr(1) : argument);
    const RunResult run = RunPixturn(arguments, {.before = LimitCommand(GetParam())});
    EXPECT_EQ(run.status, GetParam().status);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err.rfind("pixturn: ", 0), 0u) << run.err;
    EXPECT_NE(run.err.find(GetParam().message), std::string::npos) << run.err;
    EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
    EXPECT_EQ(dir.Files(), before);
    EXPECT_EQ(ReadText(dir / "out.png"), "what was there before");
}

INSTANTIATE_TEST_SUITE_P(Pixturn, BadInputs, testing::ValuesIn(kBadInputs), [](const auto& info) { return info.param.name; });

using test_support::Rearranged;
using test_support::Rearrangement;

// mogrify's habit: each result under its input's name; a file that fails is one
// line, and the others are still written.
TEST(PixturnOutDir, EachFileUnderItsOwnNameFailuresOneLineEach) {
    const ScratchDirectory dir;
    const Image a = RandomPixels(5, 3, 1), b = RandomPixels(2, 7, 2);
    WriteRgbaPng(dir / "a.png", a);
    WriteRgbaPng(dir / "b.png", b);
    WriteText(dir / "notes.png", "not a picture");
    const RunResult run = RunPixturn({"hmirror", dir / "a.png", dir / "missing.png", dir / "notes.png", dir / "b.png",
                                      "--out-dir", dir / "out"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 2) << run.err;
    EXPECT_NE(run.err.find("missing.png: cannot open"), std::string::npos) << run.err;
    EXPECT_EQ(ReadPng(dir / "out/a.png").image, Rearranged(a, Rearrangement::LeftRight));
    EXPECT_EQ(ReadPng(dir / "out/b.png").image, Rearranged(b, Rearrangement::LeftRight));
    EXPECT_FALSE(std::filesystem::exists(dir / "out/notes.png"));
}

// Work past a second shows a progress line on a terminal (script(1) gives the
// command one), rewritten in place and cleared before each report line.
TEST(PixturnOutDir, ProgressLineOnATerminalOnly) {
    const ScratchDirectory dir;
    WriteRgbaPng(dir / "a.png", RandomPixels(2500, 2500, 6));
    for (const char* name : {"b.png", "c.png", "d.png"}) std::filesystem::copy_file(dir / "a.png", dir / name);
    const std::string command =
        std::string(PIXTURN_COMMAND) + " hmirror a.png b.png c.png d.png --png-level 9 --out-dir out";
    const RunResult run = RunShell("cd " + dir / "" + " && script -qec '" + command + "' /dev/null");
    ASSERT_EQ(run.status, 0) << run.out << run.err;
    EXPECT_NE(run.out.find("\rpixturn: hmirror: 4/4 d.png\033[K\r\033[K"), std::string::npos) << run.out;
}

TEST(PixturnStreams, StandardInputToStandardOutput) {
    const ScratchDirectory dir;
    const Image input = RandomPixels(6, 4, 9);
    WriteRgbaPng(dir / "in.png", input);
    const RunResult run = RunPixturn({"rotate90", "-", "-o", "-", "--format", "png"}, {.standardInput = dir / "in.png", .before = ""});
    ASSERT_EQ(run.status, 0) << run.err;
    WriteText(dir / "out.png", run.out);
    EXPECT_EQ(ReadPng(dir / "out.png").image, Rearranged(input, Rearrangement::QuarterAnticlockwise));
}

// A name of 255 bytes is legal; the temporary file beside it must fit too.
TEST(PixturnOutput, TheLongestNameTheFileSystemAllows) {
    const ScratchDirectory dir;
    WriteRgbaPng(dir / "in.png", RandomPixels(3, 2, 4));
    const std::string name = std::string(251, 'n') + ".png";
    const RunResult run = RunPixturn({"clone", dir / "in.png", "-o", dir / name});
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(dir.Files(), (std::vector<std::string>{"in.png", name}));
}

// Told to stop while it writes, the command takes its temporary file with it.
// (One that ends before it writes ends the wait as well, and fails.)
TEST(PixturnOutput, StoppedWhileWritingLeavesNothing) {
    const ScratchDirectory dir;
    WriteRgbaPng(dir / "in.png", RandomPixels(1500, 1500, 5));
    const RunResult run = RunShell("cd " + dir / "" + " && { " + PIXTURN_COMMAND +
                                   " clone in.png --png-level 9 -o out.png & pid=$!; "
                                   "until ls -a | grep -q pixturn- || ! kill -0 $pid; do sleep 0.01; done; "
                                   "kill -TERM $pid; wait $pid; }");
    EXPECT_EQ(run.status, 128 + SIGTERM) << run.err;
    EXPECT_EQ(dir.Files(), std::vector<std::string>{"in.png"});
}

}  // namespace
}  // namespace pixturn_test
