// "CloneQLM as picture", "CloneQLM(width, height)" and "BitmapQLM as picture":
// plain copies drawn by the host, and a bitmap conversion that hands back the
// receiver itself when it already is a 32-bit pixel map.
#include <optional>

#include "picture/copying.h"
#include "picture/host_picture.h"
#include "picture/legacy_bridge.h"
#include "plugin/host_entry_points.h"
#include "plugin/methods.h"

namespace {

// The receiver handed back as a result needs a reference of its own for the host.
REALpicture ReturnReceiver(REALpicture picture) {
    if (!REALLockObject.IsAvailable()) return nullptr;
    REALLockObject(picture);
    return picture;
}

bool IsDepth32World(const REALpictureDescription& description) {
    if (description.pictureType != kPictureTypeGWorld) return false;
    const std::optional<PixMapHandle> pixMap = legacy::GetPortPixMap(static_cast<CGrafPtr>(description.pictureData));
    if (!pixMap || *pixMap == nullptr) return false;
    return legacy::GetPixDepth(*pixMap) == 32;
}

}  // namespace

REALpicture rbClonePicture(REALpicture picture) { return ClonePicture(picture); }

REALpicture rbClonePicture2(REALpicture picture, int32_t width, int32_t height) {
    if (picture == nullptr || width < 1 || height < 1) return nullptr;
    return DrawIntoNewPicture(picture, width, height);
}

REALpicture rbBitmapPicture(REALpicture picture) {
    if (picture == nullptr) return nullptr;
    REALpictureDescription description{};
    bool handBackReceiver;
    if (LockPictureDescriptionAs(picture, &description, kPictureTypeGWorld))
        handBackReceiver = IsDepth32World(description);
    else if (LockPictureDescriptionAs(picture, &description, kPictureTypeVector))
        handBackReceiver = true;
    else
        return nullptr;
    REALpicture receiver = handBackReceiver ? ReturnReceiver(picture) : nullptr;
    REALUnlockPictureDescription(picture);
    if (handBackReceiver) return receiver;
    if (description.width < 1 || description.height < 1) return nullptr;
    return DrawIntoNewPicture(picture, description.width, description.height);
}
