// Signatures, not whole declarations: the default of RotateQLM's background and
// the extended first parameter of module methods change with the host version.
#include "tools/pixturn/method_table.h"

namespace pixturn {

namespace methods {
const MethodEntry kRotate{"RotateQLM", "RotateQLM(double,color)picture", MethodForm::AngleAndBackground};
const MethodEntry kRotateImageAndMask{"RotateImageAndMaskQLM", "RotateImageAndMaskQLM(double,boolean)picture",
                                      MethodForm::AngleAndCut};
const MethodEntry kRotate90{"Rotate90QLM", "Rotate90QLM()picture", MethodForm::Picture};
const MethodEntry kRotate180{"Rotate180QLM", "Rotate180QLM()picture", MethodForm::Picture};
const MethodEntry kRotate270{"Rotate270QLM", "Rotate270QLM()picture", MethodForm::Picture};
const MethodEntry kRotateMemory{"RotateMemoryQLM", "RotateMemoryQLM(double)int64", MethodForm::MemoryEstimate};
const MethodEntry kMirror{"MirrorQLM", "MirrorQLM()picture", MethodForm::Picture};
const MethodEntry kVMirror{"VMirrorQLM", "VMirrorQLM()picture", MethodForm::Picture};
const MethodEntry kHMirror{"HMirrorQLM", "HMirrorQLM()picture", MethodForm::Picture};
const MethodEntry kMirrorInPlace{"MirrorPictureQLM", "MirrorPictureQLM()boolean", MethodForm::InPlace};
const MethodEntry kVMirrorInPlace{"VMirrorPictureQLM", "VMirrorPictureQLM()boolean", MethodForm::InPlace};
const MethodEntry kHMirrorInPlace{"HMirrorPictureQLM", "HMirrorPictureQLM()boolean", MethodForm::InPlace};
const MethodEntry kClone{"CloneQLM", "CloneQLM()picture", MethodForm::Picture};
const MethodEntry kCloneToSize{"CloneQLM", "CloneQLM(integer,integer)picture", MethodForm::Size};
const MethodEntry kBitmap{"BitmapQLM", "BitmapQLM()picture", MethodForm::Picture};
}  // namespace methods

const std::vector<const MethodEntry*>& AllMethods() {
    using namespace methods;
    static const std::vector<const MethodEntry*> all{
        &kRotate,        &kRotateImageAndMask, &kRotate90,       &kRotate180, &kRotate270,
        &kRotateMemory,  &kMirror,             &kVMirror,        &kHMirror,   &kMirrorInPlace,
        &kVMirrorInPlace, &kHMirrorInPlace,    &kClone,          &kCloneToSize, &kBitmap};
    return all;
}

}  // namespace pixturn
