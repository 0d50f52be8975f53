// The Picture class extension as the plug-in hands it to the host: the class
// record and its fifteen methods. Both are process-wide and mutable on purpose:
// start-up adapts them in place to the host it runs in, and the host keeps
// pointers to them for the life of the process.
#pragma once

#include <array>

#include "platform/xojo/rb_plugin.h"

constexpr int32_t kPictureMethodCount = 15;
// The definition versions the plug-in can register with: the newest is the
// records' own; hosts before 2012.0 read the oldest, a shorter layout.
constexpr int32_t kNewestDefinitionVersion = 13;
constexpr int32_t kOldestDefinitionVersion = 9;
using PictureMethodTable = std::array<REALmethodDefinition, kPictureMethodCount>;

extern PictureMethodTable pictureMethods;
extern REALclassDefinition pictureClass;

// Both records as the library holds them when it is loaded, before start-up
// edits them.
PictureMethodTable PictureMethodsAsLoaded();
REALclassDefinition PictureClassAsLoaded();

// Hosts before 2011.04 parse colour literals of six hex digits only; they get
// this declaration in place of entry 0's.
inline constexpr const char kRotateDeclarationSixDigitColour[] =
    "RotateQLM(angle as double, background as color = &cFFFFFF) as picture";
