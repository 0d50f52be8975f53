// The host's three-argument description lock, with its one quirk: hosts before
// 2012.0 expect the unlock call even after a lock that failed.
#pragma once

#include "platform/xojo/rb_plugin.h"

// True when the host described the picture as the requested type and the
// description is locked (to be given back with REALUnlockPictureDescription).
bool LockPictureDescriptionAs(REALpicture picture, REALpictureDescription* description, int32_t pictureType);
