// The fuzz target's oracle. For each method that succeeded it forms the picture
// the slow models give for the receiver as it was before the call, stores it in
// a picture of the result's own storage (so a host bitmap's 7-bit alpha or a
// 24-bit world's missing alpha is accounted for the way the host stores it),
// and compares pixel by pixel.
#include "fuzz/expected_results.h"

#include <algorithm>
#include <functional>
#include <sstream>

namespace pixturn_fuzz {
namespace {

using simhost::SimulatedHost;
using test_support::Image;

// Destination (x, y) of a width x height picture comes from source pixel from(x, y).
Image Remap(const Image& source, int32_t width, int32_t height,
            const std::function<std::pair<int32_t, int32_t>(int32_t, int32_t)>& from) {
    Image result{width, height, std::vector<simhost::Rgba>(static_cast<size_t>(width) * height)};
    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width; ++x) {
            const auto [sx, sy] = from(x, y);
            result.at(x, y) = source.at(sx, sy);
        }
    return result;
}

// The mirrors and turns that move pixels without changing them.
std::optional<Image> Rearranged(Method method, const Image& source) {
    const int32_t w = source.width;
    const int32_t h = source.height;
    using Position = std::pair<int32_t, int32_t>;
    switch (method) {
    case Method::Mirror:
    case Method::MirrorInPlace:
    case Method::Rotate180:
        return Remap(source, w, h, [&](int32_t x, int32_t y) { return Position{w - 1 - x, h - 1 - y}; });
    case Method::HMirror:
    case Method::HMirrorInPlace:
        return Remap(source, w, h, [&](int32_t x, int32_t y) { return Position{w - 1 - x, y}; });
    case Method::VMirror:
    case Method::VMirrorInPlace:
        return Remap(source, w, h, [&](int32_t x, int32_t y) { return Position{x, h - 1 - y}; });
    case Method::Rotate90:
        return Remap(source, h, w, [&](int32_t x, int32_t y) { return Position{w - 1 - y, x}; });
    case Method::Rotate270:
        return Remap(source, h, w, [&](int32_t x, int32_t y) { return Position{y, h - 1 - x}; });
    case Method::Clone:
    case Method::Bitmap:
        return source;
    default:
        return std::nullopt;
    }
}

// The image as the host shows it once stored in a picture of that storage.
Image StoredAs(SimulatedHost& host, simhost::Storage storage, const Image& image) {
    if (image.width < 1 || image.height < 1) return image;
    REALpicture scratch = host.MakePicture(storage, image.width, image.height);
    test_support::WriteImage(host, scratch, image);
    Image stored = test_support::ReadImage(host, scratch);
    host.Release(scratch);
    return stored;
}

std::string Describe(const Image& actual, const Image& expected) {
    std::ostringstream out;
    if (actual.width != expected.width || actual.height != expected.height) {
        out << "size " << actual.width << "x" << actual.height << ", expected " << expected.width << "x"
            << expected.height;
        return out.str();
    }
    for (int32_t y = 0; y < actual.height; ++y)
        for (int32_t x = 0; x < actual.width; ++x) {
            const simhost::Rgba a = actual.at(x, y);
            const simhost::Rgba e = expected.at(x, y);
            if (a == e) continue;
            out << "pixel (" << x << ", " << y << ") is " << int(a.r) << "," << int(a.g) << "," << int(a.b) << ","
                << int(a.a) << ", expected " << int(e.r) << "," << int(e.g) << "," << int(e.b) << "," << int(e.a);
            return out.str();
        }
    return {};
}

// The top-left part both pictures share.
std::string CompareOverlap(const Image& actual, const Image& expected) {
    const int32_t width = std::min(actual.width, expected.width);
    const int32_t height = std::min(actual.height, expected.height);
    auto crop = [&](const Image& image) {
        return Remap(image, width, height, [](int32_t x, int32_t y) { return std::pair{x, y}; });
    };
    return Describe(crop(actual), crop(expected));
}

}  // namespace

Snapshot TakeSnapshot(const SimulatedHost& host, REALpicture picture) {
    Snapshot snapshot;
    if (picture == nullptr) return snapshot;
    snapshot.picture = test_support::ReadImage(host, picture);
    if (REALpicture mask = host.MaskOf(picture)) snapshot.mask = test_support::ReadImage(host, mask);
    return snapshot;
}

bool IsInPlace(Method method) {
    return method == Method::MirrorInPlace || method == Method::VMirrorInPlace || method == Method::HMirrorInPlace;
}

std::string CompareWithModels(SimulatedHost& host, const FuzzCase& fuzzCase, const Snapshot& before,
                              REALpicture receiver, const Outcome& outcome) {
    if (!before.picture) return {};
    const Image& source = *before.picture;

    if (IsInPlace(fuzzCase.method)) {
        if (!outcome.flag) return {};
        const Snapshot after = TakeSnapshot(host, receiver);
        if (after.mask != before.mask) return "the in-place mirror changed the mask";
        return Describe(*after.picture, *Rearranged(fuzzCase.method, source));
    }
    if (outcome.picture == nullptr) return {};
    const Image actual = test_support::ReadImage(host, outcome.picture);
    const simhost::Storage storage = host.StorageOf(outcome.picture);

    if (fuzzCase.method == Method::CloneToSize) {
        if (actual.width != fuzzCase.width || actual.height != fuzzCase.height)
            return Describe(actual, Image{fuzzCase.width, fuzzCase.height, {}});
        return CompareOverlap(actual, StoredAs(host, storage, source));
    }
    if (const std::optional<Image> expected = Rearranged(fuzzCase.method, source))
        return Describe(actual, StoredAs(host, storage, *expected));
    return {};
}

}  // namespace pixturn_fuzz
