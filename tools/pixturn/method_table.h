// The fifteen methods the plug-in adds to Picture, as the command knows them:
// the Xojo name, the signature the registered declaration must have, and the
// native form of the call.
#pragma once

#include <vector>

namespace pixturn {

// The native parameters after the receiver, and the result.
enum class MethodForm {
    Picture,                  // () as picture
    AngleAndBackground,       // (angle as double, background as color) as picture
    AngleAndCut,              // (angle as double, cut as boolean) as picture
    Size,                     // (width as integer, height as integer) as picture
    InPlace,                  // () as boolean, the receiver changed
    MemoryEstimate,           // (angle as double) as Int64
};

struct MethodEntry {
    const char* name;       // "RotateQLM"
    const char* signature;  // as DeclarationSignature gives it
    MethodForm form;
};

namespace methods {
extern const MethodEntry kRotate, kRotateImageAndMask, kRotate90, kRotate180, kRotate270, kRotateMemory, kMirror,
    kVMirror, kHMirror, kMirrorInPlace, kVMirrorInPlace, kHMirrorInPlace, kClone, kCloneToSize, kBitmap;
}

// All fifteen, in the order of the plug-in's method table.
const std::vector<const MethodEntry*>& AllMethods();

}  // namespace pixturn
