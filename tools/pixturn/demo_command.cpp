// `pixturn demo`: every method once (the rotations with several angles and
// backgrounds), each on a fresh receiver made from the same input, so that the
// in-place mirrors do not change what the next method sees. A method that
// fails is shown on the sheet and reported, and the demo goes on with the rest.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <system_error>

#include "tools/pixturn/command_support.h"
#include "tools/pixturn/commands.h"
#include "tools/pixturn/contact_sheet.h"
#include "tools/pixturn/failure.h"
#include "tools/pixturn/image_files.h"
#include "tools/pixturn/method_call.h"
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
    const int32_t wider = std::min(kMaxPictureSide, input.width + input.width / 4 + 1);
    const int32_t taller = std::min(kMaxPictureSide, input.height + input.height / 4 + 1);
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

class Demo {
public:
    Demo(const Invocation& invocation, const std::string& directory, const Image& input)
        : directory_(directory), input_(input), mask_(TestMask(input.width, input.height)),
          host_(SettingsFrom(invocation)) {}

    void Run() {
        Write("input.png", input_, ImageRole::Picture);
        Write("input-mask.png", mask_, ImageRole::Mask);
        SheetEntry original;
        original.call = "p";
        original.image = "input.png";
        original.mask = "input-mask.png";
        original.result = SizeText(input_.width, input_.height) + ", its mask beside it (black opaque, white transparent)";
        entries_.push_back(original);
        for (const DemoStep& step : Steps(input_)) RunStep(step);
    }

    const std::vector<SheetEntry>& entries() const { return entries_; }
    const std::vector<std::string>& failures() const { return failures_; }
    int written() const { return written_; }

private:
    void Write(const std::string& name, const Image& image, ImageRole role) {
        WriteOutputs({{directory_ + "/" + name, &image, role}});
        ++written_;
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
        entry.seconds = outcome.seconds;
        if (!outcome.Succeeded()) {
            entry.result = outcome.FailureText();
            entry.failed = true;
            failures_.push_back(outcome.FailureText() + ": p." + outcome.call);
        } else if (outcome.bytes) {
            entry.result = "= " + std::to_string(*outcome.bytes) + " bytes";
        } else {
            const REALpicture picture = outcome.picture ? outcome.picture.get() : receiver.get();
            const Image result = host_.ReadPicture(picture);
            entry.image = step.file + ".png";
            Write(entry.image, result, ImageRole::Picture);
            entry.result = SizeText(result.width, result.height);
            if (const REALpicture mask = host_.host().MaskOf(picture); step.withMask && mask != nullptr) {
                entry.mask = step.file + "-mask.png";
                Write(entry.mask, host_.ReadPicture(mask), ImageRole::Mask);
                entry.result += ", the turned mask beside it";
            }
        }
        entries_.push_back(entry);
    }

    std::string directory_;
    const Image& input_;
    Image mask_;
    PluginHost host_;
    std::vector<SheetEntry> entries_;
    std::vector<std::string> failures_;
    int written_ = 0;
};

void MakeDirectory(const std::string& directory) {
    std::error_code error;
    std::filesystem::create_directories(directory, error);
    if (error) throw RunError(directory + ": cannot create the directory: " + error.message());
}

}  // namespace

int RunDemo(const Command&, const Invocation& invocation) {
    const std::string directory = invocation.operands.empty() ? "demo-output" : invocation.operands.front();
    const bool ownInput = invocation.Has(kOptionInput);
    const Image input = ownInput ? ReadImageFile(invocation.input) : TestCard();
    MakeDirectory(directory);

    Demo demo(invocation, directory, input);
    demo.Run();
    const std::string title = (ownInput ? invocation.input : std::string("the built-in test card")) + " (" +
                              SizeText(input.width, input.height) + ") on the " + HostText(invocation);
    const std::string sheetPath = directory + "/index.html";
    AtomicOutputFile sheet(sheetPath);
    WriteContactSheet(sheet, title, demo.entries());
    sheet.Commit();

    for (const std::string& failure : demo.failures()) std::fprintf(stderr, "pixturn: demo: %s\n", failure.c_str());
    std::printf("%d pictures and the contact sheet of %zu method calls on %s\n", demo.written(),
                demo.entries().size() - 1, title.c_str());
    std::printf("%s\n", std::filesystem::absolute(sheetPath).lexically_normal().c_str());
    return demo.failures().empty() ? kExitSuccess : kExitFailure;
}

}  // namespace pixturn
