// Moving every pixel of a reader's picture to its place in a writer's picture, for
// the mirrors and right-angle turns. Each destination pixel is written exactly
// once with the source pixel's four channels, so source and destination may have
// different pixel formats.
//
// MovePixelsOneByOne is the readable definition: GetPixel and SetPixel per pixel.
// MovePixels gives the same pixels with loops specialised for the pair of formats,
// chosen once per call: no format test per pixel, and row addresses taken with
// RowAddress once per row (host bitmaps keep their rows wherever their row table
// says, so rows are never found by stride). Between pictures of one format of
// 4-byte pixels, pixels move as words masked with the bits a copy keeps, in the
// processor's fastest path (processor_paths.h) unless told another: for the
// mirrors a register at a time (sixteen pixels in AVX-512, eight in AVX2, else
// four), reversed within it where rows turn round, and for the quarter turns as
// 4 x 4 blocks transposed in registers.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "picture/picture_editor.h"
#include "picture/pixel_formats.h"
#include "transforms/paths/register_moves.h"
#include "transforms/processor_paths.h"

// Where source pixel (x, y) of a w x h picture goes.
enum class PixelMapping {
    HalfTurn,              // (w - 1 - x, h - 1 - y): mirrored both ways
    LeftRight,             // (w - 1 - x, y)
    TopBottom,             // (x, h - 1 - y)
    QuarterAnticlockwise,  // (y, w - 1 - x), in an h x w picture
    QuarterClockwise,      // (h - 1 - y, x), in an h x w picture
};

struct PixelPosition {
    int32_t x, y;
};

inline PixelPosition DestinationOf(PixelMapping mapping, int32_t x, int32_t y, int32_t w, int32_t h) {
    switch (mapping) {
        case PixelMapping::HalfTurn: return {w - 1 - x, h - 1 - y};
        case PixelMapping::LeftRight: return {w - 1 - x, y};
        case PixelMapping::TopBottom: return {x, h - 1 - y};
        case PixelMapping::QuarterAnticlockwise: return {y, w - 1 - x};
        case PixelMapping::QuarterClockwise: return {h - 1 - y, x};
    }
    return {x, y};
}

inline void MovePixelsOneByOne(PictureReader& reader, PictureWriter& writer, PixelMapping mapping) {
    for (int32_t y = 0; y < reader.height; ++y)
        for (int32_t x = 0; x < reader.width; ++x) {
            const PixelPosition to = DestinationOf(mapping, x, y, reader.width, reader.height);
            writer.SetPixel(to.x, to.y, reader.GetPixel(x, y));
        }
}

