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
//   blend in integer lanes (exact_blend.h has the proof): rows four destination
//   pixels at a time, or eight in AVX2 where the processor has it, columns in
//   quads of neighbours. Pixels at a line's ends, and lines whose weight is not
//   exact, take the doubles.
#pragma once

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
    __attribute__((target("avx2"))) static __m256i Read(__m256i stored) { return stored; }
    __attribute__((target("avx2"))) static __m256i Write(__m256i channels) { return channels; }
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
    __attribute__((target("avx2"))) static __m256i Read(__m256i stored) {
        const __m256i alpha = _mm256_and_si256(stored, _mm256_set1_epi32(0x7F000000));
        const __m256i widened =
            _mm256_or_si256(_mm256_add_epi8(alpha, alpha), _mm256_and_si256(alpha, _mm256_set1_epi32(0x01000000)));
        return _mm256_or_si256(_mm256_and_si256(stored, _mm256_set1_epi32(0x00FFFFFF)), widened);
    }
    __attribute__((target("avx2"))) static __m256i Write(__m256i channels) {
        const __m256i halved = _mm256_and_si256(_mm256_srli_epi32(channels, 1), _mm256_set1_epi32(0x7F000000));
        return _mm256_or_si256(_mm256_and_si256(channels, _mm256_set1_epi32(0x00FFFFFF)), halved);
    }
};

template <typename Source, typename Destination>
constexpr bool kBlendsInIntegers = std::is_same_v<Source, Destination> && Source::kBytesPerPixel == 4;

// The definition's pixel at position j of a line extended by the background
// on both sides, blended after the one at j - 1: beyond the trailing pixel and
// before the first, background after background is the background again.
template <typename Source, typename ReadAt>
Pixel ExtendedLinePixel(int32_t j, int32_t length, __m128d weight, const Pixel& background, ReadAt readAt) {
    const Pixel p = j >= 0 && j < length ? Source::Read(readAt(j)) : background;
    const Pixel q = j >= 1 && j <= length ? Source::Read(readAt(j - 1)) : background;
    return Blended(p, Weighted(p, weight), Weighted(q, weight));
}

// Four destination pixels, from extended positions j .. j + 3, by the doubles.
template <typename Codec, typename ReadAt>
__m128i FourPixelsByDoubles(int32_t j, int32_t length, __m128d weight, const Pixel& background, ReadAt readAt) {
    alignas(16) uint8_t stored[16];
    for (int32_t i = 0; i < 4; ++i)
        Codec::Write(stored + 4 * i, ExtendedLinePixel<Codec>(j + i, length, weight, background, readAt));
    return _mm_load_si128(reinterpret_cast<const __m128i*>(stored));
}

// One row whose weight blends exactly in integers, in destination order: every
// destination pixel d is the extended source pixel d - offset blended after its
// predecessor. Four pixels at a time in SSE2, eight in AVX2 where all eight have
// their source pixel and the one before it.
template <typename Codec>
class IntegerRow {
public:
    IntegerRow(const uint8_t* from, int32_t fromWidth, uint8_t* to, SkewStep step, const BlendPlan& plan,
               const Pixel& background)
        : from_(from), fromWidth_(fromWidth), to_(to), offset_(step.offset), weight_(_mm_set1_pd(step.weight)),
          plan_(plan), lanes_(LanesOf(plan)), background_(background) {
        uint8_t stored[4];
        Codec::Write(stored, background);
        int32_t word;
        std::memcpy(&word, stored, 4);
        backgroundVector_ = _mm_set1_epi32(word);
    }

    // Destination pixels d .. d + 3.
    void Four(int32_t d) const {
        const int32_t j = d - offset_;
        __m128i pixels;
        if (j >= 1 && j + 4 <= fromWidth_)
            pixels = RawLanes<Codec>::Write(
                BlendPixels(RawLanes<Codec>::Read(LoadFourPixels(At(j))), RawLanes<Codec>::Read(LoadFourPixels(At(j - 1))), lanes_));
        else if (j + 3 < 0 || j > fromWidth_)
            pixels = backgroundVector_;
        else
            pixels = FourPixelsByDoubles<Codec>(j, fromWidth_, weight_, background_, [this](int32_t i) { return At(i); });
        StoreFourPixels(PixelIn<Codec>(to_, d), pixels);
    }

