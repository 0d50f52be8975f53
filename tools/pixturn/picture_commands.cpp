// The picture commands: read the file, make it a host picture of the chosen
// storage, call the method through the registered table, write back exactly the
// pixels the host then holds. With --out-dir each of several files goes the same
// way on one host, and a file that fails does not stop the others.
#include <cstdio>
#include <filesystem>
#include <set>

#include "tools/pixturn/command_support.h"
#include "tools/pixturn/commands.h"
#include "tools/pixturn/failure.h"
#include "tools/pixturn/image_files.h"
#include "tools/pixturn/method_call.h"
#include "tools/pixturn/progress_line.h"

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

std::string InputText(const std::string& path, int32_t width, int32_t height) {
    return (path == kStandardStream ? std::string("standard input") : path) + " (" + SizeText(width, height) + ")";
}

Failure MethodFailure(const MethodOutcome& outcome, const std::string& input, const Invocation& invocation) {
    return RunError(outcome.FailureText() + ": " + outcome.call + " on " + input + ", " + HostText(invocation));
}

// The line that says what was written: "out.png: 40 x 30, Rotate90QLM on ...".
std::string Report(const std::string& output, const Image& result, const MethodOutcome& outcome,
                   const std::string& input, const Invocation& invocation) {
    return output + ": " + SizeText(result.width, result.height) + ", " + outcome.call + " on " + input + ", " +
           HostText(invocation) + "\n";
}

void Print(const std::string& output, const std::string& report) {
    std::fputs(report.c_str(), ReportStream(output));
}

// One file through the method to its output; gives the report line.
std::string Transform(PluginHost& host, const MethodEntry& entry, const std::string& path, const std::string& output,
               const Invocation& invocation) {
    OutputFormatOf(output, invocation.encoding);
    std::string input;
    HostPicture receiver;
    {
        const Image image = ReadImageFile(path, invocation.reading);
        input = InputText(path, image.width, image.height);
        receiver = host.MakePicture(image);
    }
    const MethodOutcome outcome = CallMethod(host, entry, receiver.get(), ArgumentsFrom(invocation));
    if (!outcome.Succeeded()) throw MethodFailure(outcome, input, invocation);
    // The in-place methods change the receiver; the others hand back a new picture
    // (or, for BitmapQLM, possibly the receiver with another reference).
    const Image result = host.ReadPicture(entry.form == MethodForm::InPlace ? receiver.get() : outcome.picture.get());
    WriteOutputs({{output, &result, ImageRole::Picture}}, invocation.encoding);
    return Report(output, result, outcome, input, invocation);
}

// The output of one of several files: the input's own name in the directory.
std::string OutputInDirectory(const std::string& directory, const std::string& path) {
    if (path == kStandardStream) throw UsageError("standard input has no name to keep under --out-dir; use -o");
    return (std::filesystem::path(directory) / std::filesystem::path(path).filename()).string();
}

}  // namespace

