// The frame shared by the transforms that return a new picture (mirrors and
// right-angle turns): the receiver is read through a PictureReader, a new depth-32
// picture of the receiver's size (or its sides exchanged) is written through a
// PictureWriter and handed back with one reference for the caller. Every other
// reference and lock is given back on every path: the editors are locals, and
// the writer, declared last, is destroyed first.
#pragma once

#include <cstdint>

#include "picture/picture_editor.h"
#include "transforms/pixel_moves.h"

enum class NewPictureShape { SameSides, SidesExchanged };

// fill(reader, writer) moves the pixels; it runs only when both editors are bound.
template <typename Fill>
REALpicture TransformIntoNewPicture(REALpicture picture, NewPictureShape shape, Fill&& fill) {
    PictureReader reader;
    if (!reader.GetPictureEditor(picture, true, false)) return nullptr;
    PictureWriter writer;
    REALpicture result = nullptr;
    if (IsValidPictureSize(reader.width, reader.height)) {
        const bool exchanged = shape == NewPictureShape::SidesExchanged;
        const int32_t width = exchanged ? reader.height : reader.width;
        const int32_t height = exchanged ? reader.width : reader.height;
        if (BindNewPicture(writer, width, height)) {
            fill(reader, writer);
            result = writer.RenderPictureWriter();
        }
    }
    reader.ReleasePicture();
    return result;
}

// The new picture holding the receiver's pixels moved as the mapping says.
inline REALpicture MoveIntoNewPicture(REALpicture picture, PixelMapping mapping) {
    const bool quarterTurn =
        mapping == PixelMapping::QuarterAnticlockwise || mapping == PixelMapping::QuarterClockwise;
    return TransformIntoNewPicture(picture, quarterTurn ? NewPictureShape::SidesExchanged : NewPictureShape::SameSides,
                                   [mapping](PictureReader& reader, PictureWriter& writer) {
                                       MovePixels(reader, writer, mapping);
                                   });
}
