// The fuzz target's oracle. For each method that succeeded it forms what the
// slow models give for the picture as it was before the call and compares it
// pixel by pixel. Pixels are compared as the host shows them once stored, so a
// host bitmap's 7-bit alpha or a 24-bit world's missing alpha is accounted for
// the way the host stores it.
#include "fuzz/expected_results.h"

#include <algorithm>
#include <cmath>
#include <sstream>

#include "tests/support/rotation_model.h"

namespace pixturn_fuzz {
namespace {

using simhost::HostKind;
using simhost::MethodForm;
using simhost::Rgba;
using simhost::SimulatedHost;
using simhost::Storage;
using test_support::Image;

// The rotation models normalise angles by whole turns, one step at a time.
constexpr double kLargestModelledAngle = 1e6;
constexpr uint32_t kAllOnesBackground = 0xFFFFFFFF;

// The mirrors and turns that move pixels without changing them.
std::optional<Image> Rearranged(const simhost::PictureMethod* method, const Image& source) {
    using test_support::Rearrangement;
    namespace m = simhost::methods;
    const auto is = [&](auto... candidates) { return ((method == candidates) || ...); };
    if (is(&m::kMirror, &m::kMirrorInPlace, &m::kRotate180))
        return test_support::Rearranged(source, Rearrangement::BothWays);
    if (is(&m::kHMirror, &m::kHMirrorInPlace)) return test_support::Rearranged(source, Rearrangement::LeftRight);
    if (is(&m::kVMirror, &m::kVMirrorInPlace)) return test_support::Rearranged(source, Rearrangement::TopBottom);
    if (is(&m::kRotate90)) return test_support::Rearranged(source, Rearrangement::QuarterAnticlockwise);
    if (is(&m::kRotate270)) return test_support::Rearranged(source, Rearrangement::QuarterClockwise);
    if (is(&m::kClone, &m::kBitmap)) return source;
    return std::nullopt;
}

// The image as the host shows it once stored in a picture of that storage.
Image StoredAs(SimulatedHost& host, Storage storage, const Image& image) {
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
            const Rgba a = actual.at(x, y);
            const Rgba e = expected.at(x, y);
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
        Image part{width, height, {}};
        for (int32_t y = 0; y < height; ++y)
            for (int32_t x = 0; x < width; ++x) part.pixels.push_back(image.at(x, y));
        return part;
    };
    return Describe(crop(actual), crop(expected));
}

Storage NewPictureStorage(const simhost::HostConfig& config) {
    if (config.newPictureStorage) return *config.newPictureStorage;
    return config.kind == HostKind::Desktop ? Storage::GWorld32 : Storage::HostBitmap;
}

bool IsWorldOfDepth24Or32(Storage storage) { return storage == Storage::GWorld32 || storage == Storage::GWorld24; }

// The pixels the plug-in reads from a picture: its own where it can reach them,
// else those of the copy the host draws into a new picture, which desktop hosts
// make and console and web hosts don't. Nothing where the picture can't be read
// (a host bitmap whose record is malformed is refused, but the host still draws
// it) or copied (no copy is made of a picture without pixels).
std::optional<Image> AsRead(const simhost::HostConfig& config, const PictureRecipe& picture, const Image& pixels) {
    const Storage newPictures = NewPictureStorage(config);
    if (config.kind != HostKind::Desktop) {
        if (picture.storage == Storage::HostBitmap && !picture.defect) return pixels;
        return std::nullopt;
    }
    if (IsWorldOfDepth24Or32(picture.storage)) return pixels;
    if (!IsWorldOfDepth24Or32(newPictures) || pixels.width < 1 || pixels.height < 1) return std::nullopt;
    Image copy = pixels;
    for (Rgba& p : copy.pixels) p = test_support::StoredPixel(newPictures, p.r, p.g, p.b, p.a);
    return copy;
}

// A rotation by whole turns is a clone, which the host draws: it reads any
// picture the host can draw, whatever the editors make of it.
bool IsWholeTurns(double angle) { return std::isfinite(angle) && std::fmod(angle, 360.0) == 0; }

// The rotation models know pictures the host makes as 32- or 24-bit worlds or
// host bitmaps, and a host whose kind is known before the first picture is read
// (an undecided host is decided by that picture, and reads later ones by that).
bool RotationModelled(const simhost::HostConfig& config, const MethodCall& call) {
    const Storage newPictures = NewPictureStorage(config);
    return config.kind != HostKind::Undecided &&
           (IsWorldOfDepth24Or32(newPictures) || newPictures == Storage::HostBitmap) &&
           (std::isnan(call.angle) || std::fabs(call.angle) <= kLargestModelledAngle);
}

Rgba Colour(Storage storage, uint32_t argb) {
    return test_support::StoredPixel(storage, argb >> 16 & 0xFF, argb >> 8 & 0xFF, argb & 0xFF, argb >> 24);
}

Image Filled(int32_t width, int32_t height, Rgba colour) {
    return Image{width, height, std::vector<Rgba>(static_cast<size_t>(width) * height, colour)};
}

// What DrawPicture leaves in canvas when it draws source from (sx, sy) at the
// canvas's top-left corner, unscaled: only where both pictures have pixels.
void DrawOnto(Image& canvas, const Image& source, int32_t sx, int32_t sy, Storage storage) {
    for (int32_t y = 0; y < canvas.height; ++y)
        for (int32_t x = 0; x < canvas.width; ++x) {
            const int64_t fromX = int64_t{x} + sx;
            const int64_t fromY = int64_t{y} + sy;
            if (fromX < 0 || fromY < 0 || fromX >= source.width || fromY >= source.height) continue;
            const Rgba p = source.at(int32_t(fromX), int32_t(fromY));
            canvas.at(x, y) = test_support::StoredPixel(storage, p.r, p.g, p.b, p.a);
        }
}

// A picture and its mask as a model gives them.
struct Expected {
    Image picture;
    std::optional<Image> mask;
};

// "RotateImageAndMaskQLM" composed from the model of "RotateQLM": the picture
// and its mask turned with the all-ones background, the turned mask drawn into
// the result's new mask (opaque black where nothing is drawn); with cut, both
// drawn into pictures of the receiver's size from the centre of the turned ones.
std::optional<Expected> ModelRotateImageAndMask(const simhost::HostConfig& config, const MethodCall& call,
                                                const Image& source, const std::optional<Image>& mask) {
    const Storage newPictures = NewPictureStorage(config);
    const std::optional<Image> turned = test_support::ModelRotate(source, call.angle, kAllOnesBackground, newPictures);
    if (!turned) return std::nullopt;
    const std::optional<Image> turnedMask =
        mask ? test_support::ModelRotate(*mask, call.angle, kAllOnesBackground, newPictures) : std::nullopt;
    const Rgba maskFill = test_support::StoredPixel(newPictures, 0, 0, 0, 255);

    if (call.cut == 0) {
        Expected expected{*turned, std::nullopt};
        if (turnedMask) {
            expected.mask = Filled(turned->width, turned->height, maskFill);
            DrawOnto(*expected.mask, *turnedMask, 0, 0, newPictures);
        }
        return expected;
    }
    const int32_t dx = (turned->width - source.width) / 2;
    const int32_t dy = (turned->height - source.height) / 2;
    Expected expected{Filled(source.width, source.height, Colour(newPictures, config.newPictureFill)),
                      std::nullopt};
    DrawOnto(expected.picture, *turned, dx, dy, newPictures);
    if (turnedMask) {
        expected.mask = Filled(source.width, source.height, maskFill);
        DrawOnto(*expected.mask, *turnedMask, dx, dy, newPictures);
    }
    return expected;
}

// The two rotations: nil from the plug-in is not checked (it has more ways to
// fail than the model knows), but a picture where the model gives nil is.
std::string CompareRotation(SimulatedHost& host, const simhost::HostConfig& config, const MethodCall& call,
                            const Subject& subject, const Snapshot& before, REALpicture result) {
    if (!RotationModelled(config, call)) return {};
    const auto read = [&](const PictureRecipe& picture, const Image& pixels) {
        return IsWholeTurns(call.angle) ? std::optional(pixels) : AsRead(config, picture, pixels);
    };
    const std::optional<Image> source = read(subject.picture, *before.picture);
    if (!source) return {};
    std::optional<Expected> expected;
    if (call.method->form == MethodForm::AngleAndBackground) {
        if (auto turned = test_support::ModelRotate(*source, call.angle, call.background, NewPictureStorage(config)))
            expected = Expected{*turned, std::nullopt};
    } else {
        std::optional<Image> mask;
        if (before.mask) mask = read(*subject.mask, *before.mask);
        expected = ModelRotateImageAndMask(config, call, *source, mask);
    }
    if (result == nullptr) return {};
    if (!expected) return "a picture where the model gives nil";

    const Image actual = test_support::ReadImage(host, result);
    if (std::string difference = Describe(actual, expected->picture); !difference.empty()) return difference;
    REALpicture mask = host.MaskOf(result);
    if (mask == nullptr) return expected->mask ? "no mask where the model has one" : "";
    if (!expected->mask) return "a mask where the model has none";
    if (std::string difference = Describe(test_support::ReadImage(host, mask), *expected->mask); !difference.empty())
        return "mask: " + difference;
    return {};
}

}  // namespace

