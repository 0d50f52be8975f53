#include "picture/copying.h"

#include <cstring>

#include "picture/host_picture.h"
#include "plugin/host_entry_points.h"

namespace {

constexpr const char* kDrawPictureDeclaration =
    "DrawPicture(Image as Picture, x as Integer, y as Integer, w as Integer, h as Integer, "
    "sx as Integer = 0, sy as Integer = 0, sw as Integer = -10000, sh as Integer = -10000)";

using DrawPictureMethod = void (*)(REALobject graphics, REALpicture image, int32_t x, int32_t y, int32_t w,
                                   int32_t h, int32_t sx, int32_t sy, int32_t sw, int32_t sh);

DrawPictureMethod FindDrawPicture(REALobject graphics) {
    return reinterpret_cast<DrawPictureMethod>(REALLoadObjectMethod(graphics, kDrawPictureDeclaration));
}

bool IsUsableHostBitmap(const REALpictureDescription& description) {
    return description.pictureType == kPictureTypeHostBitmap && description.pictureData != nullptr &&
           host_bitmap::ReadWord(description.pictureData, host_bitmap::kZeroWordOffset) == 0 &&
           host_bitmap::ReadRowTable(description.pictureData) != nullptr;
}

// Copies every row of one host bitmap into another of the same size.
bool CopyHostBitmapRows(const void* destRecord, const void* srcRecord) {
    using namespace host_bitmap;
    const int32_t width = ReadWord(srcRecord, kWidthOffset);
    const int32_t height = ReadWord(srcRecord, kHeightOffset);
    if (width != ReadWord(destRecord, kWidthOffset) || height != ReadWord(destRecord, kHeightOffset)) return false;
    uint8_t* const* destRows = ReadRowTable(destRecord);
    uint8_t* const* srcRows = ReadRowTable(srcRecord);
    if (width > 0)
        for (int32_t row = 0; row < height; ++row)
            std::memcpy(destRows[row], srcRows[row], static_cast<size_t>(width) * 4);
    return true;
}

}  // namespace

// A failed draw is not a failure: the new picture comes back as the host made it.
REALpicture DrawIntoNewPicture(REALpicture source, int32_t width, int32_t height) {
    REALpicture copy = NewDepth32Picture(width, height);
    if (copy == nullptr) return nullptr;
    REALobject graphics = REALGetPictureGraphics(copy);
    if (graphics == nullptr) return copy;
    if (DrawPictureMethod draw = FindDrawPicture(graphics))
        draw(graphics, source, 0, 0, width, height, 0, 0, width, height);
    else
        OwnCopy(copy, source, 0, 0, width, height, 0, 0, width, height);
    REALUnlockObject(graphics);
    return copy;
}

REALpicture ClonePicture(REALpicture picture) {
    if (picture == nullptr) return nullptr;
    const int32_t width = ReadIntProperty(picture, "Width");
    const int32_t height = ReadIntProperty(picture, "Height");
    if (width < 1 || height < 1) return nullptr;
    return DrawIntoNewPicture(picture, width, height);
}

// Unlike DrawIntoNewPicture, a destination without a graphics object still gets
// the plug-in's own copy.
void GraphicsDrawPicture(REALpicture dest, REALpicture src, int32_t x, int32_t y, int32_t w, int32_t h,
                         int32_t sx, int32_t sy, int32_t sw, int32_t sh) {
    REALobject graphics = REALGetPictureGraphics(dest);
    DrawPictureMethod draw = graphics != nullptr && src != nullptr ? FindDrawPicture(graphics) : nullptr;
    if (draw != nullptr)
        draw(graphics, src, x, y, w, h, sx, sy, sw, sh);
    else
        OwnCopy(dest, src, x, y, w, h, sx, sy, sw, sh);
    if (graphics != nullptr) REALUnlockObject(graphics);
}

// Only whole host bitmaps of equal size, unscaled; w and h are compared with the
// source rectangle only, the extent is the bitmaps' own size.
bool OwnCopy(REALpicture dest, REALpicture src, int32_t, int32_t, int32_t w, int32_t h, int32_t sx, int32_t sy,
             int32_t sw, int32_t sh) {
    if (dest == nullptr || src == nullptr) return false;
    if (sw != w || sh != h || sx != 0 || sy != 0) return false;
    REALpictureDescription srcDescription{}, destDescription{};
    if (!LockPictureDescriptionAs(src, &srcDescription, kPictureTypeHostBitmap)) return false;
    if (!LockPictureDescriptionAs(dest, &destDescription, kPictureTypeHostBitmap)) {
        REALUnlockPictureDescription(src);
        REALPictureClearCache(dest);
        return false;
    }
    const bool copied = IsUsableHostBitmap(srcDescription) && IsUsableHostBitmap(destDescription) &&
                        CopyHostBitmapRows(destDescription.pictureData, srcDescription.pictureData);
    REALUnlockPictureDescription(dest);
    REALUnlockPictureDescription(src);
    REALPictureClearCache(dest);
    return copied;
}
