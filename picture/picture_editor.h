// The picture editor: binds to one host picture and exposes its pixel rows.
//
// Desktop hosts keep pictures as QuickDraw offscreen worlds, reached through the
// legacy pixel-map bridge; console and web hosts hand out their own bitmap record,
// whose rows are reached only through its row table. The editor finds out once per
// process which kind of host it runs in. A picture it cannot reach directly is
// read through a 32-bit copy; a binding made on a copy never copies again, so a
// host that keeps handing back unusual pictures cannot make it recurse.
//
// Row and pixel access costs one row-bound comparison and one format test and
// makes no host call: the plain transforms call them per pixel. The loops
// specialised by format pair (transforms/pixel_moves.h, transforms/skew_loops.h)
// pick the format once per pass and skip even the format test, with the same
// codecs of pixel_formats.h.
#pragma once

#include <cstdint>

#include "picture/host_picture.h"
#include "picture/pixel_formats.h"
#include "platform/macos/QuickDraw.h"
#include "platform/xojo/rb_plugin.h"

class PictureEditor {
public:
    PictureEditor() = default;
    PictureEditor(const PictureEditor&) = delete;
    PictureEditor& operator=(const PictureEditor&) = delete;
    virtual ~PictureEditor();

    // Binds to picture (or to a copy of it). Callers use three patterns:
    // (picture, true, false) to read, (newPicture, false, true) to write a new
    // picture, (picture, true, true) to change a picture in place.
    bool GetPictureEditor(REALpicture picture, signed char allowCopy, signed char forWriting);
    // Hands the bound picture back with one reference for the caller, then releases.
    REALpicture RenderPictureWriter();
    // Gives back every lock and reference the editor holds.
    void ReleasePicture();

    uint8_t* RowAddress(int32_t y);
    uint8_t* PixelAddress(int32_t x, int32_t y) { return RowAddress(y) + x * bytesPerPixel; }
    void NextRow();
    Pixel GetPixel(int32_t x, int32_t y);
    void SetPixel(int32_t x, int32_t y, int32_t r, int32_t g, int32_t b, int32_t a);
    void SetPixel(int32_t x, int32_t y, const Pixel& p) { SetPixel(x, y, p.r, p.g, p.b, p.a); }

    int32_t rowBytes = 0;
    int32_t width = 0;
    int32_t height = 0;
    int32_t bytesPerPixel = 0;
    int32_t pixelFormat = PixelFormatNone;
    uint8_t* currentRow = nullptr;
    REALpictureDescription description{};
    uint8_t* baseAddress = nullptr;
    int32_t cursorColumn = 0;
    int32_t cursorRow = 0;
    REALpicture picture = nullptr;
    PixMapHandle pixMap = nullptr;
    uint8_t** rowTable = nullptr;
    bool forWriting = false;
    bool descriptionLocked = false;

private:
    bool Bind(REALpicture picture, bool allowCopy, bool forWriting, bool isCopy);
    bool BindGWorld(REALpicture picture, bool isCopy);
    bool BindHostBitmap(REALpicture picture);
    bool BindCopy(REALpicture copy);
    bool UnlockDescriptionAndFail(REALpicture described);
};

class PictureReader : public PictureEditor {};
class PictureWriter : public PictureEditor {};

// Makes a new depth-32 picture (legacy port reset first) and binds the writer to
// it. The creation reference is given up at once, bound or not: the writer's own
// reference keeps the picture alive, and a picture that could not be bound goes
// back to the host. False when the host made no picture, it could not be bound, or
// it is not of the size asked for.
bool BindNewPicture(PictureWriter& writer, int32_t width, int32_t height);
