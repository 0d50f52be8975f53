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
//   pixels at a time, or eight in AVX2 and sixteen in AVX-512 where the
//   processor has them, columns in quads of neighbours. Pixels at a line's ends,
//   and lines whose weight is not exact, take the doubles.
// - Every loop is templated on the processor's path (processor_paths.h), chosen
//   once per pass: the fastest the processor has unless told another.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <type_traits>

#include "picture/picture_editor.h"
#include "picture/pixel_formats.h"
#include "transforms/exact_blend.h"
#include "transforms/processor_paths.h"
#include "transforms/skews.h"

namespace skew_loops {

// Four pixels of one 4-byte format as sixteen channel bytes for the blend and
// back: a host bitmap's 7-bit alpha widened and narrowed again.
template <typename Codec>
constexpr bool kHostAlpha = std::is_same_v<Codec, PixelCodec<PixelFormatHostBGRA>>;

template <typename Path, typename Codec>
typename Path::Vector ChannelsOf(typename Path::Vector stored) {
    if constexpr (kHostAlpha<Codec>)
        return Path::WidenHostAlpha(stored);
    else
        return stored;
}

template <typename Path, typename Codec>
typename Path::Vector StoredOf(typename Path::Vector channels) {
    if constexpr (kHostAlpha<Codec>)
        return Path::NarrowHostAlpha(channels);
    else
        return channels;
}

// A pixel as one format of 4-byte pixels stores it, as a word.
template <typename Codec>
uint32_t StoredWord(const Pixel& pixel) {
    uint8_t stored[4];
    Codec::Write(stored, pixel);
    uint32_t word;
    std::memcpy(&word, stored, 4);
    return word;
}

template <typename Source, typename Destination>
constexpr bool kBlendsInIntegers = std::is_same_v<Source, Destination> && Source::kBytesPerPixel == 4;

// The definition's pixel at position j of a line extended by the background
// on both sides, blended after the one at j - 1: beyond the trailing pixel and
// before the first, background after background is the background again.
template <typename Path, typename Source, typename ReadAt>
Pixel ExtendedLinePixel(int32_t j, int32_t length, typename Path::Weight weight, const Pixel& background,
                        ReadAt readAt) {
    const Pixel p = j >= 0 && j < length ? Source::Read(readAt(j)) : background;
    const Pixel q = j >= 1 && j <= length ? Source::Read(readAt(j - 1)) : background;
    return Path::Blended(p, Path::Weighted(p, weight), Path::Weighted(q, weight));
}

// Four destination pixels, from extended positions j .. j + 3, by the doubles.
template <typename Path, typename Codec, typename ReadAt>
typename Path::Vector FourPixelsByDoubles(int32_t j, int32_t length, typename Path::Weight weight,
                                          const Pixel& background, ReadAt readAt) {
    uint8_t stored[16];
    for (int32_t i = 0; i < 4; ++i)
        Codec::Write(stored + 4 * i, ExtendedLinePixel<Path, Codec>(j + i, length, weight, background, readAt));
    return Path::Load(stored);
}

// One row whose weight blends exactly in integers, in destination order: every
// destination pixel d is the extended source pixel d - offset blended after its
// predecessor. Four pixels at a time, or eight or sixteen where the path has a
// wider form (BlendWideRow) and all of them have their source pixel and the one
// before it.
template <typename Path, typename Codec>
class IntegerRow {
public:
    static constexpr bool kHostAlpha = skew_loops::kHostAlpha<Codec>;

    IntegerRow(const uint8_t* from, int32_t fromWidth, uint8_t* to, SkewStep step, const BlendPlan& plan,
               const Pixel& background)
        : from_(from), fromWidth_(fromWidth), to_(to), offset_(step.offset), weight_(Path::WeightOf(step.weight)),
          plan_(plan), lanes_(Path::LanesOf(plan, plan, plan, plan)), background_(background),
          backgroundVector_(Path::Splat(StoredWord<Codec>(background))) {}

    // Destination pixels d .. d + 3.
    void Four(int32_t d) const {
        const int32_t j = d - offset_;
        typename Path::Vector pixels;
        if (j >= 1 && j + 4 <= fromWidth_)
            pixels = StoredOf<Path, Codec>(Path::Blend(ChannelsOf<Path, Codec>(Path::Load(At(j))),
                                                       ChannelsOf<Path, Codec>(Path::Load(At(j - 1))), lanes_));
        else if (j + 3 < 0 || j > fromWidth_)
            pixels = backgroundVector_;
        else
            pixels = FourPixelsByDoubles<Path, Codec>(j, fromWidth_, weight_, background_,
                                                      [this](int32_t i) { return At(i); });
        Path::Store(PixelIn<Codec>(to_, d), pixels);
    }

