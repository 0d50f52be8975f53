// The shears of skews.h, specialised for the (source, destination) pair of pixel
// formats, which is chosen once per pass: no format test and no host call per
// pixel. They give exactly the pixels of HorizSkew and VertSkew (the unit tests
// compare them over every format pair), with the same products, the same
// subtraction and the same truncation; only the order of the memory traffic
// differs.
//
// - Rows are sheared along memory, each row found once with RowAddress. Only the
//   destination pixels no source pixel reaches get the background; source
//   pixels that land outside the row are skipped, all but the last one before
//   the row starts, whose products the first blend needs.
// - Columns are never walked one row stride per pixel. A block of neighbouring
//   columns is carried down the destination together, row by row, each column
//   with its own offset, weight and predecessor's products, so every
//   destination row is visited once per block and written in address order.
//   The source's rows are found once per pass with RowAddress (host bitmaps
//   keep their rows wherever their row table says) and kept in a table.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

#include <emmintrin.h>

#include "picture/picture_editor.h"
#include "picture/pixel_formats.h"
#include "transforms/skews.h"

namespace skew_loops {

template <typename Codec>
inline uint8_t* PixelIn(uint8_t* row, int32_t x) {
    return row + static_cast<ptrdiff_t>(x) * Codec::kBytesPerPixel;
}

// A pixel's four channels times the line's weight, as two pairs of doubles.
// SSE2's packed double arithmetic and its truncating conversion round exactly as
// the scalar operations of the plain shears do.
struct Products {
    __m128d rg, ba;
};

inline __m128i Channels(const Pixel& p) { return _mm_setr_epi32(p.r, p.g, p.b, p.a); }

inline Products Weighted(const Pixel& p, __m128d weight) {
    const __m128i channels = Channels(p);
    return {_mm_mul_pd(_mm_cvtepi32_pd(channels), weight),
            _mm_mul_pd(_mm_cvtepi32_pd(_mm_unpackhi_epi64(channels, channels)), weight)};
}

// p - trunc(own - left) per channel, own being p's products.
inline Pixel Blended(const Pixel& p, const Products& own, const Products& left) {
    const __m128i truncated = _mm_unpacklo_epi64(_mm_cvttpd_epi32(_mm_sub_pd(own.rg, left.rg)),
                                                 _mm_cvttpd_epi32(_mm_sub_pd(own.ba, left.ba)));
    alignas(16) int32_t channels[4];
    _mm_store_si128(reinterpret_cast<__m128i*>(channels), _mm_sub_epi32(Channels(p), truncated));
    return {channels[0], channels[1], channels[2], channels[3]};
}

template <typename Source, typename Destination>
void ShearRow(uint8_t* from, int32_t fromWidth, uint8_t* to, int32_t toWidth, SkewStep step,
              const Pixel& background) {
    const int32_t offset = step.offset;
    const int32_t trailing = fromWidth + offset;
    // Destination pixels [spanBegin, spanEnd) receive a source pixel or the
    // trailing blend; the rest is background.
    const int32_t spanBegin = std::clamp(offset, 0, toWidth);
    const int32_t spanEnd = std::clamp(trailing + 1, spanBegin, toWidth);
    for (int32_t d = 0; d < spanBegin; ++d) Destination::Write(PixelIn<Destination>(to, d), background);
    for (int32_t d = spanEnd; d < toWidth; ++d) Destination::Write(PixelIn<Destination>(to, d), background);

    // Source pixels [first, last) land inside the row.
    const int32_t first = std::min(std::max(-offset, 0), fromWidth);
    const int32_t last = std::clamp(toWidth - offset, first, fromWidth);
    const __m128d weight = _mm_set1_pd(step.weight);
    const Products backgroundProducts = Weighted(background, weight);
    Products left =
        first == 0 ? backgroundProducts : Weighted(Source::Read(PixelIn<Source>(from, first - 1)), weight);
    for (int32_t x = first; x < last; ++x) {
        const Pixel p = Source::Read(PixelIn<Source>(from, x));
        const Products own = Weighted(p, weight);
        Destination::Write(PixelIn<Destination>(to, x + offset), Blended(p, own, left));
        left = own;
    }
    if (trailing >= 0 && trailing < toWidth)
        Destination::Write(PixelIn<Destination>(to, trailing), Blended(background, backgroundProducts, left));
}

// Columns carried down together: enough for each destination row to take a
// run of cache lines, few enough for the block's state to stay in the first
// level cache.
constexpr int32_t kBlockColumns = 128;

struct ColumnState {
    int32_t offset;
    __m128d weight;
    Products left;
};

template <typename Source, typename Destination, typename NextSkew>
void ShearColumnBlock(uint8_t* const* sourceRows, int32_t sourceHeight, PictureWriter& destination,
                      int32_t firstColumn, int32_t count, const Pixel& background, NextSkew& nextSkew) {
    ColumnState columns[kBlockColumns];
    for (int32_t k = 0; k < count; ++k) {
        const SkewStep step = SplitSkew(nextSkew());
        ColumnState& column = columns[k];
        const __m128d weight = _mm_set1_pd(step.weight);
        column = {step.offset, weight, Weighted(background, weight)};
        // A column shifted up starts inside the source; its first blend needs
        // the products of the source pixel just above.
        const int32_t above = -step.offset - 1;
        if (above >= 0 && above < sourceHeight)
            column.left = Weighted(Source::Read(PixelIn<Source>(sourceRows[above], firstColumn + k)), weight);
    }
    for (int32_t y = 0; y < destination.height; ++y) {
        uint8_t* to = destination.RowAddress(y);
        for (int32_t k = 0; k < count; ++k) {
            ColumnState& column = columns[k];
            const int32_t x = firstColumn + k;
            uint8_t* pixel = PixelIn<Destination>(to, x);
            const int32_t sourceRow = y - column.offset;
            if (sourceRow >= 0 && sourceRow < sourceHeight) {
                const Pixel p = Source::Read(PixelIn<Source>(sourceRows[sourceRow], x));
                const Products own = Weighted(p, column.weight);
                Destination::Write(pixel, Blended(p, own, column.left));
                column.left = own;
            } else if (sourceRow == sourceHeight) {
                Destination::Write(pixel, Blended(background, Weighted(background, column.weight), column.left));
            } else {
                Destination::Write(pixel, background);
            }
        }
    }
}

}  // namespace skew_loops

