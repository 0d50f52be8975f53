// Leptonica, 32 bits per pixel. Its shear rotation refuses angles above 0.50
// radians (and pixRotate hands those to sampling), so the shear job takes the
// steps of Leptonica's own three-shear rotation through its public shears:
// embedding in the expanded canvas, then vertical, horizontal and vertical shears
// about the centre. Its shears move whole pixels and blend nothing. Leptonica
// leaves angles below 0.001 radians unturned, so it has no row for
// RotateQLM(1e-10). Angles are clockwise radians in Leptonica.
#include <leptonica/allheaders.h>

#include <cmath>

#include "bench/job.h"
#include "bench/peer_jobs.h"
#include "bench/tasks.h"
#include "bench/test_card.h"

namespace bench {

namespace {

constexpr float kSmallestTurnedAngle = 0.001f;

struct Leptonica {
    PIX* card = nullptr;
    PIX* mirrored = nullptr;  // what the in-place jobs turn back and forth
};

PIX* MakeCard() {
    PIX* pix = pixCreate(test_card::kWidth, test_card::kHeight, 32);
    if (pix == nullptr) return nullptr;
    l_uint32* data = pixGetData(pix);
    const l_int32 wordsPerLine = pixGetWpl(pix);
    for (int32_t y = 0; y < test_card::kHeight; ++y)
        for (int32_t x = 0; x < test_card::kWidth; ++x) {
            const simhost::Rgba p = test_card::PixelAt(x, y);
            composeRGBAPixel(p.r, p.g, p.b, p.a, data + static_cast<size_t>(y) * wordsPerLine + x);
        }
    return pix;
}

Leptonica& Started() {
    static Leptonica leptonica{MakeCard(), MakeCard()};
    return leptonica;
}

bool Discard(PIX* pix) {
    if (pix == nullptr) return false;
    pixDestroy(&pix);
    return true;
}

float ClockwiseRadians(double anticlockwiseDegrees) {
    return static_cast<float>(-anticlockwiseDegrees * M_PI / 180);
}

PIX* RotateByShears(PIX* card, float radians) {
    PIX* embedded = pixEmbedForRotation(card, radians, L_BRING_IN_WHITE, test_card::kWidth, test_card::kHeight);
    if (embedded == nullptr) return nullptr;
    const l_int32 xCentre = pixGetWidth(embedded) / 2;
    const l_int32 yCentre = pixGetHeight(embedded) / 2;
    PIX* turned = pixVShear(nullptr, embedded, xCentre, radians / 2, L_BRING_IN_WHITE);
    PIX* across = turned != nullptr ? pixHShear(nullptr, turned, yCentre, std::atan(std::sin(radians)), L_BRING_IN_WHITE)
                                    : nullptr;
    if (across != nullptr) pixVShear(turned, across, xCentre, radians / 2, L_BRING_IN_WHITE);
    pixDestroy(&embedded);
    if (across == nullptr) {
        pixDestroy(&turned);
        return nullptr;
    }
    pixDestroy(&across);
    return turned;
}

template <typename Transform>
void RegisterTask(const std::string& task, const char* implementation, Transform transform) {
    Register({task, implementation, [] { Started(); },
              [transform] {
                  Leptonica& leptonica = Started();
                  return leptonica.card != nullptr && leptonica.mirrored != nullptr && transform(leptonica);
              },
              {}});
}

template <typename Transform>
void RegisterNewPicture(const std::string& task, Transform transform) {
    RegisterTask(task, kLeptonica, [transform](Leptonica& leptonica) { return Discard(transform(leptonica.card)); });
}

template <typename Mirror>
void RegisterInPlace(const std::string& task, Mirror mirror) {
    RegisterTask(task, kLeptonica,
                 [mirror](Leptonica& leptonica) { return mirror(leptonica.mirrored) == leptonica.mirrored; });
}

}  // namespace

void RegisterLeptonicaJobs() {
    for (double angle : kRotationAngles) {
        const float radians = ClockwiseRadians(angle);
        if (std::abs(radians) < kSmallestTurnedAngle) continue;
        RegisterTask(RotateTask(angle), kLeptonica,
                     [radians](Leptonica& leptonica) { return Discard(RotateByShears(leptonica.card, radians)); });
        RegisterTask(RotateTask(angle), kLeptonicaAreaMap, [radians](Leptonica& leptonica) {
            return Discard(pixRotate(leptonica.card, radians, L_ROTATE_AREA_MAP, L_BRING_IN_WHITE, test_card::kWidth,
                                     test_card::kHeight));
        });
    }
    RegisterNewPicture(kRotate90, [](PIX* card) { return pixRotate90(card, -1); });
    RegisterNewPicture(kRotate180, [](PIX* card) { return pixRotate180(nullptr, card); });
    RegisterNewPicture(kRotate270, [](PIX* card) { return pixRotate90(card, 1); });
    RegisterNewPicture(kMirror, [](PIX* card) { return pixRotate180(nullptr, card); });
    RegisterNewPicture(kHMirror, [](PIX* card) { return pixFlipLR(nullptr, card); });
    RegisterNewPicture(kVMirror, [](PIX* card) { return pixFlipTB(nullptr, card); });
    RegisterInPlace(kMirrorInPlace, [](PIX* pix) { return pixRotate180(pix, pix); });
    RegisterInPlace(kHMirrorInPlace, [](PIX* pix) { return pixFlipLR(pix, pix); });
    RegisterInPlace(kVMirrorInPlace, [](PIX* pix) { return pixFlipTB(pix, pix); });
    RegisterNewPicture(kClone, [](PIX* card) { return pixCopy(nullptr, card); });
}

}  // namespace bench
