// How the simulated host stores a picture's pixels, in each of its storage kinds,
// and how it describes a picture to a plug-in's description lock.
//
// Desktop pictures are QuickDraw offscreen worlds whose rows carry padding, so a
// plug-in that steps rows by width instead of row bytes reads the wrong pixels.
// Host bitmaps keep every row in an allocation of its own, exactly width x 4
// bytes, listed in the record's row table: rows are not contiguous, and a read one
// past a row is caught by AddressSanitizer. Each row starts on a cache line, as
// an image allocator's rows would (copies between misaligned rows run markedly
// slower, which would blur the benchmarks). The record itself is exactly as long
// as its last word.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "platform/macos/QuickDraw.h"
#include "platform/xojo/rb_plugin.h"
#include "simhost/simulated_host.h"

namespace simhost::internal {

class PictureStore {
public:
    // Every pixel starts as initial, stored as Write stores it; a world's row
    // padding as zero bytes.
    PictureStore(Storage storage, int32_t width, int32_t height, int32_t rowPadding, Rgba initial);
    ~PictureStore();
    PictureStore(const PictureStore&) = delete;
    PictureStore& operator=(const PictureStore&) = delete;

    Storage storage() const { return storage_; }
    int32_t width() const { return width_; }
    int32_t height() const { return height_; }
    bool Contains(int32_t x, int32_t y) const { return x >= 0 && y >= 0 && x < width_ && y < height_; }

    // The host's own reading and writing of a pixel: 8-bit channels, widened or
    // narrowed to what the storage keeps (5-bit channels and a 1-bit alpha at
    // depth 16, no alpha at depth 24, 7-bit alpha in host bitmaps).
    Rgba Read(int32_t x, int32_t y) const;
    void Write(int32_t x, int32_t y, Rgba pixel);
    // Row y, width pixels, as Write and Read store and give each of them.
    void WriteRow(int32_t y, const Rgba* pixels);
    void ReadRow(int32_t y, Rgba* pixels) const;
    std::vector<uint8_t> RawBytes(int32_t x, int32_t y) const;
    void SetRawBytes(int32_t x, int32_t y, const std::vector<uint8_t>& bytes);
    // Every pixel's stored bytes, row after row, without a world's row padding,
    // and a hash of them.
    std::vector<uint8_t> StoredBytes() const;
    size_t StoredBytesHash() const;

    // Every pixel set to one colour, as Write would store it. A whole row at a
    // time, so that making a large picture costs what a host's fill costs.
    void Fill(Rgba pixel);
    // A width x height block of source, from (sourceX, sourceY), written at
    // (x, y) as Write would store each pixel Read gives; both blocks must lie
    // inside their pictures. Rows of the same storage are copied whole.
    void Draw(const PictureStore& source, int32_t sourceX, int32_t sourceY, int32_t x, int32_t y, int32_t width,
              int32_t height);

    // What a description lock asking for that type fills in, or nullopt when the
    // picture cannot be seen that way. Type 0 stands for the older lock, which
    // describes the picture as whatever it is.
    std::optional<REALpictureDescription> Describe(int32_t requestedType) const;

    void Malform(SimulatedHost::RecordDefect defect);
    GWorldPtr world() const { return world_; }

private:
    int32_t BytesPerPixel() const;
    uint8_t* Address(int32_t x, int32_t y) const;
    template <typename EachRow>
    void ForEachStoredRow(EachRow eachRow) const;

    Storage storage_;
    int32_t width_;
    int32_t height_;
    GWorldPtr world_ = nullptr;                      // the GWorld kinds
    uint8_t* worldPixels_ = nullptr;
    int32_t worldRowBytes_ = 0;
    std::unique_ptr<uint8_t[]> record_;              // host bitmaps: the record
    struct FreeRow {
        void operator()(uint8_t* row) const;
    };
    std::vector<std::unique_ptr<uint8_t[], FreeRow>> rows_;  // host bitmaps: one allocation per row
    std::unique_ptr<uint8_t*[]> rowTable_;           // host bitmaps: at least one entry
    // VectorOnly: what the host draws, made at the first pixel written, so that a
    // picture only measured (its Width and Height read) costs no pixel memory.
    std::vector<Rgba> drawing_;
    Rgba fill_{};
};

}  // namespace simhost::internal
