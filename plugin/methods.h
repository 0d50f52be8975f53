// The fifteen method functions the host calls, receiver first. A picture result
// carries one reference for the host; failure is nil, false or 0, never an
// exception.
#pragma once

#include <cstdint>

#include "platform/xojo/rb_plugin.h"

REALpicture rbRotate(REALpicture picture, double angle, uint32_t background);
REALpicture RotateImageAndMaskQLM(REALpicture picture, double angle, signed char cut);
REALpicture rbRotate90(REALpicture picture);
REALpicture rbRotate180(REALpicture picture);
REALpicture rbRotate270(REALpicture picture);
int64_t rbRotateMemory(REALpicture picture, double angle);
REALpicture MirrorQLM(REALpicture picture);
REALpicture VMirrorQLM(REALpicture picture);
REALpicture HMirrorQLM(REALpicture picture);
bool MirrorPictureQLM(REALpicture picture);
bool VMirrorPictureQLM(REALpicture picture);
bool HMirrorPictureQLM(REALpicture picture);
REALpicture rbClonePicture(REALpicture picture);
REALpicture rbClonePicture2(REALpicture picture, int32_t width, int32_t height);
REALpicture rbBitmapPicture(REALpicture picture);
