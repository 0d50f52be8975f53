#include "tests/harness/plugin_bench.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>

#include "tests/support/rotation_model.h"

namespace test_support {

namespace {

using simhost::MethodForm;
using simhost::PictureMethod;
using simhost::Rgba;
namespace methods = simhost::methods;

// How each mirror and quarter turn moves pixels; nullopt for the other methods.
std::optional<Rearrangement> RearrangementOf(const PictureMethod& method) {
    const std::pair<const PictureMethod*, Rearrangement> kMoves[] = {
        {&methods::kRotate90, Rearrangement::QuarterAnticlockwise},
        {&methods::kRotate180, Rearrangement::BothWays},
        {&methods::kRotate270, Rearrangement::QuarterClockwise},
        {&methods::kMirror, Rearrangement::BothWays},
        {&methods::kHMirror, Rearrangement::LeftRight},
        {&methods::kVMirror, Rearrangement::TopBottom},
        {&methods::kMirrorInPlace, Rearrangement::BothWays},
        {&methods::kHMirrorInPlace, Rearrangement::LeftRight},
        {&methods::kVMirrorInPlace, Rearrangement::TopBottom},
    };
    for (const auto& [moving, rearrangement] : kMoves)
        if (moving == &method) return rearrangement;
    return std::nullopt;
}

}  // namespace

simhost::HostConfig ConfigFor(simhost::HostKind kind) {
    simhost::HostConfig config;
    config.kind = kind;
    return config;
}

Image CutFromCentre(const Image& whole, int32_t width, int32_t height, Rgba untouched) {
    const int32_t dx = (whole.width - width) / 2, dy = (whole.height - height) / 2;
    Image cut{width, height, std::vector<Rgba>(static_cast<size_t>(width) * height, untouched)};
    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width; ++x)
            if (x + dx >= 0 && x + dx < whole.width && y + dy >= 0 && y + dy < whole.height)
                cut.at(x, y) = whole.at(x + dx, y + dy);
    return cut;
}

PluginBench::PluginBench(simhost::HostConfig config)
    : host(std::move(config)), plugin(host, simhost::DefaultPluginPath()) {}

REALpicture PluginBench::RandomPicture(simhost::Storage storage, int32_t width, int32_t height, uint32_t seed) {
    REALpicture picture = host.MakePicture(storage, width, height);
    FillRandom(host, picture, seed);
    return picture;
}

void PluginBench::ExpectBalancedAndRelease(const std::vector<REALpicture>& results, REALpicture receiver) {
    std::vector<REALpicture> made;
    for (REALpicture result : results)
        if (result != nullptr && result != receiver) made.push_back(result);
    EXPECT_EQ(host.LedgerProblems(made), std::vector<std::string>{});
    for (REALpicture result : made) host.Release(result);
}

REALpicture PluginBench::Apply(const PictureMethod& method, REALpicture receiver, const Arguments& arguments) const {
    switch (method.form) {
        case MethodForm::Picture:
            return plugin.Call<REALpicture>(method, receiver);
        case MethodForm::AngleAndBackground:
            return plugin.Call<REALpicture>(method, receiver, arguments.angle, arguments.background);
        case MethodForm::AngleAndCut:
            return plugin.Call<REALpicture>(method, receiver, arguments.angle, static_cast<signed char>(arguments.cut));
        case MethodForm::Size:
            return plugin.Call<REALpicture>(method, receiver, arguments.width, arguments.height);
        case MethodForm::InPlace:
            return plugin.Call<bool>(method, receiver) ? receiver : nullptr;
        case MethodForm::MemoryEstimate:
            break;
    }
    throw std::invalid_argument("the memory estimate gives no picture");
}

std::optional<Image> PluginBench::Expected(const PictureMethod& method, const Image& source,
                                           const Arguments& arguments) const {
    const simhost::HostConfig& config = host.config();
    const simhost::Storage storage = config.newPictureStorage.value_or(
        config.kind == simhost::HostKind::Desktop ? simhost::Storage::GWorld32 : simhost::Storage::HostBitmap);
    const uint32_t fill = config.newPictureFill;
    const Rgba filled = StoredPixel(storage, fill >> 16 & 0xFF, fill >> 8 & 0xFF, fill & 0xFF, fill >> 24);
    if (const std::optional<Rearrangement> rearrangement = RearrangementOf(method)) {
        const Image moved = Rearranged(source, *rearrangement);
        return method.form == MethodForm::InPlace ? moved : Stored(moved, storage);
    }
    if (&method == &methods::kRotate) return ModelRotate(source, arguments.angle, arguments.background, storage);
    if (&method == &methods::kRotateImageAndMask) {
        const std::optional<Image> turned = ModelRotate(source, arguments.angle, 0xFFFFFFFF, storage);
        if (!turned || !arguments.cut) return turned;
        return CutFromCentre(*turned, source.width, source.height, filled);
    }
    if (&method == &methods::kCloneToSize) {
        Image sized{arguments.width, arguments.height,
                    std::vector<Rgba>(static_cast<size_t>(arguments.width) * arguments.height, filled)};
        for (int32_t y = 0; y < std::min(source.height, sized.height); ++y)
            for (int32_t x = 0; x < std::min(source.width, sized.width); ++x) sized.at(x, y) = source.at(x, y);
        return Stored(sized, storage);
    }
    return Stored(source, storage);  // the clone, and the bitmap (the receiver itself or its copy)
}

}  // namespace test_support
