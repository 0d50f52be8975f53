// The three mirrors that change the receiver's own pixels: left-right, top-bottom
// and both ways. Pixels are moved as raw bytes, so nothing a pixel holds is lost
// (a host bitmap's alpha byte keeps its top bit). A 24-bit world is mirrored too,
// its pixels moved as the 3 bytes they are: 4-byte words would tear its pixels
// apart and run past the end of its rows. Every other format has 4-byte pixels.
// The loops are chosen once per call by pixel size. The receiver's mask, if it has
// one, is not touched.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "picture/picture_editor.h"
#include "plugin/methods.h"

namespace {

struct FreeWithCLibrary {
    void operator()(uint8_t* block) const { std::free(block); }
};
using RowBuffer = std::unique_ptr<uint8_t, FreeWithCLibrary>;

template <int32_t PixelSize>
uint8_t* PixelIn(uint8_t* row, int32_t x) {
    return row + static_cast<ptrdiff_t>(x) * PixelSize;
}

template <int32_t PixelSize>
void ExchangePixels(uint8_t* a, uint8_t* b) {
    uint8_t held[PixelSize];
    std::memcpy(held, a, PixelSize);
    std::memcpy(a, b, PixelSize);
    std::memcpy(b, held, PixelSize);
}

template <int32_t PixelSize>
void ReverseRow(uint8_t* row, int32_t width) {
    for (int32_t k = 0; k < width / 2; ++k)
        ExchangePixels<PixelSize>(PixelIn<PixelSize>(row, k), PixelIn<PixelSize>(row, width - 1 - k));
}

// The pixels of row `from`, last first, into row `to`.
template <int32_t PixelSize>
void CopyReversed(uint8_t* to, uint8_t* from, int32_t width) {
    for (int32_t k = 0; k < width; ++k)
        std::memcpy(PixelIn<PixelSize>(to, k), PixelIn<PixelSize>(from, width - 1 - k), PixelSize);
}

template <int32_t PixelSize>
void MirrorBothWays(PictureEditor& editor, uint8_t* buffer) {
    const int32_t w = editor.width;
    const int32_t h = editor.height;
    for (int32_t i = 0; i < h / 2; ++i) {
        uint8_t* top = editor.RowAddress(i);
        uint8_t* bottom = editor.RowAddress(h - 1 - i);
        std::memcpy(buffer, top, static_cast<size_t>(editor.rowBytes));
        CopyReversed<PixelSize>(top, bottom, w);
        CopyReversed<PixelSize>(bottom, buffer, w);
    }
    if (h % 2 == 1) ReverseRow<PixelSize>(editor.RowAddress((h - 1) / 2), w);
}

template <int32_t PixelSize>
void MirrorLeftRight(PictureEditor& editor) {
    for (int32_t y = 0; y < editor.height; ++y) ReverseRow<PixelSize>(editor.RowAddress(y), editor.width);
}

void MirrorTopBottom(PictureEditor& editor, uint8_t* buffer) {
    const size_t rowLength = static_cast<size_t>(editor.rowBytes);
    const int32_t h = editor.height;
    for (int32_t i = 0; i < h / 2; ++i) {
        uint8_t* top = editor.RowAddress(i);
        uint8_t* bottom = editor.RowAddress(h - 1 - i);
        std::memcpy(buffer, top, rowLength);
        std::memcpy(top, bottom, rowLength);
        std::memcpy(bottom, buffer, rowLength);
    }
}

// A buffer for one whole row, or nothing when the row length cannot hold the
// row's pixels (a world whose row length the bridge could not tell is one).
RowBuffer AllocateRowBuffer(const PictureEditor& editor) {
    const int64_t pixelBytes = int64_t{editor.width} * editor.bytesPerPixel;
    if (editor.rowBytes < 1 || editor.rowBytes < pixelBytes) return nullptr;
    return RowBuffer(static_cast<uint8_t*>(std::calloc(static_cast<size_t>(editor.rowBytes), 1)));
}

}  // namespace

bool MirrorPictureQLM(REALpicture picture) {
    PictureEditor editor;
    if (!editor.GetPictureEditor(picture, true, true)) return false;
    if (RowBuffer buffer = AllocateRowBuffer(editor)) {
        if (editor.bytesPerPixel == 3)
            MirrorBothWays<3>(editor, buffer.get());
        else
            MirrorBothWays<4>(editor, buffer.get());
    }
    editor.ReleasePicture();
    return true;
}

bool HMirrorPictureQLM(REALpicture picture) {
    PictureEditor editor;
    if (!editor.GetPictureEditor(picture, true, true)) return false;
    if (editor.bytesPerPixel == 3)
        MirrorLeftRight<3>(editor);
    else
        MirrorLeftRight<4>(editor);
    editor.ReleasePicture();
    return true;
}

bool VMirrorPictureQLM(REALpicture picture) {
    PictureEditor editor;
    if (!editor.GetPictureEditor(picture, true, true)) return false;
    bool mirrored = false;
    if (RowBuffer buffer = AllocateRowBuffer(editor)) {
        MirrorTopBottom(editor, buffer.get());
        mirrored = true;
    }
    editor.ReleasePicture();
    return mirrored;
}
