#include "tests/support/method_models.h"

#include <algorithm>

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

Image CutFromCentre(const Image& whole, int32_t width, int32_t height, Rgba untouched) {
    return Placed(whole, width, height, (whole.width - width) / 2, (whole.height - height) / 2, untouched);
}

Image Placed(const Image& whole, int32_t width, int32_t height, int32_t dx, int32_t dy, Rgba untouched) {
    Image cut{width, height, std::vector<Rgba>(static_cast<size_t>(width) * height, untouched)};
    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width; ++x)
            if (x + dx >= 0 && x + dx < whole.width && y + dy >= 0 && y + dy < whole.height)
                cut.at(x, y) = whole.at(x + dx, y + dy);
    return cut;
}

std::optional<Image> ModelMethod(const PictureMethod& method, const Image& source, const Arguments& arguments,
                                 const simhost::HostConfig& host) {
    const simhost::Storage storage = simhost::NewPictureStorage(host);
    const uint32_t fill = host.newPictureFill;
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