    void One(int32_t d) const {
        Codec::Write(PixelIn<Codec>(to_, d), ExtendedLinePixel<Path, Codec>(d - offset_, fromWidth_, weight_,
                                                                             background_,
                                                                             [this](int32_t i) { return At(i); }));
    }

    // What a wider path's loop needs.
    int32_t SourceIndex(int32_t d) const { return d - offset_; }
    int32_t SourceWidth() const { return fromWidth_; }
    const uint8_t* SourcePixel(int32_t j) const { return At(j); }
    uint8_t* DestinationPixel(int32_t d) const { return PixelIn<Codec>(to_, d); }
    const BlendPlan& Plan() const { return plan_; }

private:
    uint8_t* At(int32_t j) const { return PixelIn<Codec>(const_cast<uint8_t*>(from_), j); }

    const uint8_t* from_;
    int32_t fromWidth_;
    uint8_t* to_;
    int32_t offset_;
    typename Path::Weight weight_;
    BlendPlan plan_;
    typename Path::Lanes lanes_;
    Pixel background_;
    typename Path::Vector backgroundVector_;
};

template <typename Path, typename Codec>
void ShearRowInIntegers(const IntegerRow<Path, Codec>& row, int32_t toWidth) {
    int32_t d = 0;
    if constexpr (requires { Path::BlendWideRow(row, toWidth); }) d = Path::BlendWideRow(row, toWidth);
    for (; d + 4 <= toWidth; d += 4) row.Four(d);
    for (; d < toWidth; ++d) row.One(d);
}

// Destination pixels [begin, end) of a row set to the background.
template <typename Destination>
void FillBackground(uint8_t* to, int32_t begin, int32_t end, const Pixel& background) {
    if constexpr (Destination::kBytesPerPixel == 4) {
        const uint32_t word = StoredWord<Destination>(background);
        for (int32_t d = begin; d < end; ++d) std::memcpy(PixelIn<Destination>(to, d), &word, 4);
    } else {
        for (int32_t d = begin; d < end; ++d) Destination::Write(PixelIn<Destination>(to, d), background);
    }
}

template <typename Path, typename Source, typename Destination>
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
    const typename Path::Weight weight = Path::WeightOf(step.weight);
    const typename Path::Products backgroundProducts = Path::Weighted(background, weight);
    typename Path::Products left =
        first == 0 ? backgroundProducts : Path::Weighted(Source::Read(PixelIn<Source>(from, first - 1)), weight);
    for (int32_t x = first; x < last; ++x) {
        const Pixel p = Source::Read(PixelIn<Source>(from, x));
        const typename Path::Products own = Path::Weighted(p, weight);
        Destination::Write(PixelIn<Destination>(to, x + offset), Path::Blended(p, own, left));
        left = own;
    }
    if (trailing >= 0 && trailing < toWidth)
        Destination::Write(PixelIn<Destination>(to, trailing), Path::Blended(background, backgroundProducts, left));
}

// Columns carried down together. A block visits every destination row, and a
// strip of every source row, once; each visit lands on a page of its own, so the
// wider the block, the fewer visits per pixel. 256 columns keep the block's state
// (about 25 KB on the stack) in the first-level cache. Against 128, on an AMD
// EPYC, a 4000 x 3000 picture turned by 30 to 60 degrees took 9 to 17% less time
// on a desktop host (a world: one block of rows), and the same within 3% on a
// console host (a host bitmap: every row an allocation of its own).
constexpr int32_t kBlockColumns = 256;

template <typename Path>
struct ColumnState {
    int32_t offset;
    typename Path::Weight weight;
    typename Path::Products left;
};

// Destination pixel (x, y) of one column by the doubles, the products of the
// source pixel above carried from row to row.
template <typename Path, typename Source, typename Destination>
void ShearColumnPixel(uint8_t* const* sourceRows, int32_t sourceHeight, int32_t y, int32_t x,
                      ColumnState<Path>& column, const Pixel& background, uint8_t* to) {
    uint8_t* pixel = PixelIn<Destination>(to, x);
    const int32_t sourceRow = y - column.offset;
    if (sourceRow >= 0 && sourceRow < sourceHeight) {
        const Pixel p = Source::Read(PixelIn<Source>(sourceRows[sourceRow], x));
        const typename Path::Products own = Path::Weighted(p, column.weight);
        Destination::Write(pixel, Path::Blended(p, own, column.left));
        column.left = own;
    } else if (sourceRow == sourceHeight) {
        Destination::Write(pixel, Path::Blended(background, Path::Weighted(background, column.weight), column.left));
    } else {
        Destination::Write(pixel, background);
    }
}

