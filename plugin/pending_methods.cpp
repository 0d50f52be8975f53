// Methods not built yet: each answers failure until its transform lands.
#include "plugin/methods.h"

REALpicture rbRotate(REALpicture, double, uint32_t) { return nullptr; }
REALpicture RotateImageAndMaskQLM(REALpicture, double, signed char) { return nullptr; }
REALpicture rbRotate90(REALpicture) { return nullptr; }
REALpicture rbRotate180(REALpicture) { return nullptr; }
REALpicture rbRotate270(REALpicture) { return nullptr; }
int64_t rbRotateMemory(REALpicture, double) { return 0; }
REALpicture MirrorQLM(REALpicture) { return nullptr; }
REALpicture VMirrorQLM(REALpicture) { return nullptr; }
REALpicture HMirrorQLM(REALpicture) { return nullptr; }
bool MirrorPictureQLM(REALpicture) { return false; }
bool VMirrorPictureQLM(REALpicture) { return false; }
bool HMirrorPictureQLM(REALpicture) { return false; }
