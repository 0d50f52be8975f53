// Quarter, half and three-quarter turns into a new picture. Positive turns are
// anticlockwise on the screen; the rotation by any angle starts from these too.
#include "plugin/methods.h"
#include "transforms/new_picture_frame.h"

REALpicture rbRotate90(REALpicture picture) { return MoveIntoNewPicture(picture, PixelMapping::QuarterAnticlockwise); }

REALpicture rbRotate180(REALpicture picture) { return MoveIntoNewPicture(picture, PixelMapping::HalfTurn); }

REALpicture rbRotate270(REALpicture picture) { return MoveIntoNewPicture(picture, PixelMapping::QuarterClockwise); }
