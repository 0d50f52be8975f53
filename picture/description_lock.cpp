#include "picture/description_lock.h"

#include "plugin/host_entry_points.h"
#include "plugin/startup_state.h"

bool LockPictureDescriptionAs(REALpicture picture, REALpictureDescription* description, int32_t pictureType) {
    if (REALLockPictureDescription(picture, description, pictureType)) return true;
    if (HostUnlocksAfterFailedLock()) REALUnlockPictureDescription(picture);
    return false;
}
