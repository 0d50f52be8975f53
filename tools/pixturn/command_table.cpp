// One table drives parsing, checking and help, so that what --help promises and
// what the parser accepts cannot drift apart.
#include "tools/pixturn/command_table.h"

#include "tools/pixturn/commands.h"

namespace pixturn {

namespace {

constexpr unsigned kHostOptions = kOptionHost | kOptionHostVersion | kOptionPlugin;
constexpr unsigned kEncodeOptions = kOptionPngLevel | kOptionQuality | kOptionFlatten | kOptionFormat;
constexpr unsigned kOutputOptions = kOptionOutput | kEncodeOptions;
// Commands with one picture result: one FILE and -o, or FILE... and --out-dir.
constexpr unsigned kPictureOptions = kHostOptions | kOutputOptions | kOptionOutDir | kOptionNoAutoOrient;

}  // namespace

const std::vector<Command>& AllCommands() {
    using namespace methods;
    static const std::vector<Command> commands{
        {"rotate", "FILE...", "turn by any angle, anticlockwise, background in the corners (RotateQLM)",
         kPictureOptions | kOptionAngle | kOptionBackground, kOptionAngle, &kRotate, RunPictureMethod},
        {"rotate-mask", "FILE",
         "turn a picture and its --mask together, whole or --cut to the picture's size; --mask-out writes the "
         "turned mask (RotateImageAndMaskQLM)",
         kHostOptions | kOutputOptions | kOptionNoAutoOrient | kOptionAngle | kOptionMask | kOptionCut |
             kOptionMaskOutput,
         kOptionOutput | kOptionAngle, &kRotateImageAndMask, RunRotateWithMask},
        {"rotate90", "FILE...", "quarter turn anticlockwise (Rotate90QLM)", kPictureOptions, 0, &kRotate90,
         RunPictureMethod},
        {"rotate180", "FILE...", "half turn (Rotate180QLM)", kPictureOptions, 0, &kRotate180, RunPictureMethod},
        {"rotate270", "FILE...", "quarter turn clockwise (Rotate270QLM)", kPictureOptions, 0, &kRotate270,
         RunPictureMethod},
        {"memory", "[FILE]",
         "bytes of pixel memory a rotation of FILE, or of a picture of --size WxH, will claim (RotateMemoryQLM)",
         kHostOptions | kOptionAngle | kOptionSize | kOptionNoAutoOrient, kOptionAngle, &kRotateMemory,
         RunMemoryEstimate},
        {"mirror", "FILE...", "mirror both ways into a new picture (MirrorQLM)", kPictureOptions, 0, &kMirror,
         RunPictureMethod},
        {"hmirror", "FILE...", "mirror left-right into a new picture (HMirrorQLM)", kPictureOptions, 0, &kHMirror,
         RunPictureMethod},
        {"vmirror", "FILE...", "mirror top-bottom into a new picture (VMirrorQLM)", kPictureOptions, 0, &kVMirror,
         RunPictureMethod},
        {"mirror-in-place", "FILE...", "mirror both ways in place and write the changed picture (MirrorPictureQLM)",
         kPictureOptions, 0, &kMirrorInPlace, RunPictureMethod},
        {"hmirror-in-place", "FILE...",
         "mirror left-right in place and write the changed picture (HMirrorPictureQLM)", kPictureOptions, 0,
         &kHMirrorInPlace, RunPictureMethod},
        {"vmirror-in-place", "FILE...",
         "mirror top-bottom in place and write the changed picture (VMirrorPictureQLM)", kPictureOptions, 0,
         &kVMirrorInPlace, RunPictureMethod},
        {"clone", "FILE...",
         "copy at the same size (CloneQLM), or with --size into a new size, unscaled at the top left "
         "(CloneQLM(width, height))",
         kPictureOptions | kOptionSize, 0, &kClone, RunPictureMethod},
        {"bitmap", "FILE...", "convert to a plain 32-bit bitmap picture (BitmapQLM)", kPictureOptions, 0, &kBitmap,
         RunPictureMethod},
        {"methods", "", "what the host received when the plug-in started: form, definition version, declarations, "
                        "flags",
         kHostOptions, 0, nullptr, RunMethodsListing},
        {"demo", "[DIR]",
         "run every method on the built-in test card (or --input FILE); write each result as PNG with a "
         "thumbnail, and an index.html gallery, into DIR (default demo-output)",
         kHostOptions | kOptionInput | kOptionNoAutoOrient | kOptionPngLevel, 0, nullptr, RunDemo},
        {"help", "[COMMAND]", "this text, or one command's", 0, 0, nullptr, RunHelp},
        {"version", "", "pixturn's version (also pixturn --version)", 0, 0, nullptr, RunVersion},
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
         "colour of the uncovered corners. Default: the registered declaration's, &cFFFFFFFF (opaque white; "
         "&cFFFFFF, transparent white, before host version 2011.04)"},
        {kOptionOutput, "--output", "-o", "OUTPUT",
         "the result, PNG or JPEG by its extension (or --format); '-' for standard output"},
        {kOptionOutDir, "--out-dir", nullptr, "DIR",
         "instead of -o: one result per FILE, in DIR under the input's own name; a FILE that fails is reported "
         "and the others are still written (exit status 1 if any failed)"},
        {kOptionFormat, "--format", nullptr, "png|jpeg", "the output's format, whatever its name says"},
        {kOptionPngLevel, "--png-level", nullptr, "N",
         "PNG compression, zlib's level 0 to 9 with the best filter for each row; unless told, a fast "
         "setting (on photos 6 gives files about a sixth smaller in four times the time)"},
        {kOptionQuality, "--quality", nullptr, "N", "JPEG quality, 1 to 100 (92 unless told)"},
        {kOptionFlatten, "--flatten", nullptr, "COLOUR",
         "JPEG keeps no alpha: pixels are laid over this colour (white unless told); PNG keeps the alpha"},
        {kOptionMask, "--mask", nullptr, "FILE", "the picture's mask, a grey image (black opaque, white transparent)"},
        {kOptionCut, "--cut", nullptr, nullptr, "cut the turned picture and mask back to the picture's size"},
        {kOptionMaskOutput, "--mask-out", nullptr, "FILE", "write the turned mask as a grey image"},
        {kOptionSize, "--size", nullptr, "WxH", "a size in pixels, width x height"},
        {kOptionInput, "--input", nullptr, "FILE", "run the demo on this picture instead of the test card"},
        {kOptionNoAutoOrient, "--no-auto-orient", nullptr, nullptr,
         "take a JPEG's pixels as stored, without turning them by its EXIF Orientation"},
        {kOptionHost, "--host", nullptr, "KIND",
         "desktop (32-bit world, the default), desktop24, desktop16, console or web (host bitmap, 7-bit alpha): "
         "which kind of host runs and how it stores the input picture"},
        {kOptionHostVersion, "--host-version", nullptr, "V",
         "the version the host reports, 2019.0 unless told; 'none' for a host that reports none"},
        {kOptionPlugin, "--plugin", nullptr, "PATH",
         "the plug-in library to load (default: $PIXTURN_PLUGIN, else the one installed or built with pixturn)"},
    };
    return options;
}

}  // namespace pixturn
