// Quarter, half and three-quarter turns into a new picture. Positive turns are
// anticlockwise on the screen; the rotation by any angle starts from these too.
#include "plugin/methods.h"
#include "transforms/new_picture_frame.h"
#include "transforms/pixel_moves.h"

REALpicture rbRotate90(REALpicture picture) {
    return TransformIntoNewPicture(picture, NewPictureShape::SidesExchanged,
                                   [](PictureReader& reader, PictureWriter& writer) {
                                       MovePixels(reader, writer, PixelMapping::QuarterAnticlockwise);
                                   });
}

REALpicture rbRotate180(REALpicture picture) {
    return TransformIntoNewPicture(picture, NewPictureShape::SameSides, [](PictureReader& reader, PictureWriter& writer) {
        MovePixels(reader, writer, PixelMapping::HalfTurn);
    });
}

REALpicture rbRotate270(REALpicture picture) {
    return TransformIntoNewPicture(picture, NewPictureShape::SidesExchanged,
                                   [](PictureReader& reader, PictureWriter& writer) {
                                       MovePixels(reader, writer, PixelMapping::QuarterClockwise);
                                   });
}
