// A picture as the files hold it, in memory: 8-bit R, G, B, A per pixel, rows top
// to bottom, A = 255 opaque. Everything between the files and the host goes
// through this one form.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace pixturn {

// Bytes that are written before they are read need no zeros first: a file's
// header may promise 32767 x 32767 pixels (4 GiB) that its data never delivers,
// and pages never written are never touched.
template <typename T>
struct UninitialisedAllocator : std::allocator<T> {
    template <typename U>
    struct rebind {
        using other = UninitialisedAllocator<U>;
    };
    UninitialisedAllocator() = default;
    template <typename U>
    UninitialisedAllocator(const UninitialisedAllocator<U>&) {}
    template <typename U>
    void construct(U* p) noexcept {
        ::new (static_cast<void*>(p)) U;
    }
    template <typename U, typename... Arguments>
    void construct(U* p, Arguments&&... arguments) {
        ::new (static_cast<void*>(p)) U(std::forward<Arguments>(arguments)...);
    }
};
using PixelBytes = std::vector<uint8_t, UninitialisedAllocator<uint8_t>>;

struct Image {
    int32_t width = 0;
    int32_t height = 0;
    PixelBytes rgba;  // width × height × 4 bytes

    Image() = default;
    // The pixels' bytes are left for the caller to write.
    Image(int32_t w, int32_t h) : width(w), height(h), rgba(static_cast<size_t>(w) * h * 4) {}
    size_t RowBytes() const { return static_cast<size_t>(width) * 4; }
    uint8_t* pixel(int32_t x, int32_t y) { return &rgba[(static_cast<size_t>(y) * width + x) * 4]; }
    const uint8_t* pixel(int32_t x, int32_t y) const { return &rgba[(static_cast<size_t>(y) * width + x) * 4]; }
};

// Room for the rows of an image about to be decoded row by row: all of them for
// a photo, so that growing never copies, but never more than 64 MiB ahead of the
// rows a file actually delivers.
inline void ReserveForDecoding(Image& image) {
    constexpr size_t kMostAhead = size_t{64} << 20;
    image.rgba.reserve(std::min(image.RowBytes() * static_cast<size_t>(image.height), kMostAhead));
}

// How an input file is read.
struct ReadSettings {
    bool autoOrient = true;  // apply a JPEG's EXIF Orientation
    bool sizeOnly = false;   // read the header alone: the size as shown, no pixels
};

// How a file stores an image: a picture in colour with alpha, or a mask, which
// the host keeps as a grey picture (black opaque, white transparent).
enum class ImageRole { Picture, Mask };

// Grey level of a pixel by the usual luma weights, rounded; exact for grey
// pixels (R = G = B), so a mask read and written again keeps its levels.
inline uint8_t GreyLevel(const uint8_t* rgba) {
    return static_cast<uint8_t>((299 * rgba[0] + 587 * rgba[1] + 114 * rgba[2] + 500) / 1000);
}

}  // namespace pixturn
