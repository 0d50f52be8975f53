// libjpeg reports errors through its error manager, which here jumps back with
// longjmp. As with PNG, each function that sets a jump point keeps everything it
// touches afterwards in a state object owned by its caller.
#include "tools/pixturn/jpeg_file.h"

// jpeglib.h needs FILE and size_t declared before it.
#include <cstdio>
#include <jerror.h>
#include <jpeglib.h>

#include <csetjmp>
#include <utility>
#include <vector>

#include "simhost/simulated_host.h"
#include "tools/pixturn/exif_orientation.h"
#include "tools/pixturn/failure.h"

namespace pixturn {

namespace {

struct JpegErrors {
    jpeg_error_mgr manager;
    jmp_buf jump;
    char message[JMSG_LENGTH_MAX] = "";
};

[[noreturn]] void OnJpegError(j_common_ptr codec) {
    auto* errors = reinterpret_cast<JpegErrors*>(codec->err);
    codec->err->format_message(codec, errors->message);
    std::longjmp(errors->jump, 1);
}

// libjpeg only warns about damaged data and fills the rest with grey; a picture
// that lost pixels is refused instead. Other warnings leave the pixels whole.
bool IsDamagedData(int code) {
    switch (code) {
        case JWRN_EXTRANEOUS_DATA:
        case JWRN_HIT_MARKER:
        case JWRN_HUFF_BAD_CODE:
        case JWRN_JPEG_EOF:
        case JWRN_MUST_RESYNC:
            return true;
        default:
            return false;
    }
}

void OnJpegMessage(j_common_ptr codec, int level) {
    if (level < 0 && IsDamagedData(codec->err->msg_code)) OnJpegError(codec);
}

struct JpegReadState {
    JpegErrors errors;
    jpeg_decompress_struct codec{};
    bool created = false;
    int orientation = 0;  // EXIF's, 0 when the file has none
    Image image;

    ~JpegReadState() {
        if (created) jpeg_destroy_decompress(&codec);
    }
};

bool ReadHeader(JpegReadState& state, FILE* file) {
    if (setjmp(state.errors.jump)) return false;
    jpeg_create_decompress(&state.codec);
    state.created = true;
    jpeg_stdio_src(&state.codec, file);
    jpeg_save_markers(&state.codec, JPEG_APP0 + 1, 0xFFFF);
    jpeg_read_header(&state.codec, TRUE);
    // Saved markers live until the decompression finishes: read it now.
    for (jpeg_saved_marker_ptr marker = state.codec.marker_list; marker != nullptr; marker = marker->next) {
        if (state.orientation == 0) state.orientation = ExifOrientation(marker->data, marker->data_length);
    }
    // CMYK cannot be turned into RGB by the library; it comes out as four channels.
    const bool cmyk = state.codec.jpeg_color_space == JCS_CMYK || state.codec.jpeg_color_space == JCS_YCCK;
    state.codec.out_color_space = cmyk ? JCS_CMYK : JCS_EXT_RGBA;
    return true;
}

// The image grows with the rows decoded, so that a file whose data ends early
// costs only what it held.
bool ReadPixels(JpegReadState& state) {
    if (setjmp(state.errors.jump)) return false;
    ReserveForDecoding(state.image);
    jpeg_start_decompress(&state.codec);
    while (state.codec.output_scanline < state.codec.output_height) {
        state.image.rgba.resize(state.image.rgba.size() + state.image.RowBytes());
        JSAMPROW row = state.image.pixel(0, static_cast<int32_t>(state.codec.output_scanline));
        jpeg_read_scanlines(&state.codec, &row, 1);
    }
    jpeg_finish_decompress(&state.codec);
    return true;
}

// Adobe writes CMYK inverted (255 is no ink), which makes the product the
// colour channel.
void CmykToRgba(Image& image) {
    for (size_t i = 0; i < image.rgba.size(); i += 4) {
        uint8_t* p = &image.rgba[i];
        const int k = p[3];
        for (int c = 0; c < 3; ++c) p[c] = static_cast<uint8_t>((p[c] * k + 127) / 255);
        p[3] = 255;
    }
}

struct JpegWriteState {
    JpegErrors errors;
    jpeg_compress_struct codec{};
    bool created = false;
    std::vector<uint8_t> row;

