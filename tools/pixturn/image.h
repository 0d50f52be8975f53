// A picture as the files hold it, in memory: 8-bit R, G, B, A per pixel, rows top
// to bottom, A = 255 opaque. Everything between the files and the host goes
// through this one form.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace pixturn {

// The host refuses pictures wider or taller than this.
constexpr int32_t kMaxPictureSide = 32767;

struct Image {
    int32_t width = 0;
    int32_t height = 0;
    std::vector<uint8_t> rgba;  // width × height × 4 bytes

    Image() = default;
    Image(int32_t w, int32_t h) : width(w), height(h), rgba(static_cast<size_t>(w) * h * 4) {}
    uint8_t* pixel(int32_t x, int32_t y) { return &rgba[(static_cast<size_t>(y) * width + x) * 4]; }
    const uint8_t* pixel(int32_t x, int32_t y) const { return &rgba[(static_cast<size_t>(y) * width + x) * 4]; }
};

// How a file stores an image: a picture in colour with alpha, or a mask, which
// the host keeps as a grey picture (black opaque, white transparent).
enum class ImageRole { Picture, Mask };

// Grey level of a pixel by the usual luma weights, rounded; exact for grey
// pixels (R = G = B), so a mask read and written again keeps its levels.
inline uint8_t GreyLevel(const uint8_t* rgba) {
    return static_cast<uint8_t>((299 * rgba[0] + 587 * rgba[1] + 114 * rgba[2] + 500) / 1000);
}

// One grey byte per pixel, rows top to bottom: a mask as the files hold it.
inline std::vector<uint8_t> GreyPlane(const Image& image) {
    std::vector<uint8_t> grey(image.rgba.size() / 4);
    for (size_t i = 0; i < grey.size(); ++i) grey[i] = GreyLevel(&image.rgba[i * 4]);
    return grey;
}

}  // namespace pixturn
