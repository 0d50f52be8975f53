#include "picture/host_picture.h"

#include "picture/legacy_bridge.h"
#include "plugin/host_entry_points.h"
#include "plugin/process_state.h"

REALpicture NewDepth32Picture(int32_t width, int32_t height) {
    // The host makes no picture with a side outside 1..32767, and asking is a fault.
    if (!IsValidPictureSize(width, height)) return nullptr;
    legacy::ResetDrawingPort();
    return REALNewPicture(width, height, 32);
}

int32_t ReadIntProperty(REALobject object, const char* property) {
    int32_t value = 0;
    if (!REALGetPropValueInt32(object, property, &value)) return 0;
    return value;
}

bool LockPictureDescriptionAs(REALpicture picture, REALpictureDescription* description, int32_t pictureType) {
    if (REALLockPictureDescription(picture, description, pictureType)) return true;
    if (HostUnlocksAfterFailedLock()) REALUnlockPictureDescription(picture);
    return false;
}
