// Bad input of every kind: one line on stderr naming the file or argument, the
// exit status of its kind, and nothing left in the output directory (an output
// that stood there before is untouched).
#include <png.h>

#include <algorithm>

#include <gtest/gtest.h>

#include "tests/tools/pixturn_runner.h"

namespace pixturn_test {
namespace {

struct BadInput {
    const char* name;
    std::vector<std::string> arguments;  // "@" before a name puts it in the scratch directory
    int status;
    std::string message;  // part of the line on stderr
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
    {"MissingOutput", {"rotate90", "@good.png"}, 2, "rotate90: missing --output OUTPUT"},
    {"BadBackground", {"rotate", "@good.png", "--angle", "3", "--background", "red", "-o", "@out.png"}, 2,
     "--background: 'red' is not a colour"},
    {"UnknownHost", {"rotate90", "@good.png", "--host", "mac", "-o", "@out.png"}, 2, "--host: unknown host kind 'mac'"},
    {"UnknownOutputFormat", {"rotate90", "@good.png", "-o", "@out.gif"}, 2, "out.gif: unknown output format '.gif'"},
    {"OutputDirectoryMissing", {"rotate90", "@good.png", "-o", "@nowhere/out.png"}, 1, "nowhere/out.png: cannot write"},
    {"MaskOfAnotherSize", {"rotate-mask", "@good.png", "--mask", "@small.png", "--angle", "3", "-o", "@out.png"}, 1,
     "small.png: the mask is 3 x 3, the picture 6 x 4"},
    {"MaskOutputUnwritable",
     {"rotate-mask", "@good.png", "--mask", "@good.png", "--angle", "3", "-o", "@out.png", "--mask-out", "@nowhere/m.png"},
     1, "nowhere/m.png: cannot write"},
    // The first shear would be 32768 pixels wide.
    {"MethodReturnsNil", {"rotate", "@wide.png", "--angle", "30", "-o", "@out.png"}, 1,
     "RotateQLM returned nil: RotateQLM(30, &cFFFFFFFF) on "},
    {"MissingPlugin", {"rotate90", "@good.png", "--plugin", "@libNone.so", "-o", "@out.png"}, 1, "libNone.so: cannot open"},
};

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
    WriteText(dir / "out.png", "what was there before");
    const std::vector<std::string> before = dir.Files();

    std::vector<std::string> arguments;
    for (const std::string& argument : GetParam().arguments)
        arguments.push_back(argument[0] == '@' ? dir / argument.substr(1) : argument);
    const RunResult run = RunPixturn(arguments);
    EXPECT_EQ(run.status, GetParam().status);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err.rfind("pixturn: ", 0), 0u) << run.err;
    EXPECT_NE(run.err.find(GetParam().message), std::string::npos) << run.err;
    EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
    EXPECT_EQ(dir.Files(), before);
    EXPECT_EQ(ReadText(dir / "out.png"), "what was there before");
}

INSTANTIATE_TEST_SUITE_P(Pixturn, BadInputs, testing::ValuesIn(kBadInputs), [](const auto& info) { return info.param.name; });

}  // namespace
}  // namespace pixturn_test
