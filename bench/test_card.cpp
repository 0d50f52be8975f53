// Smooth colour ramps, so that blended edges take real values, overlaid with
// 8 x 8 blocks of hashed colour, so that no two neighbouring rows or columns are
// alike and no copy can be skipped. Opaque throughout: alpha is carried, not used.
#include "bench/test_card.h"

namespace test_card {

namespace {

uint8_t BlockHash(int32_t x, int32_t y) {
    uint32_t h = static_cast<uint32_t>(x / 8) * 73856093u ^ static_cast<uint32_t>(y / 8) * 19349663u;
    h ^= h >> 13;
    h *= 0x5bd1e995u;
    return static_cast<uint8_t>(h >> 24);
}

}  // namespace

simhost::Rgba PixelAt(int32_t x, int32_t y) {
    const uint8_t texture = BlockHash(x, y) / 4;
    return {static_cast<uint8_t>(x * 191 / (kWidth - 1) + texture),
            static_cast<uint8_t>(y * 191 / (kHeight - 1) + texture),
            static_cast<uint8_t>(255 - texture), 255};
}

void Paint(simhost::SimulatedHost& host, REALpicture picture) {
    for (int32_t y = 0; y < kHeight; ++y)
        for (int32_t x = 0; x < kWidth; ++x) host.SetPixel(picture, x, y, PixelAt(x, y));
}

std::vector<uint8_t> RgbaBytes() {
    std::vector<uint8_t> bytes;
    bytes.reserve(static_cast<size_t>(kBytes));
    for (int32_t y = 0; y < kHeight; ++y)
        for (int32_t x = 0; x < kWidth; ++x) {
            const simhost::Rgba p = PixelAt(x, y);
            bytes.insert(bytes.end(), {p.r, p.g, p.b, p.a});
        }
    return bytes;
}

}  // namespace test_card
