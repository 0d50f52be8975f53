#include "tests/tools/pixturn_runner.h"

#include <png.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <random>
#include <sstream>
#include <stdexcept>

namespace pixturn_test {

namespace {

std::string Quoted(const std::string& argument) {
    std::string quoted = "'";
    for (char c : argument) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

}  // namespace

RunResult RunPixturn(const std::vector<std::string>& arguments, const RunSettings& settings) {
    std::string command = settings.before + (settings.before.empty() ? "" : "; ") + "exec " + Quoted(PIXTURN_COMMAND);
    for (const std::string& argument : arguments) command += " " + Quoted(argument);
    return RunShell(command + " <" + Quoted(settings.standardInput));
}

std::string MemoryLimit(long mebibytes) {
#if defined(__SANITIZE_ADDRESS__)
    return "export ASAN_OPTIONS=\"$ASAN_OPTIONS:max_allocation_size_mb=" + std::to_string(mebibytes) + "\"";
#elif defined(__SANITIZE_THREAD__)
    return "export TSAN_OPTIONS=\"$TSAN_OPTIONS:max_allocation_size_mb=" + std::to_string(mebibytes) + "\"";
#else
    return "ulimit -v " + std::to_string(mebibytes * 1024);
#endif
}

RunResult RunShell(const std::string& command) {
    const ScratchDirectory streams;
    const std::string redirected = "{ " + command + "; } >" + Quoted(streams / "out") + " 2>" + Quoted(streams / "err");
    const int status = std::system(redirected.c_str());
    RunResult result;
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    result.out = ReadText(streams / "out");
    result.err = ReadText(streams / "err");
    return result;
}

ScratchDirectory::ScratchDirectory() {
    std::string pattern = (std::filesystem::temp_directory_path() / "pixturn-test-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("cannot make a scratch directory");
    path_ = pattern;
}

ScratchDirectory::~ScratchDirectory() { std::filesystem::remove_all(path_); }

std::vector<std::string> ScratchDirectory::Files() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(path_)) names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
}

Image RandomPixels(int32_t width, int32_t height, uint32_t seed) {
    std::mt19937 random(seed);
    Image pixels{width, height, std::vector<simhost::Rgba>(static_cast<size_t>(width) * height)};
    for (simhost::Rgba& p : pixels.pixels) {
        const uint32_t bits = random();
        p = {uint8_t(bits), uint8_t(bits >> 8), uint8_t(bits >> 16), uint8_t(bits >> 24)};
    }
    return pixels;
}

// libpng's default error handler aborts, which is enough for files the tests make.
void WritePng(const std::string& path, const PngContents& contents) {
    FILE* file = std::fopen(path.c_str(), "wb");
    if (file == nullptr) throw std::runtime_error("cannot write " + path);
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_init_io(png, file);
    png_set_IHDR(png, info, static_cast<png_uint_32>(contents.width), static_cast<png_uint_32>(contents.height), contents.bitDepth,
                 contents.colourType, contents.interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    if (!contents.palette.empty()) {
        std::vector<png_color> colours;
        for (size_t i = 0; i + 2 < contents.palette.size(); i += 3)
            colours.push_back({contents.palette[i], contents.palette[i + 1], contents.palette[i + 2]});
        png_set_PLTE(png, info, colours.data(), static_cast<int>(colours.size()));
    }
    if (!contents.paletteAlpha.empty()) {
        png_set_tRNS(png, info, contents.paletteAlpha.data(), static_cast<int>(contents.paletteAlpha.size()), nullptr);
    }
    png_write_info(png, info);
    const size_t rowBytes = contents.rows.size() / static_cast<size_t>(contents.height);
    std::vector<png_bytep> rows;
    for (int32_t y = 0; y < contents.height; ++y) rows.push_back(const_cast<png_bytep>(&contents.rows[y * rowBytes]));
    png_write_image(png, rows.data());
    png_write_end(png, nullptr);
    png_destroy_write_struct(&png, &info);
    std::fclose(file);
}

void WriteRgbaPng(const std::string& path, const Image& pixels) {
    PngContents contents(pixels.width, pixels.height, PNG_COLOR_TYPE_RGBA, 8);
    for (const simhost::Rgba& p : pixels.pixels) contents.rows.insert(contents.rows.end(), {p.r, p.g, p.b, p.a});
    WritePng(path, contents);
}

ReadBack ReadPng(const std::string& path) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_file(&image, path.c_str())) throw std::runtime_error(path + ": " + image.message);
    ReadBack read;
    read.format = image.format;
    image.format = PNG_FORMAT_RGBA;
    read.image.width = static_cast<int32_t>(image.width);
    read.image.height = static_cast<int32_t>(image.height);
    read.image.pixels.resize(static_cast<size_t>(image.width) * image.height);
    if (!png_image_finish_read(&image, nullptr, read.image.pixels.data(), 0, nullptr))
        throw std::runtime_error(path + ": " + image.message);
    return read;
}

std::string ReadText(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

void WriteText(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

}  // namespace pixturn_test
