// Copies of host pictures. The host draws them: the plug-in makes a new 32-bit
// picture and calls the host's DrawPicture on its graphics object. Only where the
// host offers no such method does the plug-in copy rows itself (OwnCopy), and that
// works only between two host bitmaps of the same size. Nothing is ever scaled:
// source and destination rectangles are always the same size.
#pragma once

#include <cstdint>

#include "platform/xojo/rb_plugin.h"

REALpicture DrawIntoNewPicture(REALpicture source, int32_t width, int32_t height);
REALpicture ClonePicture(REALpicture picture);
void GraphicsDrawPicture(REALpicture dest, REALpicture src, int32_t x, int32_t y, int32_t w,
                         int32_t h, int32_t sx, int32_t sy, int32_t sw, int32_t sh);
bool OwnCopy(REALpicture dest, REALpicture src, int32_t x, int32_t y, int32_t w, int32_t h,
             int32_t sx, int32_t sy, int32_t sw, int32_t sh);
