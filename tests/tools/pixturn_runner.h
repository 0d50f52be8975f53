// Running the built pixturn command from the tests, and the image files they
// hand it and read back, written and read with libpng directly so that the
// command's own file code is checked against an independent one.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "simhost/simulated_host.h"
#include "tests/support/pictures.h"

namespace pixturn_test {

struct RunResult {
    int status = -1;
    std::string out;
    std::string err;
};

// How the shell starts it: standard input from a file, and commands run first
// ("ulimit -f 64").
struct RunSettings {
    std::string standardInput = "/dev/null";
    std::string before;
};

// Runs pixturn with these arguments; stdout and stderr are captured.
RunResult RunPixturn(const std::vector<std::string>& arguments, const RunSettings& settings = {});
// Any command line of the shell, stdout and stderr captured the same way.
RunResult RunShell(const std::string& command);

// A shell command that keeps the command's memory under that many MiB: an
// address-space limit, or under AddressSanitizer or ThreadSanitizer, whose shadow
// memory no such limit admits, the sanitizer's own ceiling on any one allocation.
std::string MemoryLimit(long mebibytes);

// A directory of its own for each test, removed at the end.
class ScratchDirectory {
public:
    ScratchDirectory();
    ~ScratchDirectory();
    std::string operator/(const std::string& name) const { return (path_ / name).string(); }
    // Names of the files it holds, sorted.
    std::vector<std::string> Files() const;

private:
    std::filesystem::path path_;
};

using test_support::Image;

Image RandomPixels(int32_t width, int32_t height, uint32_t seed);

// A PNG of any colour type and bit depth from its packed row bytes.
struct PngContents {
    PngContents(int32_t w, int32_t h, int type, int depth, std::vector<uint8_t> packedRows = {},
            std::vector<uint8_t> rgbPalette = {}, std::vector<uint8_t> alphas = {})
        : width(w), height(h), colourType(type), bitDepth(depth), rows(std::move(packedRows)),
          palette(std::move(rgbPalette)), paletteAlpha(std::move(alphas)) {}
    int32_t width = 0;
    int32_t height = 0;
    int colourType = 0;  // PNG_COLOR_TYPE_*
    int bitDepth = 8;
    bool interlaced = false;
    std::vector<uint8_t> rows;     // height rows of packed samples
    std::vector<uint8_t> palette;  // R, G, B per entry
    std::vector<uint8_t> paletteAlpha;
};
void WritePng(const std::string& path, const PngContents& contents);
void WriteRgbaPng(const std::string& path, const Image& pixels);

// Reads a PNG as 8-bit RGBA; `format` is the file's own (PNG_FORMAT_GRAY for
// the grey files masks are written as, PNG_FORMAT_RGB, ...).
struct ReadBack {
    Image image;
    uint32_t format = 0;
};
ReadBack ReadPng(const std::string& path);

std::string ReadText(const std::string& path);
void WriteText(const std::string& path, const std::string& text);

}  // namespace pixturn_test
