// The three mirrors that change the receiver's own pixels: left-right, top-bottom
// and both ways. Pixels are moved as raw bytes, so nothing a pixel holds is lost
// (a host bitmap's alpha byte keeps its top bit). A 24-bit world is mirrored too,
// its pixels moved as the 3 bytes they are: 4-byte words would tear its pixels
// apart and run past the end of its rows. Every other format has 4-byte pixels.
// The receiver's mask, if it has one, is not touched.
//
// Every mirror is made of pixels trading places in pairs, so no row is ever
// copied aside: each byte is read once and written once, as a copy of the
// picture would. The per-pixel exchanges are the definition; 4-byte pixels trade
// a register at a time in the processor's fastest path (sixteen in AVX-512,
// eight in AVX2, else four; reversed within the register where the mirror
// turns rows round), chosen once per call, and only the few pixels a row has
// left over take the per-pixel form.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

#include "picture/picture_editor.h"
#include "plugin/methods.h"
#include "transforms/paths/register_moves.h"
#include "transforms/processor_paths.h"

namespace {

// The hardware's prefetcher follows a walk through memory that carries on from
// one row into the next, forwards or backwards. A walk that jumps back to a
// row's start (or end) at every row is a new walk each time, so those loops ask
// for their lines this many bytes ahead themselves: a quarter less time for the
// left-right mirror of a 4000 x 3000 picture on an AMD EPYC.
constexpr ptrdiff_t kAskAhead = 2048;

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

// Pixel k of row a trades places with pixel width - 1 - k of row b, for every k
// in [0, count). With a == b and count = width / 2, the row is reversed.
template <int32_t PixelSize>
void ExchangeReversed(uint8_t* a, uint8_t* b, int32_t width, int32_t count) {
    for (int32_t k = 0; k < count; ++k)
        ExchangePixels<PixelSize>(PixelIn<PixelSize>(a, k), PixelIn<PixelSize>(b, width - 1 - k));
}

// The same a register at a time (register_moves.h), the widest the path has
// first, asking ahead for a's and b's lines when the walk is one the hardware
// cannot follow.
template <typename Path, int32_t PixelSize>
void ExchangeReversedFast(uint8_t* a, uint8_t* b, int32_t width, int32_t count, bool askAhead) {
    int32_t k = 0;
    if constexpr (PixelSize == 4) {
        const ptrdiff_t ahead = askAhead ? kAskAhead : 0;
        if constexpr (requires { Path::ExchangeWideReversed(a, b, width, count, ahead); })
            k = Path::ExchangeWideReversed(a, b, width, count, ahead);
        k = register_moves::ExchangeReversed<register_moves::Fours<Path>>(a, b, width, count, k, ahead);
    }
    ExchangeReversed<PixelSize>(PixelIn<PixelSize>(a, k), b, width - k, count - k);
}

// Two rows of `length` bytes trade places, asking ahead for both: the rows
// below are walked bottom-up, so b's walk jumps back at every row, and asking
// for a's lines too is faster still.
template <typename Path>
void ExchangeRows(uint8_t* a, uint8_t* b, size_t length) {
    size_t done = 0;
    for (; done + 16 <= length; done += 16) {
        __builtin_prefetch(a + done + kAskAhead, 1);
        __builtin_prefetch(b + done + kAskAhead, 1);
        const typename Path::Vector fromA = Path::Load(a + done);
        Path::Store(a + done, Path::Load(b + done));
        Path::Store(b + done, fromA);
    }
    for (; done < length; ++done) std::swap(a[done], b[done]);
}

// Rows trade with their mirror images from the outside in: the top rows are
// walked forwards and the bottom ones backwards, each a single stream.
template <typename Path, int32_t PixelSize>
void MirrorBothWays(PictureEditor& editor) {
    const int32_t w = editor.width;
    const int32_t h = editor.height;
    for (int32_t i = 0; i < h / 2; ++i)
        ExchangeReversedFast<Path, PixelSize>(editor.RowAddress(i), editor.RowAddress(h - 1 - i), w, w, false);
    if (h % 2 == 1) {
        uint8_t* middle = editor.RowAddress((h - 1) / 2);
        ExchangeReversedFast<Path, PixelSize>(middle, middle, w, w / 2, true);
    }
}

template <typename Path, int32_t PixelSize>
void MirrorLeftRight(PictureEditor& editor) {
    for (int32_t y = 0; y < editor.height; ++y) {
        uint8_t* row = editor.RowAddress(y);
        ExchangeReversedFast<Path, PixelSize>(row, row, editor.width, editor.width / 2, true);
    }
}

template <typename Path>
void MirrorTopBottom(PictureEditor& editor) {
    const int32_t h = editor.height;
    for (int32_t i = 0; i < h / 2; ++i)
        ExchangeRows<Path>(editor.RowAddress(i), editor.RowAddress(h - 1 - i), static_cast<size_t>(editor.rowBytes));
}

// A world whose row length the bridge could not tell has rows that cannot hold
// its pixels; such a picture is left as it is.
bool RowsHoldPixels(const PictureEditor& editor) {
    return editor.rowBytes >= 1 && editor.rowBytes >= int64_t{editor.width} * editor.bytesPerPixel;
}

// mirror.template operator()<Path, PixelSize>() in the processor's fastest path.
template <typename Mirror>
void ByPixelSize(const PictureEditor& editor, Mirror&& mirror) {
    WithPath(FastestPath(), [&]<typename Path>() {
        if (editor.bytesPerPixel == 3)
            mirror.template operator()<Path, 3>();
        else
            mirror.template operator()<Path, 4>();
    });
}

}  // namespace

bool MirrorPictureQLM(REALpicture picture) {
    PictureEditor editor;
    if (!editor.GetPictureEditor(picture, true, true)) return false;
    if (RowsHoldPixels(editor))
        ByPixelSize(editor, [&]<typename Path, int32_t PixelSize>() { MirrorBothWays<Path, PixelSize>(editor); });
    editor.ReleasePicture();
    return true;
}

bool HMirrorPictureQLM(REALpicture picture) {
    PictureEditor editor;
    if (!editor.GetPictureEditor(picture, true, true)) return false;
    ByPixelSize(editor, [&]<typename Path, int32_t PixelSize>() { MirrorLeftRight<Path, PixelSize>(editor); });
    editor.ReleasePicture();
    return true;
}

bool VMirrorPictureQLM(REALpicture picture) {
    PictureEditor editor;
    if (!editor.GetPictureEditor(picture, true, true)) return false;
    const bool mirrored = RowsHoldPixels(editor);
    if (mirrored) WithPath(FastestPath(), [&]<typename Path>() { MirrorTopBottom<Path>(editor); });
    editor.ReleasePicture();
    return mirrored;
}