int RunPictureMethod(const Command& command, const Invocation& invocation) {
    const MethodEntry& entry =
        command.method == &methods::kClone && invocation.Has(kOptionSize) ? methods::kCloneToSize : *command.method;
    const std::vector<std::string>& paths = invocation.operands;
    if (invocation.Has(kOptionOutput) == invocation.Has(kOptionOutDir)) {
        throw UsageError(std::string(command.name) +
                         (invocation.Has(kOptionOutput) ? ": give -o or --out-dir, not both"
                                                        : ": missing --output OUTPUT (or --out-dir DIR)"));
    }
    if (invocation.Has(kOptionOutput)) {
        if (paths.size() > 1) throw UsageError(std::string(command.name) + ": several FILEs need --out-dir DIR");
        PluginHost host(SettingsFrom(invocation));
        Print(invocation.output, Transform(host, entry, paths.front(), invocation.output, invocation));
        return kExitSuccess;
    }

    std::vector<std::string> outputs;
    for (const std::string& path : paths) outputs.push_back(OutputInDirectory(invocation.outDir, path));
    MakeDirectory(invocation.outDir);
    PluginHost host(SettingsFrom(invocation));
    ProgressLine progress(command.name, paths.size());
    std::set<std::string> written;
    int failed = 0;
    for (size_t i = 0; i < paths.size(); ++i) {
        progress.Step(paths[i]);
        try {
            if (!written.insert(outputs[i]).second) {
                throw RunError(paths[i] + ": another FILE of the same name was written to " + outputs[i]);
            }
            const std::string report = Transform(host, entry, paths[i], outputs[i], invocation);
            progress.Clear();
            Print(outputs[i], report);
        } catch (const Failure& failure) {
            // A broken ledger says the plug-in itself is wrong: nothing after it can be trusted.
            if (failure.status() == kExitInternal) throw;
            progress.Clear();
            std::fprintf(stderr, "pixturn: %s\n", failure.what());
            ++failed;
        }
    }
    progress.Clear();
    return failed == 0 ? kExitSuccess : kExitFailure;
}

int RunRotateWithMask(const Command& command, const Invocation& invocation) {
    if (invocation.Has(kOptionMaskOutput) && !invocation.Has(kOptionMask)) {
        throw UsageError(std::string(command.name) + ": --mask-out needs --mask FILE");
    }
    OutputFormatOf(invocation.output, invocation.encoding);
    if (invocation.Has(kOptionMaskOutput)) {
        OutputFormatOf(invocation.maskOutput, invocation.encoding);
        CheckDistinctOutputs(invocation.output, invocation.maskOutput);
    }
    const std::string& path = invocation.operands.front();
    const Image picture = ReadImageFile(path, invocation.reading);
    const std::string input = InputText(path, picture.width, picture.height);
    Image mask;
    if (invocation.Has(kOptionMask)) {
        mask = ReadImageFile(invocation.mask, invocation.reading);
        if (mask.width != picture.width || mask.height != picture.height) {
            throw RunError(invocation.mask + ": the mask is " + SizeText(mask.width, mask.height) + ", the picture " +
                           SizeText(picture.width, picture.height) + "; a mask has its picture's size");
        }
    }

    PluginHost host(SettingsFrom(invocation));
    HostPicture receiver = host.MakePicture(picture);
    if (invocation.Has(kOptionMask)) {
        // The picture takes a reference of its own; ours goes at the end of the block.
        const HostPicture maskPicture = host.MakePicture(mask, ImageRole::Mask);
        host.host().SetMask(receiver.get(), maskPicture.get());
    }
    const MethodOutcome outcome = CallMethod(host, *command.method, receiver.get(), ArgumentsFrom(invocation));
    if (!outcome.Succeeded()) throw MethodFailure(outcome, input, invocation);
    const Image result = host.ReadPicture(outcome.picture.get());
    std::vector<OutputImage> outputs{{invocation.output, &result, ImageRole::Picture}};
    Image turnedMask;
    if (invocation.Has(kOptionMaskOutput)) {
        const REALpicture resultMask = host.host().MaskOf(outcome.picture.get());
        if (resultMask == nullptr) {
            throw RunError(std::string(command.method->name) + " returned a picture without a mask: " + outcome.call +
                           " on " + input + " with mask " + invocation.mask + ", " + HostText(invocation));
        }
        turnedMask = host.ReadPicture(resultMask);
        outputs.push_back({invocation.maskOutput, &turnedMask, ImageRole::Mask});
    }
    WriteOutputs(outputs, invocation.encoding);
    Print(invocation.output, Report(invocation.output, result, outcome, input, invocation));
    if (invocation.Has(kOptionMaskOutput)) {
        Print(invocation.maskOutput, invocation.maskOutput + ": " + SizeText(turnedMask.width, turnedMask.height) +
                                         ", the turned mask\n");
    }
    return kExitSuccess;
}

}  // namespace pixturn
