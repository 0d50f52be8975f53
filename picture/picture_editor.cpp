#include "picture/picture_editor.h"

#include <cstddef>

#include "picture/copying.h"
#include "picture/host_picture.h"
#include "picture/legacy_bridge.h"
#include "plugin/host_entry_points.h"

namespace {

// Asked once per process; a host that answers for none of the three classes
// leaves the decision to the first picture's type.
void DetectHostKind() {
    if (IsDesktop() || IsConsole()) return;
    const bool application = REALGetClassRef("Application") != nullptr;
    const bool web = REALGetClassRef("WebApplication") != nullptr;
    const bool console = REALGetClassRef("ConsoleApplication") != nullptr;
    if (application)
        DecideHostKind(HostKindDecision::Desktop);
    else if (console || web)
        DecideHostKind(HostKindDecision::Console);
}

}  // namespace

PictureEditor::~PictureEditor() { ReleasePicture(); }

bool PictureEditor::GetPictureEditor(REALpicture newPicture, signed char allowCopy, signed char writing) {
    return Bind(newPicture, allowCopy != 0, writing != 0, false);
}

bool PictureEditor::Bind(REALpicture newPicture, bool allowCopy, bool writing, bool isCopy) {
    ReleasePicture();
    if (newPicture == nullptr) return false;
    // The editor's reference is what keeps a new picture alive once its creation
    // reference is dropped; without REALLockObject it could not hold one.
    if (!REALLockObject.IsAvailable()) return false;
    forWriting = writing;
    DetectHostKind();
    if (IsConsole()) return BindHostBitmap(newPicture);

    // A host without the two-argument lock fills nothing: the type stays 0 and
    // there is no lock to give back.
    description = {};
    REALLockPictureDescription(newPicture, &description);
    if (description.pictureType == kPictureTypeGWorld) {
        DecideHostKind(HostKindDecision::Desktop);
        return BindGWorld(newPicture, isCopy);
    }
    if (description.pictureType != 0) REALUnlockPictureDescription(newPicture);
    if (allowCopy && !writing && !isCopy) {
        if (REALpicture copy = ClonePicture(newPicture)) return BindCopy(copy);
    }
    if (IsDesktop()) return false;
    return BindHostBitmap(newPicture);
}

bool PictureEditor::BindGWorld(REALpicture world, bool isCopy) {
    const auto gworld = static_cast<GWorldPtr>(description.pictureData);
    if (gworld == nullptr) return UnlockDescriptionAndFail(world);
    const std::optional<PixMapHandle> worldPixMap = legacy::GetGWorldPixMap(gworld);
    if (!worldPixMap || *worldPixMap == nullptr) return UnlockDescriptionAndFail(world);

    const std::optional<int16_t> depth = legacy::GetPixDepth(*worldPixMap);
    if (depth == 32) {
        pixelFormat = PixelFormatARGB32;
        bytesPerPixel = 4;
    } else if (depth == 24) {
        pixelFormat = PixelFormatRGB24;
        bytesPerPixel = 3;
    } else {
        // Any other depth is read through a 32-bit copy drawn by the host.
        REALUnlockPictureDescription(world);
        if (forWriting || isCopy) return false;
        if (description.width < 1 || description.height < 1) return false;
        REALpicture copy = DrawIntoNewPicture(world, description.width, description.height);
        return copy != nullptr && BindCopy(copy);
    }

    const std::optional<bool> locked = legacy::LockPixels(*worldPixMap);
    if (!locked || !*locked) return UnlockDescriptionAndFail(world);
    const std::optional<Ptr> base = legacy::GetPixBaseAddr(*worldPixMap);
    if (!base || *base == nullptr) {
        legacy::UnlockPixels(*worldPixMap);
        return UnlockDescriptionAndFail(world);
    }
    pixMap = *worldPixMap;
    baseAddress = currentRow = reinterpret_cast<uint8_t*>(*base);
    descriptionLocked = true;
    REALLockObject(world);
    picture = world;
    rowBytes = legacy::GetPixRowBytes(pixMap).value_or(0);
    width = description.width;
    height = description.height;
    cursorColumn = cursorRow = 0;
    return true;
}

