// The legacy pixel-map bridge: the eight QuickDraw functions of desktop pictures,
// found at run time in the system's ApplicationServices framework and never linked.
//
// Each function is looked up on first need and kept once found; nothing is
// remembered about a failure, so a framework that did not load is loaded again at
// the next call and a missing name is asked for again at its next use. Every call
// reports whether the function could be had, and every caller has its own way on
// when it could not: the plug-in then works on host bitmaps only.
#pragma once

#include <optional>

#include "platform/macos/QuickDraw.h"

namespace legacy {

// SetGWorld(0, 0): resets the current drawing port before the host makes a new
// picture. Skipped when unavailable.
void ResetDrawingPort();

std::optional<PixMapHandle> GetPortPixMap(CGrafPtr port);
std::optional<PixMapHandle> GetGWorldPixMap(GWorldPtr world);
std::optional<int16_t> GetPixDepth(PixMapHandle pixMap);
std::optional<bool> LockPixels(PixMapHandle pixMap);
bool UnlockPixels(PixMapHandle pixMap);   // false when unavailable
std::optional<Ptr> GetPixBaseAddr(PixMapHandle pixMap);
std::optional<int32_t> GetPixRowBytes(PixMapHandle pixMap);

}  // namespace legacy