// Four neighbouring columns of one format of 4-byte pixels. Each destination
// row takes them as one vector: blended in integer lanes where all four weights
// are exact and all four have a source pixel and the one above it, the
// background where none has a pixel to blend, else pixel by pixel by the
// doubles. The vector blended for the row above is the pixels above.
template <typename Path>
struct ColumnQuad {
    bool exact;
    int32_t lowestOffset, highestOffset;
    typename Path::Lanes lanes;
    typename Path::Vector above;
    int32_t aboveRow;  // the destination row whose blend `above` holds
};

template <typename Path, typename Codec>
typename Path::Vector ShearColumnQuad(uint8_t* const* sourceRows, int32_t sourceHeight, int32_t y, int32_t x,
                                      const ColumnState<Path>* columns, ColumnQuad<Path>& quad,
                                      const Pixel& background, typename Path::Vector backgroundVector) {
    auto gather = [&](int32_t up) {
        auto at = [&](int32_t k) {
            uint32_t stored;
            std::memcpy(&stored, PixelIn<Codec>(sourceRows[y - columns[k].offset - up], x + k), 4);
            return stored;
        };
        // Four columns shifted by the same whole offset, as most are in the
        // small turns that straighten a scan, find their pixels side by side in
        // one source row.
        if (quad.lowestOffset == quad.highestOffset)
            return ChannelsOf<Path, Codec>(Path::Load(PixelIn<Codec>(sourceRows[y - quad.lowestOffset - up], x)));
        return ChannelsOf<Path, Codec>(Path::FromWords(at(0), at(1), at(2), at(3)));
    };
    if (quad.exact && y - quad.highestOffset >= 1 && y - quad.lowestOffset < sourceHeight) {
        const typename Path::Vector p = gather(0);
        const typename Path::Vector q = quad.aboveRow == y - 1 ? quad.above : gather(1);
        quad.above = p;
        quad.aboveRow = y;
        return StoredOf<Path, Codec>(Path::Blend(p, q, quad.lanes));
    }
    if (y - quad.lowestOffset < 0 || y - quad.highestOffset > sourceHeight) return backgroundVector;
    uint8_t stored[16];
    for (int32_t k = 0; k < 4; ++k)
        Codec::Write(stored + 4 * k, ExtendedLinePixel<Path, Codec>(
                                         y - columns[k].offset, sourceHeight, columns[k].weight, background,
                                         [&](int32_t j) { return PixelIn<Codec>(sourceRows[j], x + k); }));
    return Path::Load(stored);
}

constexpr int32_t kQuads = kBlockColumns / 4;
constexpr int32_t kPixelsPerLine = 16;
constexpr int32_t kRowsAhead = 8;

template <typename Path, typename Source, typename Destination, typename NextSkew>
void ShearColumnBlock(uint8_t* const* sourceRows, int32_t sourceHeight, PictureWriter& destination,
                      int32_t firstColumn, int32_t count, const Pixel& background, NextSkew& nextSkew) {
    ColumnState<Path> columns[kBlockColumns];
    BlendPlan plans[kBlockColumns];
    for (int32_t k = 0; k < count; ++k) {
        const SkewStep step = SplitSkew(nextSkew());
        ColumnState<Path>& column = columns[k];
        const typename Path::Weight weight = Path::WeightOf(step.weight);
        column = {step.offset, weight, Path::Weighted(background, weight)};
        // A column shifted up starts inside the source; its first blend needs
        // the products of the source pixel just above.
        const int32_t above = -step.offset - 1;
        if (above >= 0 && above < sourceHeight)
            column.left = Path::Weighted(Source::Read(PixelIn<Source>(sourceRows[above], firstColumn + k)), weight);
        if constexpr (kBlendsInIntegers<Source, Destination>) plans[k] = PlanBlend(step.weight);
    }
    ColumnQuad<Path> quads[kQuads];
    typename Path::Vector backgroundVector = Path::Splat(0);
    const int32_t fullQuads = kBlendsInIntegers<Source, Destination> ? count / 4 : 0;
    if constexpr (kBlendsInIntegers<Source, Destination>) {
        backgroundVector = Path::Splat(StoredWord<Destination>(background));
        for (int32_t q = 0; q < fullQuads; ++q) {
            const BlendPlan* plan = &plans[4 * q];
            const ColumnState<Path>* quad = &columns[4 * q];
            quads[q] = {plan[0].exact && plan[1].exact && plan[2].exact && plan[3].exact,
                        std::min({quad[0].offset, quad[1].offset, quad[2].offset, quad[3].offset}),
                        std::max({quad[0].offset, quad[1].offset, quad[2].offset, quad[3].offset}),
                        Path::LanesOf(plan[0], plan[1], plan[2], plan[3]), Path::Splat(0), INT32_MIN};
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
                __builtin_prefetch(PixelIn<Destination>(ahead, x), 0, 3);
                const int32_t row = y + lineHighestRow[line];
                if (row >= 0 && row < sourceHeight) __builtin_prefetch(PixelIn<Source>(sourceRows[row], x), 0, 3);
            }
        }
        if constexpr (kBlendsInIntegers<Source, Destination>) {
            for (int32_t q = 0; q < fullQuads; ++q) {
                const int32_t x = firstColumn + 4 * q;
                Path::Store(PixelIn<Destination>(to, x),
                            ShearColumnQuad<Path, Source>(sourceRows, sourceHeight, y, x, &columns[4 * q], quads[q],
                                                          background, backgroundVector));
            }
        }
        for (int32_t k = 4 * fullQuads; k < count; ++k)
            ShearColumnPixel<Path, Source, Destination>(sourceRows, sourceHeight, y, firstColumn + k, columns[k],
                                                        background, to);
    }
}

}  // namespace skew_loops

