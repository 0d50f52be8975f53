// Only IFD0 is read, and only its Orientation entry: it is the one tag a viewer
// applies to the pixels, and it always sits in IFD0.
#include "tools/pixturn/exif_orientation.h"

#include <cstring>

namespace pixturn {

namespace {

constexpr uint16_t kOrientationTag = 0x0112;
constexpr uint16_t kShortType = 3;

struct TiffReader {
    const uint8_t* data;
    size_t size;
    bool bigEndian;

    bool Has(size_t offset, size_t length) const { return offset <= size && length <= size - offset; }
    uint16_t Short(size_t offset) const {
        return bigEndian ? static_cast<uint16_t>(data[offset] << 8 | data[offset + 1])
                         : static_cast<uint16_t>(data[offset + 1] << 8 | data[offset]);
    }
    uint32_t Long(size_t offset) const {
        return bigEndian ? uint32_t{Short(offset)} << 16 | Short(offset + 2)
                         : uint32_t{Short(offset + 2)} << 16 | Short(offset);
    }
};

}  // namespace

int ExifOrientation(const uint8_t* data, size_t size) {
    static const uint8_t kExifHeader[6] = {'E', 'x', 'i', 'f', 0, 0};
    if (size < sizeof kExifHeader + 8 || std::memcmp(data, kExifHeader, sizeof kExifHeader) != 0) return 0;
    TiffReader tiff{data + sizeof kExifHeader, size - sizeof kExifHeader, data[6] == 'M'};
    if (std::memcmp(tiff.data, tiff.bigEndian ? "MM\0*" : "II*\0", 4) != 0) return 0;
    const size_t directory = tiff.Long(4);
    if (!tiff.Has(directory, 2)) return 0;
    const uint16_t entries = tiff.Short(directory);
    for (uint16_t i = 0; i < entries; ++i) {
        const size_t entry = directory + 2 + size_t{i} * 12;
        if (!tiff.Has(entry, 12)) return 0;
        if (tiff.Short(entry) != kOrientationTag) continue;
        const uint16_t value = tiff.Short(entry + 8);
        return tiff.Short(entry + 2) == kShortType && value >= 1 && value <= 8 ? value : 0;
    }
    return 0;
}

Image Oriented(Image image, int orientation) {
    if (orientation < 2 || orientation > 8) return image;
    const int32_t w = image.width;
    const int32_t h = image.height;
    const bool exchanged = orientation >= 5;
    Image turned(exchanged ? h : w, exchanged ? w : h);
    for (int32_t y = 0; y < h; ++y) {
        for (int32_t x = 0; x < w; ++x) {
            int32_t tx = x, ty = y;
            switch (orientation) {
                case 2: tx = w - 1 - x; break;
                case 3: tx = w - 1 - x, ty = h - 1 - y; break;
                case 4: ty = h - 1 - y; break;
                case 5: tx = y, ty = x; break;
                case 6: tx = h - 1 - y, ty = x; break;
                case 7: tx = h - 1 - y, ty = w - 1 - x; break;
                case 8: tx = y, ty = w - 1 - x; break;
            }
            std::memcpy(turned.pixel(tx, ty), image.pixel(x, y), 4);
        }
    }
    return turned;
}

}  // namespace pixturn
