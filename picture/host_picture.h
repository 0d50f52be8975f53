// What the plug-in asks of a host picture outside the editor: the size limit of
// the pictures it has the host make, a new depth-32 picture, a property read and
// the description lock. The editor, the copies and the transforms all build on
// these and on nothing of each other's to get them.
#pragma once

#include <cstdint>

#include "platform/xojo/rb_plugin.h"

// Every picture the transforms ask the host to make is 1 to 32767 pixels a side.
constexpr int32_t kMaxPictureSide = 32767;
inline bool IsValidPictureSize(int32_t width, int32_t height) {
    return width >= 1 && height >= 1 && width <= kMaxPictureSide && height <= kMaxPictureSide;
}

// Resets the legacy drawing port and asks the host for a new depth-32 picture;
// nil for a size outside the limit or when the host cannot make one. One
// reference, owned by the caller.
REALpicture NewDepth32Picture(int32_t width, int32_t height);

// A host property read as a 32-bit integer; 0 when it cannot be read.
int32_t ReadIntProperty(REALobject object, const char* property);

// The host's three-argument description lock, with its one quirk: hosts before
// 2012.0 expect the unlock call even after a lock that failed. True when the host
// described the picture as the requested type and the description is locked (to
// be given back with REALUnlockPictureDescription).
bool LockPictureDescriptionAs(REALpicture picture, REALpictureDescription* description, int32_t pictureType);
