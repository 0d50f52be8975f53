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
// - Where source and destination share a format of 4-byte pixels (every pass
//   picture has the host's format), lines whose weight PlanBlend marks exact
//   blend four pixels at a time in integer lanes (exact_blend.h has the proof);
//   the first and the trailing pixel of a line, and every other line, take the
//   doubles.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <type_traits>

#include <emmintrin.h>

#include "picture/picture_editor.h"
#include "picture/pixel_formats.h"
#include "transforms/exact_blend.h"
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

// Four pixels of one 4-byte format as sixteen channel bytes for BlendPixels and
// back. A host bitmap's alpha byte holds v in its low 7 bits and reads as
// 2 v + (v & 1); it is written back halved, its top bit clear.
template <typename Codec>
struct RawLanes;

template <>
struct RawLanes<PixelCodec<PixelFormatARGB32>> {
    static __m128i Read(__m128i stored) { return stored; }
    static __m128i Write(__m128i channels) { return channels; }
};

template <>
struct RawLanes<PixelCodec<PixelFormatHostBGRA>> {
    static __m128i Read(__m128i stored) {
        const __m128i alpha = _mm_and_si128(stored, _mm_set1_epi32(0x7F000000));
        const __m128i widened = _mm_or_si128(_mm_add_epi8(alpha, alpha), _mm_and_si128(alpha, _mm_set1_epi32(0x01000000)));
        return _mm_or_si128(_mm_and_si128(stored, _mm_set1_epi32(0x00FFFFFF)), widened);
    }
    static __m128i Write(__m128i channels) {
        const __m128i halved = _mm_and_si128(_mm_srli_epi32(channels, 1), _mm_set1_epi32(0x7F000000));
        return _mm_or_si128(_mm_and_si128(channels, _mm_set1_epi32(0x00FFFFFF)), halved);
    }
};

template <typename Source, typename Destination>
constexpr bool kBlendsInIntegers =
    std::is_same_v<Source, Destination> && Source::kBytesPerPixel == 4 && !std::is_same_v<Source, PixelCodec<PixelFormatRGB24>>;

