// The pictures "RotateQLM" makes for an angle, from the plug-in's own sizing
// arithmetic: the quarter-turned working copy where the angle needs one, the two
// shear passes and the result. The benchmarks size their memory floors and the
// memory the method may claim from these.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace bench {

struct PictureSize {
    int32_t width;
    int32_t height;
    int64_t Bytes() const { return int64_t{width} * height * 4; }
};

struct RotationPictures {
    std::optional<PictureSize> workingCopy;
    PictureSize pass1;
    PictureSize pass2;
    PictureSize result;

    // Every picture the rotation writes, in the order it writes them.
    std::vector<PictureSize> Written() const;
    // The two moments the most pictures are alive: while pass 2 reads pass 1,
    // and while the last pass reads pass 2 (the working copy lives throughout).
    std::vector<PictureSize> AliveInPass2() const;
    std::vector<PictureSize> AliveInPass3() const;
};

// For an angle that is not a multiple of 90 degrees.
RotationPictures PicturesOfRotation(int32_t width, int32_t height, double angle);

}  // namespace bench