bool PictureEditor::BindHostBitmap(REALpicture bitmap) {
    if (!LockPictureDescriptionAs(bitmap, &description, kPictureTypeHostBitmap)) return false;
    DecideHostKind(HostKindDecision::Console);
    const void* record = description.pictureData;
    if (description.pictureType != kPictureTypeHostBitmap || record == nullptr ||
        host_bitmap::ReadWord(record, host_bitmap::kZeroWordOffset) != 0 ||
        host_bitmap::ReadRowTable(record) == nullptr ||
        host_bitmap::ReadWord(record, host_bitmap::kValidWordOffset) == 0) {
        return UnlockDescriptionAndFail(bitmap);
    }
    REALLockObject(bitmap);
    picture = bitmap;
    descriptionLocked = true;
    pixelFormat = PixelFormatHostBGRA;
    bytesPerPixel = 4;
    cursorColumn = cursorRow = 0;
    width = description.width;
    height = description.height;
    rowBytes = static_cast<int32_t>(static_cast<uint32_t>(width) * 4u);
    rowTable = host_bitmap::ReadRowTable(record);
    baseAddress = currentRow = height > 0 ? rowTable[0] : nullptr;
    return true;
}

// The editor keeps its own reference on the copy, so the copy lives exactly as
// long as the binding.
bool PictureEditor::BindCopy(REALpicture copy) {
    const bool bound = Bind(copy, false, false, true);
    REALUnlockObject(copy);
    return bound;
}

bool PictureEditor::UnlockDescriptionAndFail(REALpicture described) {
    REALUnlockPictureDescription(described);
    return false;
}

void PictureEditor::ReleasePicture() {
    if (pixMap != nullptr) {
        legacy::UnlockPixels(pixMap);
        pixMap = nullptr;
    }
    if (descriptionLocked) {
        if (picture != nullptr) REALUnlockPictureDescription(picture);
        descriptionLocked = false;
    }
    if (forWriting && picture != nullptr) REALPictureClearCache(picture);
    if (picture != nullptr) {
        REALUnlockObject(picture);
        picture = nullptr;
    }
}

REALpicture PictureEditor::RenderPictureWriter() {
    REALpicture result = picture;
    if (result != nullptr) {
        REALLockObject(result);
        REALPictureClearCache(result);
    }
    ReleasePicture();
    return result;
}

uint8_t* PictureEditor::RowAddress(int32_t y) {
    cursorColumn = 0;
    cursorRow = y;
    if (y >= height) return baseAddress;
    if (pixelFormat == PixelFormatHostBGRA) return rowTable[y];
    return baseAddress + static_cast<ptrdiff_t>(y) * rowBytes;
}

void PictureEditor::NextRow() { currentRow = RowAddress(cursorRow + 1); }

Pixel PictureEditor::GetPixel(int32_t x, int32_t y) {
    const uint8_t* p = PixelAddress(x, y);
    switch (pixelFormat) {
        case PixelFormatARGB32: return PixelCodec<PixelFormatARGB32>::Read(p);
        case PixelFormatRGB24: return PixelCodec<PixelFormatRGB24>::Read(p);
        case PixelFormatHostBGRA: return PixelCodec<PixelFormatHostBGRA>::Read(p);
        default: return {0, 0, 0, 0};
    }
}

void PictureEditor::SetPixel(int32_t x, int32_t y, int32_t r, int32_t g, int32_t b, int32_t a) {
    uint8_t* p = PixelAddress(x, y);
    const Pixel channels{r, g, b, a};
    switch (pixelFormat) {
        case PixelFormatARGB32: PixelCodec<PixelFormatARGB32>::Write(p, channels); break;
        case PixelFormatRGB24: PixelCodec<PixelFormatRGB24>::Write(p, channels); break;
        case PixelFormatHostBGRA: PixelCodec<PixelFormatHostBGRA>::Write(p, channels); break;
        default: break;
    }
}

bool BindNewPicture(PictureWriter& writer, int32_t width, int32_t height) {
    REALpicture created = NewDepth32Picture(width, height);
    if (created == nullptr) return false;
    const bool bound = writer.GetPictureEditor(created, false, true);
    REALUnlockObject(created);
    // A host handing back a picture of another size would send the caller's
    // writes outside it.
    if (bound && (writer.width != width || writer.height != height)) {
        writer.ReleasePicture();
        return false;
    }
    return bound;
}