inline __m128i Load4(const uint8_t* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
inline void Store4(uint8_t* p, __m128i v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }

// Destination pixels [begin, end) of a row set to the background.
template <typename Destination>
void FillBackground(uint8_t* to, int32_t begin, int32_t end, const Pixel& background) {
    if constexpr (Destination::kBytesPerPixel == 4) {
        uint8_t stored[4];
        Destination::Write(stored, background);
        for (int32_t d = begin; d < end; ++d) std::memcpy(PixelIn<Destination>(to, d), stored, 4);
    } else {
        for (int32_t d = begin; d < end; ++d) Destination::Write(PixelIn<Destination>(to, d), background);
    }
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
    FillBackground<Destination>(to, 0, spanBegin, background);
    FillBackground<Destination>(to, spanEnd, toWidth, background);

    // Source pixels [first, last) land inside the row.
    const int32_t first = std::min(std::max(-offset, 0), fromWidth);
    const int32_t last = std::clamp(toWidth - offset, first, fromWidth);
    const __m128d weight = _mm_set1_pd(step.weight);
    const Products backgroundProducts = Weighted(background, weight);
    int32_t x = first;
    if constexpr (kBlendsInIntegers<Source, Destination>) {
        const BlendPlan plan = PlanBlend(step.weight);
        if (plan.exact) {
            // The first pixel blends after the background, below.
            if (x == 0 && x < last) {
                const Pixel p = Source::Read(PixelIn<Source>(from, 0));
                Destination::Write(PixelIn<Destination>(to, offset), Blended(p, Weighted(p, weight), backgroundProducts));
                ++x;
            }
            const BlendLanes lanes = LanesOf(plan);
            for (; x + 4 <= last; x += 4) {
                const __m128i p = RawLanes<Source>::Read(Load4(PixelIn<Source>(from, x)));
                const __m128i q = RawLanes<Source>::Read(Load4(PixelIn<Source>(from, x - 1)));
                Store4(PixelIn<Destination>(to, x + offset), RawLanes<Destination>::Write(BlendPixels(p, q, lanes)));
            }
        }
    }
    Products left = x == 0 ? backgroundProducts : Weighted(Source::Read(PixelIn<Source>(from, x - 1)), weight);
    for (; x < last; ++x) {
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
    Products left;  // the products of source row leftRow, or the background's (leftRow -1)
    int32_t leftRow;
};

// Four neighbouring columns that blend in integer lanes whenever all four have
// a source pixel and the one above it.
struct ColumnQuad {
    bool exact;
    int32_t lowestOffset, highestOffset;
    BlendLanes lanes;
};

constexpr int32_t kQuads = kBlockColumns / 4;

// Destination pixel (x, y) of one column by the doubles. The products of the
// pixel above are carried from row to row, and taken afresh where the integer
// lanes went between.
template <typename Source, typename Destination>
void ShearColumnPixel(uint8_t* const* sourceRows, int32_t sourceHeight, int32_t y, int32_t x, ColumnState& column,
                      const Pixel& background, uint8_t* to) {
    uint8_t* pixel = PixelIn<Destination>(to, x);
    const int32_t sourceRow = y - column.offset;
    if (sourceRow < 0 || sourceRow > sourceHeight) {
        Destination::Write(pixel, background);
        return;
    }
    if (column.leftRow != sourceRow - 1) {
        column.leftRow = sourceRow - 1;
        column.left = sourceRow == 0 ? Weighted(background, column.weight)
                                     : Weighted(Source::Read(PixelIn<Source>(sourceRows[sourceRow - 1], x)), column.weight);
    }
    if (sourceRow < sourceHeight) {
        const Pixel p = Source::Read(PixelIn<Source>(sourceRows[sourceRow], x));
        const Products own = Weighted(p, column.weight);
        Destination::Write(pixel, Blended(p, own, column.left));
        column.left = own;
        column.leftRow = sourceRow;
    } else {
        Destination::Write(pixel, Blended(background, Weighted(background, column.weight), column.left));
    }
}

template <typename Source, typename Destination>
void BlendColumnQuad(uint8_t* const* sourceRows, int32_t y, int32_t x, const ColumnState* columns,
                     const BlendLanes& lanes, uint8_t* to) {
    auto gather = [&](int32_t above) {
        auto at = [&](int32_t k) {
            int32_t stored;
            std::memcpy(&stored, PixelIn<Source>(sourceRows[y - columns[k].offset - above], x + k), 4);
            return _mm_cvtsi32_si128(stored);
        };
        return RawLanes<Source>::Read(
            _mm_unpacklo_epi64(_mm_unpacklo_epi32(at(0), at(1)), _mm_unpacklo_epi32(at(2), at(3))));
    };
    Store4(PixelIn<Destination>(to, x), RawLanes<Destination>::Write(BlendPixels(gather(0), gather(1), lanes)));
}

template <typename Source, typename Destination, typename NextSkew>
void ShearColumnBlock(uint8_t* const* sourceRows, int32_t sourceHeight, PictureWriter& destination,
                      int32_t firstColumn, int32_t count, const Pixel& background, NextSkew& nextSkew) {
    ColumnState columns[kBlockColumns];
    BlendPlan plans[kBlockColumns];
    for (int32_t k = 0; k < count; ++k) {
        const SkewStep step = SplitSkew(nextSkew());
        const __m128d weight = _mm_set1_pd(step.weight);
        columns[k] = {step.offset, weight, Weighted(background, weight), -1};
        if constexpr (kBlendsInIntegers<Source, Destination>) plans[k] = PlanBlend(step.weight);
    }
    ColumnQuad quads[kQuads];
    const int32_t fullQuads = kBlendsInIntegers<Source, Destination> ? count / 4 : 0;
    for (int32_t q = 0; q < fullQuads; ++q) {
        const BlendPlan* plan = &plans[4 * q];
        const ColumnState* quad = &columns[4 * q];
        quads[q] = {plan[0].exact && plan[1].exact && plan[2].exact && plan[3].exact,
                    std::min({quad[0].offset, quad[1].offset, quad[2].offset, quad[3].offset}),
                    std::max({quad[0].offset, quad[1].offset, quad[2].offset, quad[3].offset}),
                    LanesOf(plan[0], plan[1], plan[2], plan[3])};
    }
    for (int32_t y = 0; y < destination.height; ++y) {
        uint8_t* to = destination.RowAddress(y);
        int32_t k = 0;
        if constexpr (kBlendsInIntegers<Source, Destination>) {
            for (int32_t q = 0; q < fullQuads; ++q) {
                // Every source row y - offset, and the one above it, in the source.
                const ColumnQuad& quad = quads[q];
                if (quad.exact && y - quad.highestOffset >= 1 && y - quad.lowestOffset < sourceHeight)
                    BlendColumnQuad<Source, Destination>(sourceRows, y, firstColumn + 4 * q, &columns[4 * q],
                                                         quad.lanes, to);
                else
                    for (int32_t i = 4 * q; i < 4 * q + 4; ++i)
                        ShearColumnPixel<Source, Destination>(sourceRows, sourceHeight, y, firstColumn + i, columns[i],
                                                              background, to);
            }
            k = 4 * fullQuads;
        }
        for (; k < count; ++k)
            ShearColumnPixel<Source, Destination>(sourceRows, sourceHeight, y, firstColumn + k, columns[k], background,
                                                  to);
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
