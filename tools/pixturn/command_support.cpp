// Messages name the host with its version because the plug-in's behaviour (the
// registration form, RotateQLM's default background) depends on both.
#include "tools/pixturn/command_support.h"

#include <memory>

#include "tools/pixturn/atomic_output.h"
#include "tools/pixturn/image_files.h"
#include "tools/pixturn/method_call.h"

namespace pixturn {

HostSettings SettingsFrom(const Invocation& invocation) {
    HostSettings settings;
    settings.choice = &HostChoiceNamed(invocation.host);
    settings.version = invocation.hostVersion;
    settings.pluginPath = invocation.plugin;
    return settings;
}

std::string SizeText(int32_t width, int32_t height) {
    return std::to_string(width) + " x " + std::to_string(height);
}

std::string HostText(const Invocation& invocation) {
    return invocation.host + " host, " +
           (invocation.hostVersion ? "version " + NumberText(*invocation.hostVersion) : "no version");
}

void WriteOutputs(const std::vector<OutputImage>& outputs) {
    std::vector<std::unique_ptr<AtomicOutputFile>> pending;
    for (const OutputImage& output : outputs) {
        pending.push_back(std::make_unique<AtomicOutputFile>(output.path));
        EncodeImageFile(*pending.back(), *output.image, output.role);
    }
    for (const auto& file : pending) file->Commit();
}

}  // namespace pixturn
