// The fifteen methods added to the host's Picture class, each declaration bound to
// the native function the host calls with the receiver first, and the class record
// that carries them.
#include "plugin/definitions.h"

#include "plugin/methods.h"

namespace {

template <typename Function>
REALmethodDefinition Method(Function* function, const char* declaration) {
    return {reinterpret_cast<REALproc>(function), nullptr, declaration, kFlagNewStyle, 0, nullptr};
}

}  // namespace

PictureMethodTable PictureMethodsAsLoaded() {
    return {{
        Method(rbRotate, "RotateQLM(angle as double, background as color = &cFFFFFFFF) as picture"),
        Method(RotateImageAndMaskQLM, "RotateImageAndMaskQLM(angle as double, cut as boolean = False) as picture"),
        Method(rbRotate90, "Rotate90QLM as picture"),
        Method(rbRotate180, "Rotate180QLM as picture"),
        Method(rbRotate270, "Rotate270QLM as picture"),
        Method(rbRotateMemory, "RotateMemoryQLM(angle as double) as Int64"),
        Method(MirrorQLM, "MirrorQLM as picture"),
        Method(VMirrorQLM, "VMirrorQLM as picture"),
        Method(HMirrorQLM, "HMirrorQLM as picture"),
        Method(MirrorPictureQLM, "MirrorPictureQLM as boolean"),
        Method(VMirrorPictureQLM, "VMirrorPictureQLM as boolean"),
        Method(HMirrorPictureQLM, "HMirrorPictureQLM as boolean"),
        Method(rbClonePicture, "CloneQLM as picture"),
        Method(rbClonePicture2, "CloneQLM(width as integer, height as integer) as picture"),
        Method(rbBitmapPicture, "BitmapQLM as picture"),
    }};
}

REALclassDefinition PictureClassAsLoaded() {
    REALclassDefinition definition{};
    definition.version = kNewestDefinitionVersion;
    definition.name = "Picture";
    definition.methods = pictureMethods.data();
    definition.methodCount = kPictureMethodCount;
    definition.mFlags = kFlagNewStyle;
    return definition;
}

PictureMethodTable pictureMethods = PictureMethodsAsLoaded();
REALclassDefinition pictureClass = PictureClassAsLoaded();
