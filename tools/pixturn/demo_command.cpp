// `pixturn demo`: every method once (the rotations with several angles and
// backgrounds), each on a fresh receiver made from the same input, so that the
// in-place mirrors do not change what the next method sees. A method that
// fails is shown in the gallery and reported, and the demo goes on with the rest.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <system_error>

#include "simhost/simulated_host.h"
#include "tools/pixturn/command_support.h"
#include "tools/pixturn/commands.h"
#include "tools/pixturn/contact_sheet.h"
#include "tools/pixturn/failure.h"
#include "tools/pixturn/gallery_images.h"
#include "tools/pixturn/image_files.h"
#include "tools/pixturn/method_call.h"
#include "tools/pixturn/progress_line.h"
#include "tools/pixturn/test_card.h"

namespace pixturn {

namespace {

struct DemoStep {
    std::string file;  // base name of its outputs
    const MethodEntry* method;
    MethodArguments arguments;
    bool withMask = false;  // the receiver gets the test mask; the turned mask is written too
};

MethodArguments Rotation(double angle, std::optional<uint32_t> background = std::nullopt) {
    MethodArguments arguments;
    arguments.angle = angle;
    arguments.background = background;
    return arguments;
}

MethodArguments MaskRotation(double angle, bool cut) {
    MethodArguments arguments;
    arguments.angle = angle;
    arguments.cut = cut;
    return arguments;
}

MethodArguments CloneSize(int32_t width, int32_t height) {
    MethodArguments arguments;
    arguments.size = {width, height};
    return arguments;
}

std::vector<DemoStep> Steps(const Image& input) {
    using namespace methods;
    // A quarter more on each side, capped at the host's limit, so the clone
    // shows the new area beside the unscaled original.
    const int32_t wider = std::min(simhost::kLargestPictureSide, input.width + input.width / 4 + 1);
    const int32_t taller = std::min(simhost::kLargestPictureSide, input.height + input.height / 4 + 1);
    return {
        {"rotate-30", &kRotate, Rotation(30)},
        {"rotate-minus-12.5-transparent", &kRotate, Rotation(-12.5, 0x00000000)},
        {"rotate-135-navy", &kRotate, Rotation(135, 0xFF203060)},
        {"rotate-mask-30", &kRotateImageAndMask, MaskRotation(30, false), true},
        {"rotate-mask-30-cut", &kRotateImageAndMask, MaskRotation(30, true), true},
        {"rotate90", &kRotate90, {}},
        {"rotate180", &kRotate180, {}},
        {"rotate270", &kRotate270, {}},
        {"memory-30", &kRotateMemory, Rotation(30)},
        {"mirror", &kMirror, {}},
        {"hmirror", &kHMirror, {}},
        {"vmirror", &kVMirror, {}},
        {"mirror-in-place", &kMirrorInPlace, {}},
        {"hmirror-in-place", &kHMirrorInPlace, {}},
        {"vmirror-in-place", &kVMirrorInPlace, {}},
        {"clone", &kClone, {}},
        {"clone-to-size", &kCloneToSize, CloneSize(wider, taller)},
        {"bitmap", &kBitmap, {}},
    };
}

// What the demo says a method does: the summary of the command that calls it.
std::string WhatItDoes(const MethodEntry& method) {
    for (const Command& command : AllCommands()) {
        if (command.method == &method || (command.method == &methods::kClone && &method == &methods::kCloneToSize)) {
            return command.summary;
        }
    }
    return "";
}

class Demo {
public:
    Demo(const Invocation& invocation, const std::string& directory, const Image& input, ProgressLine& progress)
        : directory_(directory), encoding_(invocation.encoding), input_(input),
          mask_(TestMask(input.width, input.height)), host_(SettingsFrom(invocation)), progress_(progress) {}

    void Run(const std::vector<DemoStep>& steps) {
        SheetEntry original;
        original.call = "p";
        original.what = "the receiver of every call below (a fresh copy each time) and the mask the "
                        "RotateImageAndMaskQLM calls give it: black opaque, white transparent";
        original.images = {Show("input", input_, ImageRole::Picture, "picture"),
                           Show("input-mask", mask_, ImageRole::Mask, "mask"),
                           Show("input-masked", WithMaskApplied(input_, mask_), ImageRole::Picture,
                                "picture with its mask applied")};
        entries_.push_back(original);
        for (const DemoStep& step : steps) {
            progress_.Step(step.method->name);
            RunStep(step);
        }
    }