    ~JpegWriteState() {
        if (created) jpeg_destroy_compress(&codec);
    }
};

// JPEG keeps no alpha: a picture's pixels are laid over the flatten colour, as
// a viewer would show them on it, so that uncovered corners show that colour
// rather than whatever RGB a transparent pixel holds. Masks go out grey.
void PackRow(const uint8_t* rgba, int32_t width, ImageRole role, uint32_t flatten, uint8_t* out) {
    const int under[3] = {static_cast<int>(flatten >> 16 & 0xFF), static_cast<int>(flatten >> 8 & 0xFF),
                          static_cast<int>(flatten & 0xFF)};
    for (int32_t x = 0; x < width; ++x, rgba += 4) {
        if (role == ImageRole::Mask) {
            *out++ = GreyLevel(rgba);
            continue;
        }
        const int alpha = rgba[3];
        if (alpha == 255) {
            *out++ = rgba[0], *out++ = rgba[1], *out++ = rgba[2];
            continue;
        }
        for (int c = 0; c < 3; ++c) *out++ = static_cast<uint8_t>((rgba[c] * alpha + under[c] * (255 - alpha) + 127) / 255);
    }
}

bool WriteRows(JpegWriteState& state, FILE* file, const Image& image, ImageRole role, const JpegSettings& settings) {
    if (setjmp(state.errors.jump)) return false;
    jpeg_create_compress(&state.codec);
    state.created = true;
    jpeg_stdio_dest(&state.codec, file);
    state.codec.image_width = static_cast<JDIMENSION>(image.width);
    state.codec.image_height = static_cast<JDIMENSION>(image.height);
    state.codec.input_components = role == ImageRole::Mask ? 1 : 3;
    state.codec.in_color_space = role == ImageRole::Mask ? JCS_GRAYSCALE : JCS_RGB;
    jpeg_set_defaults(&state.codec);
    jpeg_set_quality(&state.codec, settings.quality, TRUE);
    jpeg_start_compress(&state.codec, TRUE);
    for (int32_t y = 0; y < image.height; ++y) {
        PackRow(image.pixel(0, y), image.width, role, settings.flatten, state.row.data());
        JSAMPROW row = state.row.data();
        jpeg_write_scanlines(&state.codec, &row, 1);
    }
    jpeg_finish_compress(&state.codec);
    return true;
}

jpeg_error_mgr* InstallErrors(JpegErrors& errors) {
    jpeg_error_mgr* manager = jpeg_std_error(&errors.manager);
    manager->error_exit = OnJpegError;
    manager->emit_message = OnJpegMessage;
    return manager;
}

}  // namespace

bool HasJpegSignature(const uint8_t* bytes, size_t count) {
    return count >= 3 && bytes[0] == 0xFF && bytes[1] == 0xD8 && bytes[2] == 0xFF;
}

Image ReadJpeg(FILE* file, const std::string& path, const ReadSettings& settings) {
    JpegReadState state;
    state.codec.err = InstallErrors(state.errors);
    if (!ReadHeader(state, file)) throw RunError(path + ": corrupt JPEG file: " + state.errors.message);

    const JDIMENSION width = state.codec.image_width;
    const JDIMENSION height = state.codec.image_height;
    if (width > simhost::kLargestPictureSide || height > simhost::kLargestPictureSide) {
        throw RunError(path + ": " + std::to_string(width) + " x " + std::to_string(height) +
                       " pixels is over the host's limit of " + std::to_string(simhost::kLargestPictureSide) +
                       " pixels a side");
    }
    state.image.width = static_cast<int32_t>(width);
    state.image.height = static_cast<int32_t>(height);
    if (settings.sizeOnly) {
        // Orientations 5 to 8 exchange the sides.
        if (settings.autoOrient && state.orientation >= 5) std::swap(state.image.width, state.image.height);
        return std::move(state.image);
    }
    if (!ReadPixels(state)) throw RunError(path + ": corrupt JPEG file: " + state.errors.message);
    if (state.codec.out_color_space == JCS_CMYK) CmykToRgba(state.image);
    return settings.autoOrient ? Oriented(std::move(state.image), state.orientation) : std::move(state.image);
}

void WriteJpeg(FILE* file, const Image& image, ImageRole role, const JpegSettings& settings, const std::string& path) {
    JpegWriteState state;
    state.codec.err = InstallErrors(state.errors);
    state.row.resize(static_cast<size_t>(image.width) * 3);
    if (!WriteRows(state, file, image, role, settings)) {
        throw RunError(path + ": cannot write JPEG: " + state.errors.message);
    }
}

}  // namespace pixturn
