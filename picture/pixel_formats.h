// The three pixel formats a bound picture can have, each defined once, as a codec
// between its bytes in memory and the four channels of a pixel in transit.
// PictureEditor::GetPixel and SetPixel pick the codec by the picture's format
// for every pixel; loops specialised by format pick theirs once per pass from the
// (source, destination) format pair and run with no format test per pixel.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <utility>

enum PixelFormat : int32_t {
    PixelFormatNone = 0,
    PixelFormatHostBGRA = 8,   // B, G, R, X; alpha in the low 7 bits of X
    PixelFormatRGB24 = 12,     // R, G, B; reads as opaque
    PixelFormatARGB32 = 13,    // A, R, G, B
};

// A pixel in transit: four channels of 0..255 (only the low 8 bits are stored).
struct Pixel {
    int32_t r, g, b, a;
    friend bool operator==(const Pixel&, const Pixel&) = default;
};

template <int32_t Format>
struct PixelCodec;

template <>
struct PixelCodec<PixelFormatARGB32> {
    static constexpr int32_t kBytesPerPixel = 4;
    // The bits of a pixel's little-endian word that Write(Read(word)) gives back.
    static constexpr uint32_t kBitsKept = 0xFFFFFFFF;
    static Pixel Read(const uint8_t* p) { return {p[1], p[2], p[3], p[0]}; }
    static void Write(uint8_t* p, const Pixel& v) {
        p[0] = static_cast<uint8_t>(v.a);
        p[1] = static_cast<uint8_t>(v.r);
        p[2] = static_cast<uint8_t>(v.g);
        p[3] = static_cast<uint8_t>(v.b);
    }
};

template <>
struct PixelCodec<PixelFormatRGB24> {
    static constexpr int32_t kBytesPerPixel = 3;
    static Pixel Read(const uint8_t* p) { return {p[0], p[1], p[2], 255}; }
    static void Write(uint8_t* p, const Pixel& v) {
        p[0] = static_cast<uint8_t>(v.r);
        p[1] = static_cast<uint8_t>(v.g);
        p[2] = static_cast<uint8_t>(v.b);
    }
};

// The host keeps 7 bits of alpha; reading widens them back to 0..255.
template <>
struct PixelCodec<PixelFormatHostBGRA> {
    static constexpr int32_t kBytesPerPixel = 4;
    static constexpr uint32_t kBitsKept = 0x7FFFFFFF;
    static Pixel Read(const uint8_t* p) {
        const int32_t v = p[3] & 0x7F;
        return {p[2], p[1], p[0], v * 2 + (v & 1)};
    }
    static void Write(uint8_t* p, const Pixel& v) {
        p[0] = static_cast<uint8_t>(v.b);
        p[1] = static_cast<uint8_t>(v.g);
        p[2] = static_cast<uint8_t>(v.r);
        p[3] = static_cast<uint8_t>((v.a & 0xFF) >> 1);
    }
};

// One pixel stored at `to` as Destination::Write(to, Source::Read(from)) stores
// it. Within one format that is a copy of the bytes, but for a host bitmap's alpha
// byte, whose eighth bit Write never sets.
template <typename Source, typename Destination>
inline void CopyPixel(const uint8_t* from, uint8_t* to) {
    if constexpr (std::is_same_v<Source, PixelCodec<PixelFormatHostBGRA>> && std::is_same_v<Source, Destination>) {
        // One 4-byte word, so that the loops around it can be vectorised.
        uint32_t word;
        std::memcpy(&word, from, 4);
        word &= Source::kBitsKept;
        std::memcpy(to, &word, 4);
    } else if constexpr (std::is_same_v<Source, Destination>) {
        std::memcpy(to, from, Source::kBytesPerPixel);
    } else {
        Destination::Write(to, Source::Read(from));
    }
}

// Pixel x of a row of Codec's pixels.
template <typename Codec>
inline uint8_t* PixelIn(uint8_t* row, int32_t x) {
    return row + static_cast<ptrdiff_t>(x) * Codec::kBytesPerPixel;
}

// Calls visitor.template operator()<SourceCodec, DestinationCodec>() for the two
// editors' formats and returns true, or returns false for a format without a codec
// (the caller then takes the plain per-pixel path).
template <typename Visitor>
bool DispatchFormatPair(int32_t sourceFormat, int32_t destinationFormat, Visitor&& visitor) {
    auto withDestination = [&]<typename Source>() {
        switch (destinationFormat) {
            case PixelFormatARGB32: visitor.template operator()<Source, PixelCodec<PixelFormatARGB32>>(); return true;
            case PixelFormatRGB24: visitor.template operator()<Source, PixelCodec<PixelFormatRGB24>>(); return true;
            case PixelFormatHostBGRA: visitor.template operator()<Source, PixelCodec<PixelFormatHostBGRA>>(); return true;
            default: return false;
        }
    };
    switch (sourceFormat) {
        case PixelFormatARGB32: return withDestination.template operator()<PixelCodec<PixelFormatARGB32>>();
        case PixelFormatRGB24: return withDestination.template operator()<PixelCodec<PixelFormatRGB24>>();
        case PixelFormatHostBGRA: return withDestination.template operator()<PixelCodec<PixelFormatHostBGRA>>();
        default: return false;
    }
}