    const std::vector<SheetEntry>& entries() const { return entries_; }
    const std::vector<std::string>& failures() const { return failures_; }
    int written() const { return written_; }

private:
    // Writes the picture at full size and, when it is larger than a thumbnail,
    // a thumbnail beside it; gives what the page shows.
    SheetImage Show(const std::string& name, const Image& image, ImageRole role, const std::string& label) {
        SheetImage shown{name + ".png", name + ".png", label, image.width, image.height};
        std::vector<OutputImage> outputs{{directory_ + "/" + shown.file, &image, role}};
        const Image small = Thumbnail(image, kThumbnailSide);
        if (small.width != image.width || small.height != image.height) {
            shown.thumbnail = "thumbs/" + shown.file;
            outputs.push_back({directory_ + "/" + shown.thumbnail, &small, role});
        }
        WriteOutputs(outputs, encoding_);
        written_ += static_cast<int>(outputs.size());
        return shown;
    }

    void RunStep(const DemoStep& step) {
        HostPicture receiver = host_.MakePicture(input_);
        if (step.withMask) {
            const HostPicture mask = host_.MakePicture(mask_, ImageRole::Mask);
            host_.host().SetMask(receiver.get(), mask.get());
        }
        const MethodOutcome outcome = CallMethod(host_, *step.method, receiver.get(), step.arguments);
        SheetEntry entry;
        entry.call = "p." + outcome.call;
        entry.what = WhatItDoes(*step.method);
        entry.seconds = outcome.seconds;
        if (!outcome.Succeeded()) {
            entry.returned = outcome.result.has_value() ? "False" : "Nil";
            entry.failed = true;
            failures_.push_back(outcome.FailureText() + ": p." + outcome.call);
        } else if (outcome.bytes) {
            entry.returned = std::to_string(*outcome.bytes) + " bytes (" + MebibyteText(*outcome.bytes) + ")";
        } else {
            const REALpicture picture = outcome.picture ? outcome.picture.get() : receiver.get();
            entry.returned = outcome.result.has_value() ? "True, p changed" : picture == receiver.get() ? "p itself" : "a new picture";
            const Image result = host_.ReadPicture(picture);
            entry.images.push_back(Show(step.file, result, ImageRole::Picture, "picture"));
            if (const REALpicture mask = host_.host().MaskOf(picture); step.withMask && mask != nullptr) {
                const Image turnedMask = host_.ReadPicture(mask);
                entry.images.push_back(Show(step.file + "-mask", turnedMask, ImageRole::Mask, "its mask"));
                entry.images.push_back(Show(step.file + "-masked", WithMaskApplied(result, turnedMask),
                                            ImageRole::Picture, "picture with its mask applied"));
            }
        }
        entries_.push_back(entry);
    }

    std::string directory_;
    EncodeSettings encoding_;
    const Image& input_;
    Image mask_;
    PluginHost host_;
    ProgressLine& progress_;
    std::vector<SheetEntry> entries_;
    std::vector<std::string> failures_;
    int written_ = 0;
};

}  // namespace

int RunDemo(const Command&, const Invocation& invocation) {
    const std::string directory = invocation.operands.empty() ? "demo-output" : invocation.operands.front();
    const bool ownInput = invocation.Has(kOptionInput);
    const Image input = ownInput ? ReadImageFile(invocation.input, invocation.reading) : TestCard();
    MakeDirectory(directory + "/thumbs");

    const std::vector<DemoStep> steps = Steps(input);
    const std::string title = (ownInput ? invocation.input : std::string("the built-in test card")) + " (" +
                              SizeText(input.width, input.height) + ") on the " + HostText(invocation);
    std::printf("pixturn demo: %zu method calls on %s, each result written into %s/\n", steps.size(), title.c_str(),
                directory.c_str());
    std::fflush(stdout);
    ProgressLine progress("demo", steps.size());
    Demo demo(invocation, directory, input, progress);
    demo.Run(steps);
    progress.Clear();
    const std::string about =
        "Each call is made on a fresh copy of p through the method table the plug-in registered. Click a "
        "picture for its full-size PNG.";
    const std::string sheetPath = directory + "/index.html";
    AtomicOutputFile sheet(sheetPath);
    WriteContactSheet(sheet, title, about, demo.entries());
    sheet.Commit();

    for (const std::string& failure : demo.failures()) std::fprintf(stderr, "pixturn: demo: %s\n", failure.c_str());
    std::printf("%d pictures and the gallery of %zu method calls on %s\n", demo.written(), steps.size(),
                title.c_str());
    std::printf("%s\n", std::filesystem::absolute(sheetPath).lexically_normal().c_str());
    return demo.failures().empty() ? kExitSuccess : kExitFailure;
}

}  // namespace pixturn