Snapshot TakeSnapshot(const SimulatedHost& host, REALpicture picture) {
    Snapshot snapshot;
    if (picture == nullptr) return snapshot;
    snapshot.picture = test_support::ReadImage(host, picture);
    if (REALpicture mask = host.MaskOf(picture)) snapshot.mask = test_support::ReadImage(host, mask);
    return snapshot;
}

bool IsInPlace(const simhost::PictureMethod* method) { return method->form == MethodForm::InPlace; }

std::string CompareWithModels(SimulatedHost& host, const simhost::HostConfig& config, const MethodCall& call,
                              const Subject& subject, const Snapshot& before, REALpicture receiver,
                              const Outcome& outcome) {
    // The memory estimate has no model apart from its own arithmetic.
    if (call.method->form == MethodForm::MemoryEstimate || !before.picture) return {};
    const Image& source = *before.picture;

    if (IsInPlace(call.method)) {
        if (!outcome.flag) return {};
        const Snapshot after = TakeSnapshot(host, receiver);
        if (after.mask != before.mask) return "the in-place mirror changed the mask";
        return Describe(*after.picture, *Rearranged(call.method, source));
    }
    if (call.method->form == MethodForm::AngleAndBackground || call.method->form == MethodForm::AngleAndCut)
        return CompareRotation(host, config, call, subject, before, outcome.picture);
    if (outcome.picture == nullptr) return {};
    const Image actual = test_support::ReadImage(host, outcome.picture);
    const Storage storage = host.StorageOf(outcome.picture);

    if (call.method->form == MethodForm::Size) {
        if (actual.width != call.width || actual.height != call.height)
            return Describe(actual, Image{call.width, call.height, {}});
        return CompareOverlap(actual, StoredAs(host, storage, source));
    }
    if (const std::optional<Image> expected = Rearranged(call.method, source))
        return Describe(actual, StoredAs(host, storage, *expected));
    return {};
}

}  // namespace pixturn_fuzz
