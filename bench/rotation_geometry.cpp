// Mirrors the method's normalisation, quarter-turn reduction and pass sizes to the
// bit, so that a floor or a memory bound is never off by a row.
#include "bench/rotation_geometry.h"

#include <cmath>

namespace bench {

RotationPictures PicturesOfRotation(int32_t width, int32_t height, double angle) {
    while (angle >= 360) angle += -360;
    while (angle < 0) angle += 360;

    RotationPictures pictures{};
    int32_t w = width;
    int32_t h = height;
    double residual = angle;
    if (angle > 45 && angle <= 315) {
        const bool sideways = angle <= 135 || angle > 225;
        residual = angle <= 135 ? angle - 90 : angle <= 225 ? angle - 180 : angle - 270;
        if (sideways) std::swap(w, h);
        pictures.workingCopy = PictureSize{w, h};
    }

    const double rad = residual * 3.141592653589793 / 180;
    const double s = std::sin(rad);
    const double t = std::tan(0.5 * rad);
    const double c = std::cos(rad);
    const auto w1 = static_cast<int32_t>(std::abs(t) * h) + w;
    const auto h2 = static_cast<int32_t>(std::abs(s) * w + h * c) + 1;
    const auto wf = static_cast<int32_t>(w * c + h * std::abs(s)) + 1;
    pictures.pass1 = {w1, h};
    pictures.pass2 = {w1, h2};
    pictures.result = {wf, h2};
    return pictures;
}

std::vector<PictureSize> RotationPictures::Written() const {
    std::vector<PictureSize> written;
    if (workingCopy) written.push_back(*workingCopy);
    written.insert(written.end(), {pass1, pass2, result});
    return written;
}

std::vector<PictureSize> RotationPictures::AliveInPass2() const {
    std::vector<PictureSize> alive{pass1, pass2};
    if (workingCopy) alive.push_back(*workingCopy);
    return alive;
}

std::vector<PictureSize> RotationPictures::AliveInPass3() const {
    std::vector<PictureSize> alive{pass2, result};
    if (workingCopy) alive.push_back(*workingCopy);
    return alive;
}

}  // namespace bench
