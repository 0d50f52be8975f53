// libpng reports errors by longjmp. Each function that calls into libpng sets its
// jump point itself and keeps nothing with a destructor of its own: everything
// it touches after setjmp lives in a state object owned by its caller, so a jump
// skips no destructor and leaves no local with an indeterminate value.
#include "tools/pixturn/png_file.h"

#include <png.h>

#include <csetjmp>
#include <cstring>
#include <vector>

#include "tools/pixturn/failure.h"

namespace pixturn {

namespace {

struct PngErrorSink {
    char message[256] = "";
};

[[noreturn]] void OnPngError(png_structp png, png_const_charp message) {
    auto* sink = static_cast<PngErrorSink*>(png_get_error_ptr(png));
    std::snprintf(sink->message, sizeof sink->message, "%s", message);
    png_longjmp(png, 1);
}

// Warnings (unknown chunks, odd colour profiles) do not stop a picture that decodes.
void OnPngWarning(png_structp, png_const_charp) {}

struct PngReadState {
    PngErrorSink errors;
    png_structp png = nullptr;
    png_infop info = nullptr;
    Image image;
    std::vector<png_bytep> rows;

    ~PngReadState() { png_destroy_read_struct(&png, &info, nullptr); }
};

bool ReadHeader(PngReadState& state, FILE* file) {
    if (setjmp(png_jmpbuf(state.png))) return false;
    png_init_io(state.png, file);
    png_read_info(state.png, state.info);
    // Palette, low bit depths and tRNS become full channels; 16-bit samples are
    // scaled to 8 bits with rounding; grey becomes RGB; opaque kinds gain A = 255.
    png_set_expand(state.png);
    png_set_scale_16(state.png);
    png_set_gray_to_rgb(state.png);
    png_set_add_alpha(state.png, 0xFF, PNG_FILLER_AFTER);
    png_set_interlace_handling(state.png);
    png_read_update_info(state.png, state.info);
    return true;
}

bool ReadPixels(PngReadState& state) {
    if (setjmp(png_jmpbuf(state.png))) return false;
    png_read_image(state.png, state.rows.data());
    png_read_end(state.png, nullptr);
    return true;
}

struct PngWriteState {
    PngErrorSink errors;
    png_structp png = nullptr;
    png_infop info = nullptr;
    std::vector<png_bytep> rows;

    ~PngWriteState() { png_destroy_write_struct(&png, &info); }
};

bool WriteRows(PngWriteState& state, FILE* file, int32_t width, int32_t height, int colourType) {
    if (setjmp(png_jmpbuf(state.png))) return false;
    png_init_io(state.png, file);
    png_set_IHDR(state.png, state.info, static_cast<png_uint_32>(width), static_cast<png_uint_32>(height), 8,
                 colourType, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(state.png, state.info);
    png_write_image(state.png, state.rows.data());
    png_write_end(state.png, nullptr);
    return true;
}

Failure CorruptPng(const std::string& path, const PngErrorSink& errors) {
    return RunError(path + ": corrupt PNG file: " + errors.message);
}

}  // namespace

bool HasPngSignature(const uint8_t* bytes, size_t count) {
    return count >= 8 && png_sig_cmp(bytes, 0, 8) == 0;
}

Image ReadPng(FILE* file, const std::string& path) {
    PngReadState state;
    state.png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &state.errors, OnPngError, OnPngWarning);
    if (state.png != nullptr) state.info = png_create_info_struct(state.png);
    if (state.info == nullptr) throw std::bad_alloc();
    if (!ReadHeader(state, file)) throw CorruptPng(path, state.errors);

    const png_uint_32 width = png_get_image_width(state.png, state.info);
    const png_uint_32 height = png_get_image_height(state.png, state.info);
    if (width > kMaxPictureSide || height > kMaxPictureSide) {
        throw RunError(path + ": " + std::to_string(width) + " x " + std::to_string(height) +
                       " pixels is over the host's limit of " + std::to_string(kMaxPictureSide) +
                       " pixels a side");
    }
    state.image = Image(static_cast<int32_t>(width), static_cast<int32_t>(height));
    if (png_get_rowbytes(state.png, state.info) != static_cast<size_t>(width) * 4) {
        throw RunError(path + ": unsupported PNG layout");
    }
    state.rows.resize(height);
    for (png_uint_32 y = 0; y < height; ++y) state.rows[y] = state.image.pixel(0, static_cast<int32_t>(y));
    if (!ReadPixels(state)) throw CorruptPng(path, state.errors);
    return std::move(state.image);
}

void WritePng(FILE* file, const Image& image, ImageRole role, const std::string& path) {
    // Masks go out as one grey byte per pixel; pictures as their RGBA bytes.
    const std::vector<uint8_t> grey = role == ImageRole::Mask ? GreyPlane(image) : std::vector<uint8_t>();
    PngWriteState state;
    state.png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &state.errors, OnPngError, OnPngWarning);
    if (state.png != nullptr) state.info = png_create_info_struct(state.png);
    if (state.info == nullptr) throw std::bad_alloc();
    state.rows.resize(static_cast<size_t>(image.height));
    for (int32_t y = 0; y < image.height; ++y) {
        const uint8_t* row = role == ImageRole::Mask ? &grey[static_cast<size_t>(y) * image.width] : image.pixel(0, y);
        state.rows[static_cast<size_t>(y)] = const_cast<png_bytep>(row);
    }
    const int colourType = role == ImageRole::Mask ? PNG_COLOR_TYPE_GRAY : PNG_COLOR_TYPE_RGBA;
    if (!WriteRows(state, file, image.width, image.height, colourType)) {
        throw RunError(path + ": cannot write PNG: " + state.errors.message);
    }
}

}  // namespace pixturn
