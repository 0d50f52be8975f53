// The fuzz target's oracle. For each method that succeeded it forms what the
// slow models give for the picture as it was before the call and compares it
// pixel by pixel. Pixels are compared as the host shows them once stored, so a
// host bitmap's 7-bit alpha or a 24-bit world's missing alpha is accounted for
// the way the host stores it.
#include "fuzz/expected_results.h"

#include <cmath>
#include <sstream>

#include "tests/support/method_models.h"
#include "tests/support/rotation_model.h"

namespace pixturn_fuzz {
namespace {

using simhost::HostKind;
using simhost::MethodForm;
using simhost::Rgba;
using simhost::SimulatedHost;
using simhost::Storage;
using test_support::Image;
using simhost::NewPictureStorage;

// The rotation models normalise angles by whole turns, one step at a time.
constexpr double kLargestModelledAngle = 1e6;

// Empty when the two are alike; else their sizes or their first pixel that differs.
std::string Describe(const Image& actual, const Image& expected) {
    std::ostringstream out;
    const auto show = [&](Rgba p) { out << int(p.r) << "," << int(p.g) << "," << int(p.b) << "," << int(p.a); };
    if (actual.width != expected.width || actual.height != expected.height) {
        out << "size " << actual.width << "x" << actual.height << ", expected " << expected.width << "x"
            << expected.height;
        return out.str();
    }
    for (size_t i = 0; i < actual.pixels.size(); ++i)
        if (actual.pixels[i] != expected.pixels[i]) {
            out << "pixel (" << i % actual.width << ", " << i / actual.width << ") is ";
            show(actual.pixels[i]);
            out << ", expected ";
            show(expected.pixels[i]);
            break;
        }
    return out.str();
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
           (std::isnan(call.arguments.angle) || std::fabs(call.arguments.angle) <= kLargestModelledAngle);
}

// The mask "RotateImageAndMaskQLM" gives: the receiver's mask turned as the
// picture is, drawn into a new mask the size of the result (of the turned
// picture, or with cut of the receiver, from the turned picture's centre),
// opaque black where nothing is drawn.
std::optional<Image> ModelTurnedMask(const simhost::HostConfig& config, const MethodCall& call, const Image& source,
                                     const Image& result, const Image& mask) {
    const std::optional<Image> turnedMask =
        test_support::ModelMethod(*call.method, mask, {.angle = call.arguments.angle}, config);
    if (!turnedMask) return std::nullopt;
    const Rgba black = test_support::StoredPixel(NewPictureStorage(config), 0, 0, 0, 255);
    if (call.arguments.cut == 0) return test_support::Placed(*turnedMask, result.width, result.height, 0, 0, black);
    const Image turned = *test_support::ModelMethod(*call.method, source, {.angle = call.arguments.angle}, config);
    return test_support::Placed(*turnedMask, result.width, result.height, (turned.width - result.width) / 2,
                                (turned.height - result.height) / 2, black);
}

// The two rotations: nil from the plug-in is not checked (it has more ways to
// fail than the model knows), but a picture where the model gives nil is.
std::string CompareRotation(SimulatedHost& host, const simhost::HostConfig& config, const MethodCall& call,
                            const Subject& subject, const Snapshot& before, REALpicture result) {
    if (!RotationModelled(config, call)) return {};
    const auto read = [&](const PictureRecipe& picture, const Image& pixels) {
        return IsWholeTurns(call.arguments.angle) ? std::optional(pixels) : AsRead(config, picture, pixels);
    };
    const std::optional<Image> source = read(subject.picture, *before.picture);
    if (!source) return {};
    const std::optional<Image> expected = test_support::ModelMethod(*call.method, *source, call.arguments, config);
    if (result == nullptr) return {};
    if (!expected) return "a picture where the model gives nil";
    if (std::string difference = Describe(test_support::ReadImage(host, result), *expected); !difference.empty())
        return difference;

    std::optional<Image> expectedMask;
    if (before.mask && call.method->form == MethodForm::AngleAndCut)
        if (const std::optional<Image> mask = read(*subject.mask, *before.mask))
            expectedMask = ModelTurnedMask(config, call, *source, *expected, *mask);
    REALpicture mask = host.MaskOf(result);
    if (mask == nullptr) return expectedMask ? "no mask where the model has one" : "";
    if (!expectedMask) return "a mask where the model has none";
    if (std::string difference = Describe(test_support::ReadImage(host, mask), *expectedMask); !difference.empty())
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
                              const simhost::MethodResult& outcome) {
    // The memory estimate has no model apart from its own arithmetic.
    if (call.method->form == MethodForm::MemoryEstimate || !before.picture) return {};
    const Image& source = *before.picture;

    if (IsInPlace(call.method)) {
        if (!outcome.changed) return {};
        const Snapshot after = TakeSnapshot(host, receiver);
        if (after.mask != before.mask) return "the in-place mirror changed the mask";
        return Describe(*after.picture, *test_support::ModelMethod(*call.method, source, {}, config));
    }
    if (call.method->form == MethodForm::AngleAndBackground || call.method->form == MethodForm::AngleAndCut)
        return CompareRotation(host, config, call, subject, before, outcome.picture);
    if (outcome.picture == nullptr) return {};
    // Stored as the picture the plug-in handed back stores pixels, which may be
    // the receiver itself.
    simhost::HostConfig storedAs = config;
    storedAs.newPictureStorage = host.StorageOf(outcome.picture);
    return Describe(test_support::ReadImage(host, outcome.picture),
                    *test_support::ModelMethod(*call.method, source, call.arguments, storedAs));
}

}  // namespace pixturn_fuzz
