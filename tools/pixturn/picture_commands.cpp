// The picture commands: read the file, make it a host picture of the chosen
// storage, call the method through the registered table, write back exactly the
// pixels the host then holds.
#include <cstdio>

#include "tools/pixturn/command_support.h"
#include "tools/pixturn/commands.h"
#include "tools/pixturn/failure.h"
#include "tools/pixturn/image_files.h"
#include "tools/pixturn/method_call.h"

namespace pixturn {

namespace {

MethodArguments ArgumentsFrom(const Invocation& invocation) {
    MethodArguments arguments;
    arguments.angle = invocation.angle;
    arguments.background = invocation.background;
    arguments.cut = invocation.cut;
    arguments.size = invocation.size;
    return arguments;
}

Failure MethodFailure(const MethodOutcome& outcome, const std::string& path, const Image& input,
                      const Invocation& invocation) {
    return RunError(outcome.FailureText() + ": " + outcome.call + " on " + path + " (" +
                    SizeText(input.width, input.height) + "), " + HostText(invocation));
}

void Report(const std::string& output, const Image& result, const MethodOutcome& outcome, const std::string& path,
            const Image& input, const Invocation& invocation) {
    std::printf("%s: %s, %s on %s (%s), %s\n", output.c_str(), SizeText(result.width, result.height).c_str(),
                outcome.call.c_str(), path.c_str(), SizeText(input.width, input.height).c_str(),
                HostText(invocation).c_str());
}

}  // namespace

int RunPictureMethod(const Command& command, const Invocation& invocation) {
    const MethodEntry& entry =
        command.method == &methods::kClone && invocation.Has(kOptionSize) ? methods::kCloneToSize : *command.method;
    OutputFormatOf(invocation.output);
    const std::string& path = invocation.operands.front();
    const Image input = ReadImageFile(path);

    PluginHost host(SettingsFrom(invocation));
    HostPicture receiver = host.MakePicture(input);
    const MethodOutcome outcome = CallMethod(host, entry, receiver.get(), ArgumentsFrom(invocation));
    if (!outcome.Succeeded()) throw MethodFailure(outcome, path, input, invocation);
    // The in-place methods change the receiver; the others hand back a new picture
    // (or, for BitmapQLM, possibly the receiver with another reference).
    const Image result = host.ReadPicture(entry.form == MethodForm::InPlace ? receiver.get() : outcome.picture.get());
    WriteOutputs({{invocation.output, &result, ImageRole::Picture}});
    Report(invocation.output, result, outcome, path, input, invocation);
    return kExitSuccess;
}

int RunRotateWithMask(const Command& command, const Invocation& invocation) {
    if (invocation.Has(kOptionMaskOutput) && !invocation.Has(kOptionMask)) {
        throw UsageError(std::string(command.name) + ": --mask-out needs --mask FILE");
    }
    OutputFormatOf(invocation.output);
    if (invocation.Has(kOptionMaskOutput)) OutputFormatOf(invocation.maskOutput);
    const std::string& path = invocation.operands.front();
    const Image input = ReadImageFile(path);
    Image mask;
    if (invocation.Has(kOptionMask)) {
        mask = ReadImageFile(invocation.mask);
        if (mask.width != input.width || mask.height != input.height) {
            throw RunError(invocation.mask + ": the mask is " + SizeText(mask.width, mask.height) + ", the picture " +
                           SizeText(input.width, input.height) + "; a mask has its picture's size");
        }
    }

    PluginHost host(SettingsFrom(invocation));
    HostPicture receiver = host.MakePicture(input);
    if (invocation.Has(kOptionMask)) {
        // The picture takes a reference of its own; ours goes at the end of the block.
        const HostPicture maskPicture = host.MakePicture(mask, ImageRole::Mask);
        host.host().SetMask(receiver.get(), maskPicture.get());
    }
    const MethodOutcome outcome = CallMethod(host, *command.method, receiver.get(), ArgumentsFrom(invocation));
    if (!outcome.Succeeded()) throw MethodFailure(outcome, path, input, invocation);
    const Image result = host.ReadPicture(outcome.picture.get());
    std::vector<OutputImage> outputs{{invocation.output, &result, ImageRole::Picture}};
    Image turnedMask;
    if (invocation.Has(kOptionMaskOutput)) {
        const REALpicture resultMask = host.host().MaskOf(outcome.picture.get());
        if (resultMask == nullptr) {
            throw RunError(std::string(command.method->name) + " returned a picture without a mask: " + outcome.call +
                           " on " + path + " with mask " + invocation.mask + ", " + HostText(invocation));
        }
        turnedMask = host.ReadPicture(resultMask);
        outputs.push_back({invocation.maskOutput, &turnedMask, ImageRole::Mask});
    }
    WriteOutputs(outputs);
    Report(invocation.output, result, outcome, path, input, invocation);
    if (invocation.Has(kOptionMaskOutput)) {
        std::printf("%s: %s, the turned mask\n", invocation.maskOutput.c_str(),
                    SizeText(turnedMask.width, turnedMask.height).c_str());
    }
    return kExitSuccess;
}

}  // namespace pixturn