    // Destination pixels d .. d + 7.
    __attribute__((target("avx2"))) void Eight(int32_t d) const {
        const int32_t j = d - offset_;
        if (j < 1 || j + 8 > fromWidth_) {
            Four(d);
            Four(d + 4);
            return;
        }
        const __m256i p = RawLanes<Codec>::Read(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(At(j))));
        const __m256i q = RawLanes<Codec>::Read(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(At(j - 1))));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(PixelIn<Codec>(to_, d)),
                            RawLanes<Codec>::Write(BlendPixels(p, q, plan_)));
    }

    void One(int32_t d) const {
        Codec::Write(PixelIn<Codec>(to_, d), ExtendedLinePixel<Codec>(d - offset_, fromWidth_, weight_, background_,
                                                                       [this](int32_t i) { return At(i); }));
    }

private:
    uint8_t* At(int32_t j) const { return PixelIn<Codec>(const_cast<uint8_t*>(from_), j); }

    const uint8_t* from_;
    int32_t fromWidth_;
    uint8_t* to_;
    int32_t offset_;
    __m128d weight_;
    BlendPlan plan_;
    BlendLanes lanes_;
    Pixel background_;
    __m128i backgroundVector_;
};

template <typename Codec>
void ShearRowInIntegers(const IntegerRow<Codec>& row, int32_t toWidth) {
    int32_t d = 0;
    for (; d + 4 <= toWidth; d += 4) row.Four(d);
    for (; d < toWidth; ++d) row.One(d);
}

template <typename Codec>
__attribute__((target("avx2"))) void ShearRowInIntegersWide(const IntegerRow<Codec>& row, int32_t toWidth) {
    int32_t d = 0;
    for (; d + 8 <= toWidth; d += 8) row.Eight(d);
    for (; d + 4 <= toWidth; d += 4) row.Four(d);
    for (; d < toWidth; ++d) row.One(d);
}

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

