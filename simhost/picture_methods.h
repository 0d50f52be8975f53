// The fifteen methods the plug-in adds to Picture, as a Xojo program sees them:
// the name it calls, the declaration the plug-in registers on current hosts, and
// the native form of the call the host's compiled code makes. Everything on the
// host's side of the plug-in (this simulated host, the pixturn command, the
// benchmark, the fuzz target, the tests) takes the methods from here.
#pragma once

#include <cstdint>

#include "platform/xojo/rb_plugin.h"

namespace simhost {

// The native parameters after the receiver, and the result.
enum class MethodForm {
    Picture,             // () as picture
    AngleAndBackground,  // (angle as double, background as color) as picture
    AngleAndCut,         // (angle as double, cut as boolean) as picture
    Size,                // (width as integer, height as integer) as picture
    InPlace,             // () as boolean, the receiver changed
    MemoryEstimate,      // (angle as double) as Int64
};

struct PictureMethod {
    const char* name;         // "RotateQLM"; "CloneQLM" names two methods
    const char* declaration;  // as a class extension registers it
    MethodForm form;
};

namespace methods {
inline constexpr PictureMethod kRotate{
    "RotateQLM", "RotateQLM(angle as double, background as color = &cFFFFFFFF) as picture",
    MethodForm::AngleAndBackground};
inline constexpr PictureMethod kRotateImageAndMask{
    "RotateImageAndMaskQLM", "RotateImageAndMaskQLM(angle as double, cut as boolean = False) as picture",
    MethodForm::AngleAndCut};
inline constexpr PictureMethod kRotate90{"Rotate90QLM", "Rotate90QLM as picture", MethodForm::Picture};
inline constexpr PictureMethod kRotate180{"Rotate180QLM", "Rotate180QLM as picture", MethodForm::Picture};
inline constexpr PictureMethod kRotate270{"Rotate270QLM", "Rotate270QLM as picture", MethodForm::Picture};
inline constexpr PictureMethod kRotateMemory{"RotateMemoryQLM", "RotateMemoryQLM(angle as double) as Int64",
                                             MethodForm::MemoryEstimate};
inline constexpr PictureMethod kMirror{"MirrorQLM", "MirrorQLM as picture", MethodForm::Picture};
inline constexpr PictureMethod kVMirror{"VMirrorQLM", "VMirrorQLM as picture", MethodForm::Picture};
inline constexpr PictureMethod kHMirror{"HMirrorQLM", "HMirrorQLM as picture", MethodForm::Picture};
inline constexpr PictureMethod kMirrorInPlace{"MirrorPictureQLM", "MirrorPictureQLM as boolean",
                                              MethodForm::InPlace};
inline constexpr PictureMethod kVMirrorInPlace{"VMirrorPictureQLM", "VMirrorPictureQLM as boolean",
                                               MethodForm::InPlace};
inline constexpr PictureMethod kHMirrorInPlace{"HMirrorPictureQLM", "HMirrorPictureQLM as boolean",
                                               MethodForm::InPlace};
inline constexpr PictureMethod kClone{"CloneQLM", "CloneQLM as picture", MethodForm::Picture};
inline constexpr PictureMethod kCloneToSize{
    "CloneQLM", "CloneQLM(width as integer, height as integer) as picture", MethodForm::Size};
inline constexpr PictureMethod kBitmap{"BitmapQLM", "BitmapQLM as picture", MethodForm::Picture};
}  // namespace methods

// All fifteen, in the order of the plug-in's own table.
inline constexpr const PictureMethod* kPictureMethods[] = {
    &methods::kRotate,         &methods::kRotateImageAndMask, &methods::kRotate90,       &methods::kRotate180,
    &methods::kRotate270,      &methods::kRotateMemory,       &methods::kMirror,         &methods::kVMirror,
    &methods::kHMirror,        &methods::kMirrorInPlace,      &methods::kVMirrorInPlace, &methods::kHMirrorInPlace,
    &methods::kClone,          &methods::kCloneToSize,        &methods::kBitmap};

// What a program passes after the receiver; each form reads its own fields.
struct MethodArguments {
    double angle = 0;
    uint32_t background = 0;  // a color as the host passes it: 0xAARRGGBB
    signed char cut = 0;
    int32_t width = 0;
    int32_t height = 0;
};

// What a call gave, in its form's own result.
struct MethodResult {
    REALpicture picture = nullptr;  // the picture forms
    bool changed = false;           // InPlace
    int64_t bytes = 0;              // MemoryEstimate
};

// Calls a registered method's function with the receiver first and the native
// arguments of its form after it, as the host's compiled code does.
MethodResult CallInForm(REALproc function, MethodForm form, REALpicture receiver, const MethodArguments& arguments);

}  // namespace simhost