// Rows 0 .. rows - 1 of source sheared into the same rows of destination, each
// by the skew nextSkew() gives, asked once per row in order.
template <typename NextSkew>
void ShearRows(PictureReader& source, PictureWriter& destination, int32_t rows, const Pixel& background,
               NextSkew&& nextSkew, ProcessorPath path = FastestPath()) {
    bool specialised = false;
    WithPath(path, [&]<typename Path>() {
        specialised = DispatchFormatPair(
            source.pixelFormat, destination.pixelFormat, [&]<typename Source, typename Destination>() {
                for (int32_t y = 0; y < rows; ++y) {
                    const SkewStep step = SplitSkew(nextSkew());
                    if constexpr (skew_loops::kBlendsInIntegers<Source, Destination>) {
                        const BlendPlan plan = PlanBlend(step.weight);
                        if (plan.exact) {
                            skew_loops::ShearRowInIntegers(
                                skew_loops::IntegerRow<Path, Source>(source.RowAddress(y), source.width,
                                                                     destination.RowAddress(y), step, plan,
                                                                     background),
                                destination.width);
                            continue;
                        }
                    }
                    skew_loops::ShearRow<Path, Source, Destination>(source.RowAddress(y), source.width,
                                                                    destination.RowAddress(y), destination.width,
                                                                    step, background);
                }
            });
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
                  NextSkew&& nextSkew, ProcessorPath path = FastestPath()) {
    const int32_t sourceHeight = source.height;
    // A host bitmap brings its own table of row addresses; a world's rows are
    // found by stride, so the pass makes their table, the one buffer it keeps
    // besides its pictures.
    const bool hostTable = source.pixelFormat == PixelFormatHostBGRA && source.rowTable != nullptr;
    const size_t tableLength = static_cast<size_t>(std::max(sourceHeight, 1));
    const std::unique_ptr<uint8_t*, decltype(&std::free)> madeRows(
        hostTable ? nullptr : static_cast<uint8_t**>(std::calloc(tableLength, sizeof(uint8_t*))), &std::free);
    uint8_t* const* sourceRows = hostTable ? source.rowTable : madeRows.get();
    bool specialised = false;
    if (sourceRows != nullptr)
        WithPath(path, [&]<typename Path>() {
            specialised = DispatchFormatPair(
                source.pixelFormat, destination.pixelFormat, [&]<typename Source, typename Destination>() {
                    if (madeRows != nullptr)
                        for (int32_t y = 0; y < sourceHeight; ++y) madeRows.get()[y] = source.RowAddress(y);
                    for (int32_t first = 0; first < columns; first += skew_loops::kBlockColumns)
                        skew_loops::ShearColumnBlock<Path, Source, Destination>(
                            sourceRows, sourceHeight, destination, first,
                            std::min(skew_loops::kBlockColumns, columns - first), background, nextSkew);
                });
        });
    if (specialised) return;
    for (int32_t x = 0; x < columns; ++x) {
        const SkewStep step = SplitSkew(nextSkew());
        VertSkew(source, destination, x, step.offset, step.weight, background.r, background.g, background.b,
                 background.a);
    }
}
