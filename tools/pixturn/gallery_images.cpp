// Shrinking averages whole boxes of pixels rather than sampling them: a photo's
// fine detail would otherwise alias into noise on the page.
#include "tools/pixturn/gallery_images.h"

#include <algorithm>
#include <vector>

namespace pixturn {

Image Thumbnail(const Image& image, int32_t side) {
    if (image.width <= side && image.height <= side) return image;
    const double scale = std::min(static_cast<double>(side) / image.width, static_cast<double>(side) / image.height);
    const int32_t width = std::max<int32_t>(1, static_cast<int32_t>(image.width * scale));
    const int32_t height = std::max<int32_t>(1, static_cast<int32_t>(image.height * scale));
    Image small(width, height);
    std::vector<uint64_t> sums(static_cast<size_t>(width) * 5);  // alpha-weighted R, G, B, alpha, count
    for (int32_t ty = 0; ty < height; ++ty) {
        std::fill(sums.begin(), sums.end(), 0);
        const int32_t top = static_cast<int32_t>(static_cast<int64_t>(ty) * image.height / height);
        const int32_t bottom = static_cast<int32_t>(static_cast<int64_t>(ty + 1) * image.height / height);
        for (int32_t y = top; y < bottom; ++y) {
            for (int32_t x = 0; x < image.width; ++x) {
                const uint8_t* p = image.pixel(x, y);
                uint64_t* sum = &sums[static_cast<size_t>(static_cast<int64_t>(x) * width / image.width) * 5];
                sum[0] += uint64_t{p[0]} * p[3];
                sum[1] += uint64_t{p[1]} * p[3];
                sum[2] += uint64_t{p[2]} * p[3];
                sum[3] += p[3];
                sum[4] += 1;
            }
        }
        for (int32_t tx = 0; tx < width; ++tx) {
            const uint64_t* sum = &sums[static_cast<size_t>(tx) * 5];
            uint8_t* q = small.pixel(tx, ty);
            for (int c = 0; c < 3; ++c) q[c] = static_cast<uint8_t>(sum[3] == 0 ? 0 : (sum[c] + sum[3] / 2) / sum[3]);
            q[3] = static_cast<uint8_t>((sum[3] + sum[4] / 2) / sum[4]);
        }
    }
    return small;
}

Image WithMaskApplied(const Image& picture, const Image& mask) {
    Image masked = picture;
    for (int32_t y = 0; y < picture.height; ++y) {
        for (int32_t x = 0; x < picture.width; ++x) {
            uint8_t* p = masked.pixel(x, y);
            p[3] = static_cast<uint8_t>((p[3] * (255 - GreyLevel(mask.pixel(x, y))) + 127) / 255);
        }
    }
    return masked;
}

}  // namespace pixturn
