#include "simhost/picture_storage.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <string_view>
#include <new>

#include "platform/macos/macos_system.h"

namespace simhost::internal {

namespace {

constexpr std::align_val_t kRowAlignment{64};

int16_t DepthOf(Storage storage) {
    switch (storage) {
        case Storage::GWorld32: return 32;
        case Storage::GWorld24: return 24;
        case Storage::GWorld16: return 16;
        default: return 0;
    }
}

void WriteWord(uint8_t* record, size_t offset, int32_t word) { std::memcpy(record + offset, &word, sizeof word); }

// Depth 16 keeps 5 bits a channel; reading widens them back over the full range.
uint8_t Widen5(uint16_t word, int shift) {
    const uint8_t v = (word >> shift) & 0x1F;
    return static_cast<uint8_t>(v << 3 | v >> 2);
}

}  // namespace

PictureStore::PictureStore(Storage storage, int32_t width, int32_t height, int32_t rowPadding, Rgba initial)
    : storage_(storage), width_(width), height_(height) {
    switch (storage) {
        case Storage::GWorld32:
        case Storage::GWorld24:
        case Storage::GWorld16: {
            const int16_t depth = DepthOf(storage);
            world_ = macos_system::NewWorld(width, height, depth, width * (depth / 8) + rowPadding);
            worldPixels_ = macos_system::WorldPixels(world_);
            worldRowBytes_ = macos_system::WorldRowBytes(world_);
            break;
        }
        case Storage::HostBitmap: {
            using namespace host_bitmap;
            rowTable_ = std::make_unique<uint8_t*[]>(height > 0 ? height : 1);
            rows_.reserve(static_cast<size_t>(std::max(height, 0)));
            for (int32_t y = 0; y < height; ++y) {
                rows_.emplace_back(new (kRowAlignment) uint8_t[static_cast<size_t>(width) * 4]);
                rowTable_[y] = rows_.back().get();
            }
            record_ = std::make_unique<uint8_t[]>(kRecordSize);
            WriteWord(record_.get(), kWidthOffset, width);
            WriteWord(record_.get(), kHeightOffset, height);
            WriteWord(record_.get(), kValidWordOffset, 1);
            uint8_t** table = rowTable_.get();
            std::memcpy(record_.get() + kRowTableOffset, &table, sizeof table);
            break;
        }
        case Storage::VectorOnly:
            break;
    }
    Fill(initial);
}

void PictureStore::FreeRow::operator()(uint8_t* row) const { operator delete[](row, kRowAlignment); }

PictureStore::~PictureStore() {
    if (world_ != nullptr) macos_system::DisposeWorld(world_);
}

int32_t PictureStore::BytesPerPixel() const {
    switch (storage_) {
        case Storage::GWorld24: return 3;
        case Storage::GWorld16: return 2;
        default: return 4;
    }
}

uint8_t* PictureStore::Address(int32_t x, int32_t y) const {
    if (storage_ == Storage::HostBitmap) return rowTable_[y] + static_cast<size_t>(x) * 4;
    return worldPixels_ + static_cast<size_t>(y) * worldRowBytes_ + static_cast<size_t>(x) * BytesPerPixel();
}

namespace {

// One stored pixel of a storage that keeps bytes, as the host reads and writes it;
// a template on the storage, so that a row's loop decides it once.
template <Storage kind>
Rgba DecodeAs(const uint8_t* p) {
    if constexpr (kind == Storage::GWorld32) {
        return {p[1], p[2], p[3], p[0]};
    } else if constexpr (kind == Storage::GWorld24) {
        return {p[0], p[1], p[2], 255};
    } else if constexpr (kind == Storage::GWorld16) {
        const uint16_t word = static_cast<uint16_t>(p[0] | p[1] << 8);
        return {Widen5(word, 10), Widen5(word, 5), Widen5(word, 0), uint8_t(word & 0x8000 ? 255 : 0)};
    } else {
        const int alpha = p[3] & 0x7F;
        return {p[2], p[1], p[0], static_cast<uint8_t>(alpha * 2 + (alpha & 1))};
    }
}

template <Storage kind>
void EncodeAs(uint8_t* p, Rgba pixel) {
    if constexpr (kind == Storage::GWorld32) {
        p[0] = pixel.a, p[1] = pixel.r, p[2] = pixel.g, p[3] = pixel.b;
    } else if constexpr (kind == Storage::GWorld24) {
        p[0] = pixel.r, p[1] = pixel.g, p[2] = pixel.b;
    } else if constexpr (kind == Storage::GWorld16) {
        const uint16_t word = static_cast<uint16_t>((pixel.a >= 128 ? 0x8000 : 0) | (pixel.r >> 3) << 10 |
                                                    (pixel.g >> 3) << 5 | pixel.b >> 3);
        p[0] = static_cast<uint8_t>(word);
        p[1] = static_cast<uint8_t>(word >> 8);
    } else {
        p[0] = pixel.b, p[1] = pixel.g, p[2] = pixel.r, p[3] = pixel.a >> 1;
    }
}

Rgba Decode(Storage storage, const uint8_t* p) {
    switch (storage) {
        case Storage::GWorld32: return DecodeAs<Storage::GWorld32>(p);
        case Storage::GWorld24: return DecodeAs<Storage::GWorld24>(p);
        case Storage::GWorld16: return DecodeAs<Storage::GWorld16>(p);
        default: return DecodeAs<Storage::HostBitmap>(p);
    }
}

void Encode(Storage storage, uint8_t* p, Rgba pixel) {
    switch (storage) {
        case Storage::GWorld32: return EncodeAs<Storage::GWorld32>(p, pixel);
        case Storage::GWorld24: return EncodeAs<Storage::GWorld24>(p, pixel);
        case Storage::GWorld16: return EncodeAs<Storage::GWorld16>(p, pixel);
        default: return EncodeAs<Storage::HostBitmap>(p, pixel);
    }
}

}  // namespace

Rgba PictureStore::Read(int32_t x, int32_t y) const {
    if (storage_ == Storage::VectorOnly) return drawing_.empty() ? fill_ : drawing_[static_cast<size_t>(y) * width_ + x];
    return Decode(storage_, Address(x, y));
}

void PictureStore::Write(int32_t x, int32_t y, Rgba pixel) {
    if (storage_ == Storage::VectorOnly) {
        if (drawing_.empty()) drawing_.assign(static_cast<size_t>(width_) * height_, fill_);
        drawing_[static_cast<size_t>(y) * width_ + x] = pixel;
        return;
    }
    Encode(storage_, Address(x, y), pixel);
}

namespace {

constexpr size_t StoredBytes(Storage storage) {
    return storage == Storage::GWorld24 ? 3 : storage == Storage::GWorld16 ? 2 : 4;
}

// A row in one storage kind, decided once for the row rather than at every
// pixel: tests and the fuzz target move every picture they make or check through
// these a row at a time.
template <Storage kind>
void EncodeRow(uint8_t* p, const Rgba* pixels, int32_t width) {
    for (int32_t x = 0; x < width; ++x, p += StoredBytes(kind)) EncodeAs<kind>(p, pixels[x]);
}

template <Storage kind>
void DecodeRow(const uint8_t* p, Rgba* pixels, int32_t width) {
    for (int32_t x = 0; x < width; ++x, p += StoredBytes(kind)) pixels[x] = DecodeAs<kind>(p);
}

}  // namespace

void PictureStore::WriteRow(int32_t y, const Rgba* pixels) {
    uint8_t* p = storage_ == Storage::VectorOnly ? nullptr : Address(0, y);
    switch (storage_) {
        case Storage::GWorld32: return EncodeRow<Storage::GWorld32>(p, pixels, width_);
        case Storage::GWorld24: return EncodeRow<Storage::GWorld24>(p, pixels, width_);
        case Storage::GWorld16: return EncodeRow<Storage::GWorld16>(p, pixels, width_);
        case Storage::HostBitmap: return EncodeRow<Storage::HostBitmap>(p, pixels, width_);
        case Storage::VectorOnly:
            for (int32_t x = 0; x < width_; ++x) Write(x, y, pixels[x]);
            return;
    }
}

void PictureStore::ReadRow(int32_t y, Rgba* pixels) const {
    const uint8_t* p = storage_ == Storage::VectorOnly ? nullptr : Address(0, y);
    switch (storage_) {
        case Storage::GWorld32: return DecodeRow<Storage::GWorld32>(p, pixels, width_);
        case Storage::GWorld24: return DecodeRow<Storage::GWorld24>(p, pixels, width_);
        case Storage::GWorld16: return DecodeRow<Storage::GWorld16>(p, pixels, width_);
        case Storage::HostBitmap: return DecodeRow<Storage::HostBitmap>(p, pixels, width_);
        case Storage::VectorOnly:
            for (int32_t x = 0; x < width_; ++x) pixels[x] = Read(x, y);
            return;
    }
}

std::vector<uint8_t> PictureStore::RawBytes(int32_t x, int32_t y) const {
    if (storage_ == Storage::VectorOnly) return {};
    const uint8_t* p = Address(x, y);
    return std::vector<uint8_t>(p, p + BytesPerPixel());
}

void PictureStore::SetRawBytes(int32_t x, int32_t y, const std::vector<uint8_t>& bytes) {
    if (storage_ == Storage::VectorOnly || bytes.size() != static_cast<size_t>(BytesPerPixel())) return;
    std::memcpy(Address(x, y), bytes.data(), bytes.size());
}

template <typename EachRow>
void PictureStore::ForEachStoredRow(EachRow eachRow) const {
    if (width_ <= 0 || height_ <= 0) return;
    // A drawing keeps no bytes of its own: what it shows stands for them.
    std::vector<Rgba> shown(storage_ == Storage::VectorOnly ? width_ : 0);
    const size_t rowLength = static_cast<size_t>(width_) * (shown.empty() ? BytesPerPixel() : sizeof(Rgba));
    for (int32_t y = 0; y < height_; ++y) {
        if (!shown.empty()) ReadRow(y, shown.data());
        const auto* row = shown.empty() ? Address(0, y) : reinterpret_cast<const uint8_t*>(shown.data());
        eachRow(row, rowLength);
    }
}

size_t PictureStore::StoredBytesHash() const {
    size_t combined = 0;
    ForEachStoredRow([&combined](const uint8_t* row, size_t length) {
        const std::string_view bytes(reinterpret_cast<const char*>(row), length);
        combined = combined * 1000003 ^ std::hash<std::string_view>{}(bytes);
    });
    return combined;
}

// Sized once and filled row by row with memcpy: the fuzz target takes these bytes
// twice a call, and under AddressSanitizer a vector's insert copies with the
// sanitizer's own byte-by-byte memmove, which took a tenth of its time.
std::vector<uint8_t> PictureStore::StoredBytes() const {
    std::vector<uint8_t> bytes;
    size_t filled = 0;
    ForEachStoredRow([this, &bytes, &filled](const uint8_t* row, size_t length) {
        if (bytes.empty()) bytes.resize(length * static_cast<size_t>(height_));
        std::memcpy(bytes.data() + filled, row, length);
        filled += length;
    });
    return bytes;
}

void PictureStore::Fill(Rgba pixel) {
    if (storage_ == Storage::VectorOnly) {
        drawing_.clear();
        fill_ = pixel;
        return;
    }
    if (width_ < 0 || height_ <= 0) return;
    const size_t rowLength = static_cast<size_t>(width_) * BytesPerPixel();
    // A world's row padding holds no pixel; it is kept at zero.
    const size_t padding = world_ != nullptr ? static_cast<size_t>(worldRowBytes_) - rowLength : 0;
    uint8_t* firstRow = Address(0, 0);
    if (width_ > 0) Write(0, 0, pixel);
    for (size_t done = BytesPerPixel(); done < rowLength; done *= 2)
        std::memcpy(firstRow + done, firstRow, std::min(done, rowLength - done));
    for (int32_t y = 0; y < height_; ++y) {
        uint8_t* row = Address(0, y);
        if (y > 0) std::memcpy(row, firstRow, rowLength);
        std::memset(row + rowLength, 0, padding);
    }
}

void PictureStore::Draw(const PictureStore& source, int32_t sourceX, int32_t sourceY, int32_t x, int32_t y,
                        int32_t width, int32_t height) {
    if (source.storage_ != storage_ || storage_ == Storage::VectorOnly) {
        for (int32_t row = 0; row < height; ++row)
            for (int32_t column = 0; column < width; ++column)
                Write(x + column, y + row, source.Read(sourceX + column, sourceY + row));
        return;
    }
    const size_t length = static_cast<size_t>(width) * BytesPerPixel();
    for (int32_t row = 0; row < height; ++row) {
        uint8_t* to = Address(x, y + row);
        std::memcpy(to, source.Address(sourceX, sourceY + row), length);
        // Write keeps 7 bits of a host bitmap's alpha; its eighth may have been
        // set by a plug-in writing raw bytes.
        if (storage_ == Storage::HostBitmap)
            for (size_t i = 3; i < length; i += 4) to[i] &= 0x7F;
    }
}

std::optional<REALpictureDescription> PictureStore::Describe(int32_t requestedType) const {
    REALpictureDescription description{};
    description.width = width_;
    description.height = height_;
    const bool isWorld = world_ != nullptr;
    const int32_t ownType = isWorld ? kPictureTypeGWorld
                            : storage_ == Storage::HostBitmap ? kPictureTypeHostBitmap
                                                              : kPictureTypeVector;
    // Any picture can be handed out as a picture object (type 8); its data is
    // the host's and never read by a plug-in.
    if (requestedType != 0 && requestedType != ownType && requestedType != kPictureTypeVector) return std::nullopt;
    description.pictureType = requestedType == 0 ? ownType : requestedType;
    if (description.pictureType == kPictureTypeGWorld) description.pictureData = world_;
    if (description.pictureType == kPictureTypeHostBitmap) description.pictureData = record_.get();
    return description;
}

void PictureStore::Malform(SimulatedHost::RecordDefect defect) {
    if (record_ == nullptr) return;
    using namespace host_bitmap;
    switch (defect) {
        case SimulatedHost::RecordDefect::FirstWordNotZero: WriteWord(record_.get(), kZeroWordOffset, 1); break;
        case SimulatedHost::RecordDefect::ValidityWordZero: WriteWord(record_.get(), kValidWordOffset, 0); break;
        case SimulatedHost::RecordDefect::NoRowTable: std::memset(record_.get() + kRowTableOffset, 0, sizeof(void*)); break;
    }
}

}  // namespace simhost::internal
