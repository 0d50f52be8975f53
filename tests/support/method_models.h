// What each picture method gives for a receiver showing `source`, from the slow
// models alone: mirrors and quarter turns as coordinate maps, the rotations as
// the shear model (whole, or cut to the receiver's size around the centre), the
// copies as the source itself, all as the host's new pictures store them.
#pragma once

#include <cstdint>
#include <optional>

#include "simhost/simulated_host.h"
#include "tests/support/pictures.h"

namespace test_support {

// What a test passes to the methods that take arguments, with defaults that
// give every form something to do; the native call takes them as they are.
struct Arguments {
    double angle = 30;
    uint32_t background = 0x80102030;
    signed char cut = 0;  // any nonzero byte is True
    int32_t width = 11, height = 4;
    simhost::MethodArguments Native() const { return {angle, background, cut, width, height}; }
};

// A picture of `width` x `height` showing `whole` from its pixel (dx, dy) on;
// where that reaches past `whole`, `untouched`.
Image Placed(const Image& whole, int32_t width, int32_t height, int32_t dx, int32_t dy, simhost::Rgba untouched);
// The part of that size around the centre of `whole`.
Image CutFromCentre(const Image& whole, int32_t width, int32_t height, simhost::Rgba untouched);

// The picture the method gives (the receiver's for the in-place mirrors) on a
// host configured so, whose new pictures hold its fill where nothing is drawn;
// nullopt where the models say nil. Receivers without a mask; not the estimate.
std::optional<Image> ModelMethod(const simhost::PictureMethod& method, const Image& source,
                                 const Arguments& arguments, const simhost::HostConfig& host);

}  // namespace test_support
