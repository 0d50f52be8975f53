// One table drives parsing, checking and help, so that what --help promises and
// what the parser accepts cannot drift apart.
#include "tools/pixturn/command_table.h"

#include "tools/pixturn/commands.h"

namespace pixturn {

namespace {

constexpr unsigned kHostOptions = kOptionHost | kOptionHostVersion | kOptionPlugin;
constexpr unsigned kPictureOptions = kHostOptions | kOptionOutput;

}  // namespace

const std::vector<Command>& AllCommands() {
    using namespace methods;
    static const std::vector<Command> commands{
        {"rotate", "FILE", "turn by any angle, anticlockwise, background in the corners (RotateQLM)",
         kPictureOptions | kOptionAngle | kOptionBackground, kOptionOutput | kOptionAngle, &kRotate,
         RunPictureMethod},
        {"rotate-mask", "FILE",
         "turn a picture and its --mask together, whole or --cut to the picture's size; --mask-out writes the "
         "turned mask (RotateImageAndMaskQLM)",
         kPictureOptions | kOptionAngle | kOptionMask | kOptionCut | kOptionMaskOutput, kOptionOutput | kOptionAngle,
         &kRotateImageAndMask, RunRotateWithMask},
        {"rotate90", "FILE", "quarter turn anticlockwise (Rotate90QLM)", kPictureOptions, kOptionOutput, &kRotate90,
         RunPictureMethod},
        {"rotate180", "FILE", "half turn (Rotate180QLM)", kPictureOptions, kOptionOutput, &kRotate180,
         RunPictureMethod},
        {"rotate270", "FILE", "quarter turn clockwise (Rotate270QLM)", kPictureOptions, kOptionOutput, &kRotate270,
         RunPictureMethod},
        {"memory", "[FILE]",
         "bytes of pixel memory a rotation of FILE, or of a picture of --size WxH, will claim (RotateMemoryQLM)",
         kHostOptions | kOptionAngle | kOptionSize, kOptionAngle, &kRotateMemory, RunMemoryEstimate},
        {"mirror", "FILE", "mirror both ways into a new picture (MirrorQLM)", kPictureOptions, kOptionOutput,
         &kMirror, RunPictureMethod},
        {"hmirror", "FILE", "mirror left-right into a new picture (HMirrorQLM)", kPictureOptions, kOptionOutput,
         &kHMirror, RunPictureMethod},
        {"vmirror", "FILE", "mirror top-bottom into a new picture (VMirrorQLM)", kPictureOptions, kOptionOutput,
         &kVMirror, RunPictureMethod},
        {"mirror-in-place", "FILE", "mirror both ways in place and write the changed picture (MirrorPictureQLM)", kPictureOptions, kOptionOutput,
         &kMirrorInPlace, RunPictureMethod},
        {"hmirror-in-place", "FILE", "mirror left-right in place and write the changed picture (HMirrorPictureQLM)", kPictureOptions,
         kOptionOutput, &kHMirrorInPlace, RunPictureMethod},
        {"vmirror-in-place", "FILE", "mirror top-bottom in place and write the changed picture (VMirrorPictureQLM)", kPictureOptions,
         kOptionOutput, &kVMirrorInPlace, RunPictureMethod},
        {"clone", "FILE",
         "copy at the same size (CloneQLM), or with --size into a new size, unscaled at the top left "
         "(CloneQLM(width, height))",
         kPictureOptions | kOptionSize, kOptionOutput, &kClone, RunPictureMethod},
        {"bitmap", "FILE", "convert to a plain 32-bit bitmap picture (BitmapQLM)", kPictureOptions, kOptionOutput,
         &kBitmap, RunPictureMethod},
        {"methods", "", "what the host received when the plug-in started: form, definition version, declarations, "
                        "flags",
         kHostOptions, 0, nullptr, RunMethodsListing},
        {"demo", "[DIR]",
         "run every method on the built-in test card (or --input FILE); write each result as PNG and an "
         "index.html contact sheet into DIR (default demo-output)",
         kHostOptions | kOptionInput, 0, nullptr, RunDemo},
        {"help", "[COMMAND]", "this text, or one command's", 0, 0, nullptr, RunHelp},
    };
    return commands;
}

const Command* FindCommand(const std::string& name) {
    for (const Command& command : AllCommands()) {
        if (name == command.name) return &command;
    }
    return nullptr;
}

const std::vector<OptionSpec>& AllOptions() {
    static const std::vector<OptionSpec> options{
        {kOptionAngle, "--angle", nullptr, "DEG", "angle in degrees, positive anticlockwise"},
        {kOptionBackground, "--background", nullptr, "COLOUR",
         "colour of the uncovered corners: a Xojo literal &cRRGGBB or &cRRGGBBAA (quote the &), or the raw value "
         "0xAARRGGBB the host passes; AA is the pixels' fourth channel (alpha, 255 opaque). Default: the "
         "declaration's, &cFFFFFFFF (&cFFFFFF before host version 2011.04)"},
        {kOptionOutput, "--output", "-o", "OUTPUT", "the result, PNG (RGBA) or JPEG (RGB) by its extension"},
        {kOptionMask, "--mask", nullptr, "FILE", "the picture's mask, a grey image (black opaque, white transparent)"},
        {kOptionCut, "--cut", nullptr, nullptr, "cut the turned picture and mask back to the picture's size"},
        {kOptionMaskOutput, "--mask-out", nullptr, "FILE", "write the turned mask as a grey image"},
        {kOptionSize, "--size", nullptr, "WxH", "a size in pixels, width x height"},
        {kOptionInput, "--input", nullptr, "FILE", "run the demo on this picture instead of the test card"},
        {kOptionHost, "--host", nullptr, "KIND",
         "desktop (32-bit world, the default), desktop24, desktop16, console or web (host bitmap, 7-bit alpha): "
         "which kind of host runs and how it stores the input picture"},
        {kOptionHostVersion, "--host-version", nullptr, "V",
         "the version the host reports, 2019.0 unless told; 'none' for a host that reports none"},
        {kOptionPlugin, "--plugin", nullptr, "PATH",
         "the plug-in library to load (default: $PIXTURN_PLUGIN, else the one built with pixturn)"},
    };
    return options;
}

}  // namespace pixturn