// Destination pixel (x, y) of one column by the doubles, the products of the
// source pixel above carried from row to row.
template <typename Source, typename Destination>
void ShearColumnPixel(uint8_t* const* sourceRows, int32_t sourceHeight, int32_t y, int32_t x, ColumnState& column,
                      const Pixel& background, uint8_t* to) {
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

// Four neighbouring columns of one format of 4-byte pixels. Each destination
// row takes them as one vector: blended in integer lanes where all four weights
// are exact and all four have a source pixel and the one above it, the
// background where none has a pixel to blend, else pixel by pixel by the
// doubles. The vector blended for the row above is the pixels above.
struct ColumnQuad {
    bool exact;
    int32_t lowestOffset, highestOffset;
    BlendLanes lanes;
    __m128i above;
    int32_t aboveRow;  // the destination row whose blend `above` holds
};

template <typename Codec>
__m128i ShearColumnQuad(uint8_t* const* sourceRows, int32_t sourceHeight, int32_t y, int32_t x,
                        const ColumnState* columns, ColumnQuad& quad, const Pixel& background,
                        __m128i backgroundVector) {
    auto gather = [&](int32_t up) {
        auto at = [&](int32_t k) {
            int32_t stored;
            std::memcpy(&stored, PixelIn<Codec>(sourceRows[y - columns[k].offset - up], x + k), 4);
            return _mm_cvtsi32_si128(stored);
        };
        return RawLanes<Codec>::Read(
            _mm_unpacklo_epi64(_mm_unpacklo_epi32(at(0), at(1)), _mm_unpacklo_epi32(at(2), at(3))));
    };
    if (quad.exact && y - quad.highestOffset >= 1 && y - quad.lowestOffset < sourceHeight) {
        const __m128i p = gather(0);
        const __m128i q = quad.aboveRow == y - 1 ? quad.above : gather(1);
        quad.above = p;
        quad.aboveRow = y;
        return RawLanes<Codec>::Write(BlendPixels(p, q, quad.lanes));
    }
    if (y - quad.lowestOffset < 0 || y - quad.highestOffset > sourceHeight) return backgroundVector;
    alignas(16) uint8_t stored[16];
    for (int32_t k = 0; k < 4; ++k)
        Codec::Write(stored + 4 * k,
                     ExtendedLinePixel<Codec>(y - columns[k].offset, sourceHeight, columns[k].weight, background,
                                              [&](int32_t j) { return PixelIn<Codec>(sourceRows[j], x + k); }));
    return _mm_load_si128(reinterpret_cast<const __m128i*>(stored));
}

constexpr int32_t kQuads = kBlockColumns / 4;
constexpr int32_t kPixelsPerLine = 16;
constexpr int32_t kRowsAhead = 8;

template <typename Source, typename Destination, typename NextSkew>
void ShearColumnBlock(uint8_t* const* sourceRows, int32_t sourceHeight, PictureWriter& destination,
                      int32_t firstColumn, int32_t count, const Pixel& background, NextSkew& nextSkew) {
    ColumnState columns[kBlockColumns];
    BlendPlan plans[kBlockColumns];
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
        if constexpr (kBlendsInIntegers<Source, Destination>) plans[k] = PlanBlend(step.weight);
    }
    ColumnQuad quads[kQuads];
    __m128i backgroundVector = _mm_setzero_si128();
    const int32_t fullQuads = kBlendsInIntegers<Source, Destination> ? count / 4 : 0;
    if constexpr (kBlendsInIntegers<Source, Destination>) {
        int32_t backgroundWord;
        uint8_t storedBackground[4];
        Destination::Write(storedBackground, background);
        std::memcpy(&backgroundWord, storedBackground, 4);
        backgroundVector = _mm_set1_epi32(backgroundWord);
        for (int32_t q = 0; q < fullQuads; ++q) {
            const BlendPlan* plan = &plans[4 * q];
            const ColumnState* quad = &columns[4 * q];
            quads[q] = {plan[0].exact && plan[1].exact && plan[2].exact && plan[3].exact,
                        std::min({quad[0].offset, quad[1].offset, quad[2].offset, quad[3].offset}),
                        std::max({quad[0].offset, quad[1].offset, quad[2].offset, quad[3].offset}),
                        LanesOf(plan[0], plan[1], plan[2], plan[3]), _mm_setzero_si128(), INT32_MIN};
        }
    }
    // The block reads a narrow strip from every source row, moving down one row
    // per destination row: too scattered for the hardware to foresee, so each
    // cache line's worth of columns asks ahead for the source row it will first
    // need kRowsAhead rows later, and for the destination row it will write.
    int32_t lineHighestRow[kBlockColumns / kPixelsPerLine + 1];
    const int32_t lines = (count + kPixelsPerLine - 1) / kPixelsPerLine;
    for (int32_t line = 0; line < lines; ++line) {
        int32_t lowestOffset = columns[line * kPixelsPerLine].offset;
        for (int32_t k = line * kPixelsPerLine; k < std::min(count, (line + 1) * kPixelsPerLine); ++k)
            lowestOffset = std::min(lowestOffset, columns[k].offset);
        lineHighestRow[line] = kRowsAhead - lowestOffset;
    }
    for (int32_t y = 0; y < destination.height; ++y) {
        uint8_t* to = destination.RowAddress(y);
        if (y + kRowsAhead < destination.height) {
            uint8_t* ahead = destination.RowAddress(y + kRowsAhead);
            for (int32_t line = 0; line < lines; ++line) {
                const int32_t x = firstColumn + line * kPixelsPerLine;
                _mm_prefetch(reinterpret_cast<const char*>(PixelIn<Destination>(ahead, x)), _MM_HINT_T0);
                const int32_t row = y + lineHighestRow[line];
                if (row >= 0 && row < sourceHeight)
                    _mm_prefetch(reinterpret_cast<const char*>(PixelIn<Source>(sourceRows[row], x)), _MM_HINT_T0);
            }
        }
        if constexpr (kBlendsInIntegers<Source, Destination>) {
            for (int32_t q = 0; q < fullQuads; ++q) {
                const int32_t x = firstColumn + 4 * q;
                StoreFourPixels(PixelIn<Destination>(to, x),
                       ShearColumnQuad<Source>(sourceRows, sourceHeight, y, x, &columns[4 * q], quads[q], background,
                                               backgroundVector));
            }
        }
        for (int32_t k = 4 * fullQuads; k < count; ++k)
            ShearColumnPixel<Source, Destination>(sourceRows, sourceHeight, y, firstColumn + k, columns[k], background,
                                                  to);
    }
}

}  // namespace skew_loops

// Rows 0 .. rows - 1 of source sheared into the same rows of destination, each
// by the skew nextSkew() gives, asked once per row in order.
template <typename NextSkew>
void ShearRows(PictureReader& source, PictureWriter& destination, int32_t rows, const Pixel& background,
               NextSkew&& nextSkew, BlendWidth width = WidestBlend()) {
    const bool specialised = DispatchFormatPair(
        source.pixelFormat, destination.pixelFormat, [&]<typename Source, typename Destination>() {
            for (int32_t y = 0; y < rows; ++y) {
                const SkewStep step = SplitSkew(nextSkew());
                if constexpr (skew_loops::kBlendsInIntegers<Source, Destination>) {
                    const BlendPlan plan = PlanBlend(step.weight);
                    if (plan.exact) {
                        const skew_loops::IntegerRow<Source> row(source.RowAddress(y), source.width,
                                                                 destination.RowAddress(y), step, plan, background);
                        if (width == BlendWidth::kAvx2)
                            skew_loops::ShearRowInIntegersWide(row, destination.width);
                        else
                            skew_loops::ShearRowInIntegers(row, destination.width);
                        continue;
                    }
                }
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