// Rows 0 .. rows - 1 of source sheared into the same rows of destination, each
// by the skew nextSkew() gives, asked once per row in order.
template <typename NextSkew>
void ShearRows(PictureReader& source, PictureWriter& destination, int32_t rows, const Pixel& background,
               NextSkew&& nextSkew) {
    const bool specialised = DispatchFormatPair(
        source.pixelFormat, destination.pixelFormat, [&]<typename Source, typename Destination>() {
            for (int32_t y = 0; y < rows; ++y) {
                const SkewStep step = SplitSkew(nextSkew());
                skew_loops::ShearRow<Source, Destination>(source.RowAddress(y), source.width,
                                                          destination.RowAddress(y), destination.width, step,
                                                          background);
            }
        });
    if (specialised) return;
    for (int32_t y = 0; y < rows; ++y) {
        const SkewStep step = SplitSkew(nextSkew());
        HorizSkew(source, destination, y, step.offset, step.weight, background.r, background.g, background.b,
                  background.a);
    }
}

// Columns 0 .. columns - 1 of source sheared into the same columns of
// destination, each by the skew nextSkew() gives, asked once per column in order.
template <typename NextSkew>
void ShearColumns(PictureReader& source, PictureWriter& destination, int32_t columns, const Pixel& background,
                  NextSkew&& nextSkew) {
    const int32_t sourceHeight = source.height;
    const std::unique_ptr<uint8_t*, decltype(&std::free)> sourceRows(
        static_cast<uint8_t**>(std::calloc(static_cast<size_t>(std::max(sourceHeight, 1)), sizeof(uint8_t*))),
        &std::free);
    const bool specialised =
        sourceRows != nullptr &&
        DispatchFormatPair(source.pixelFormat, destination.pixelFormat, [&]<typename Source, typename Destination>() {
            for (int32_t y = 0; y < sourceHeight; ++y) sourceRows.get()[y] = source.RowAddress(y);
            for (int32_t first = 0; first < columns; first += skew_loops::kBlockColumns)
                skew_loops::ShearColumnBlock<Source, Destination>(sourceRows.get(), sourceHeight, destination, first,
                                                                  std::min(skew_loops::kBlockColumns, columns - first),
                                                                  background, nextSkew);
        });
    if (specialised) return;
    for (int32_t x = 0; x < columns; ++x) {
        const SkewStep step = SplitSkew(nextSkew());
        VertSkew(source, destination, x, step.offset, step.weight, background.r, background.g, background.b,
                 background.a);
    }
}
