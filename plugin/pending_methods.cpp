// Methods not built yet: each answers failure until its transform lands.
#include "plugin/methods.h"

REALpicture rbRotate(REALpicture, double, uint32_t) { return nullptr; }
REALpicture RotateImageAndMaskQLM(REALpicture, double, signed char) { return nullptr; }