namespace pixel_moves {

template <typename Source, typename Destination>
constexpr bool kMovesWords = std::is_same_v<Source, Destination> && Source::kBytesPerPixel == 4;

// Mirrors: every source row lands whole in one destination row.
template <typename Path, typename Source, typename Destination>
void MoveRows(PictureReader& reader, PictureWriter& writer, bool reverseRows, bool reverseColumns) {
    const int32_t w = reader.width;
    const int32_t h = reader.height;
    for (int32_t y = 0; y < h; ++y) {
        uint8_t* from = reader.RowAddress(y);
        uint8_t* to = writer.RowAddress(reverseRows ? h - 1 - y : y);
        int32_t x = 0;
        if constexpr (kMovesWords<Source, Destination>) {
            if constexpr (requires { Path::MoveWideRow(from, to, w, reverseColumns, Source::kBitsKept); })
                x = Path::MoveWideRow(from, to, w, reverseColumns, Source::kBitsKept);
            x = register_moves::MoveRow<register_moves::Fours<Path>>(from, to, w, x, reverseColumns, Source::kBitsKept);
        }
        for (; x < w; ++x)
            CopyPixel<Source, Destination>(PixelIn<Source>(from, x),
                                           PixelIn<Destination>(to, reverseColumns ? w - 1 - x : x));
    }
}

// Source pixels (x .. x + 3, y .. y + 3) of one format of 4-byte pixels, turned:
// source column x + i lands in the destination row `to[i]` at pixel `at`, read
// from the top down for the clockwise turn and from the bottom up otherwise.
template <typename Path, typename Codec>
void TurnBlock(uint8_t* const* strip, int32_t k, int32_t x, uint8_t* const* to, int32_t at, bool clockwise) {
    typename Path::Vector rows[4], columns[4];
    for (int i = 0; i < 4; ++i) rows[i] = Path::Keep(Path::Load(PixelIn<Codec>(strip[k + i], x)), Codec::kBitsKept);
    Path::Transpose(rows, columns);
    for (int i = 0; i < 4; ++i)
        Path::Store(PixelIn<Codec>(to[i], at), clockwise ? Path::Reversed(columns[i]) : columns[i]);
}

// Quarter turns: a source row becomes a destination column. The pictures are
// taken in tiles of kTile x kTile pixels: a tile's source rows and destination
// rows (64 KB each side) stay in the second-level cache and in few pages while
// it is turned, where whole strips would touch a new page for every destination
// row. Against 64, each row's run is twice as long: on an AMD EPYC a 4000 x 3000
// picture's quarter turns took 13 to 25% less time; 32 and 256 were slower.
constexpr int32_t kTile = 128;

template <typename Path, typename Source, typename Destination>
void MoveQuarterTurn(PictureReader& reader, PictureWriter& writer, bool clockwise) {
    const int32_t w = reader.width;
    const int32_t h = reader.height;
    uint8_t* strip[kTile];
    for (int32_t top = 0; top < h; top += kTile) {
        const int32_t rows = std::min(kTile, h - top);
        for (int32_t k = 0; k < rows; ++k) strip[k] = reader.RowAddress(top + k);
        for (int32_t left = 0; left < w; left += kTile) {
            const int32_t end = std::min(left + kTile, w);
            int32_t x = left;
            if constexpr (kMovesWords<Source, Destination>) {
                const int32_t blockRows = rows - rows % 4;
                for (; x + 4 <= end; x += 4) {
                    uint8_t* to[4];
                    for (int i = 0; i < 4; ++i) to[i] = writer.RowAddress(clockwise ? x + i : w - 1 - x - i);
                    for (int32_t k = 0; k < blockRows; k += 4)
                        TurnBlock<Path, Source>(strip, k, x, to, clockwise ? h - 4 - top - k : top + k, clockwise);
                    for (int i = 0; i < 4; ++i)
                        for (int32_t k = blockRows; k < rows; ++k) {
                            const int32_t y = top + k;
                            CopyPixel<Source, Destination>(PixelIn<Source>(strip[k], x + i),
                                                           PixelIn<Destination>(to[i], clockwise ? h - 1 - y : y));
                        }
                }
            }
            for (; x < end; ++x) {
                uint8_t* to = writer.RowAddress(clockwise ? x : w - 1 - x);
                for (int32_t k = 0; k < rows; ++k) {
                    const int32_t y = top + k;
                    CopyPixel<Source, Destination>(PixelIn<Source>(strip[k], x),
                                                   PixelIn<Destination>(to, clockwise ? h - 1 - y : y));
                }
            }
        }
    }
}

}  // namespace pixel_moves

inline void MovePixels(PictureReader& reader, PictureWriter& writer, PixelMapping mapping,
                       ProcessorPath path = FastestPath()) {
    bool specialised = false;
    WithPath(path, [&]<typename Path>() {
        specialised = DispatchFormatPair(
            reader.pixelFormat, writer.pixelFormat, [&]<typename Source, typename Destination>() {
                using namespace pixel_moves;
                switch (mapping) {
                    case PixelMapping::HalfTurn: MoveRows<Path, Source, Destination>(reader, writer, true, true); break;
                    case PixelMapping::LeftRight:
                        MoveRows<Path, Source, Destination>(reader, writer, false, true);
                        break;
                    case PixelMapping::TopBottom:
                        MoveRows<Path, Source, Destination>(reader, writer, true, false);
                        break;
                    case PixelMapping::QuarterAnticlockwise:
                        MoveQuarterTurn<Path, Source, Destination>(reader, writer, false);
                        break;
                    case PixelMapping::QuarterClockwise:
                        MoveQuarterTurn<Path, Source, Destination>(reader, writer, true);
                        break;
                }
            });
    });
    if (!specialised) MovePixelsOneByOne(reader, writer, mapping);
}
