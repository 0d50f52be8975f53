// The library is checked for before it is loaded so that a wrong path gives a
// one-line message rather than whatever the dynamic loader says.
#include "tools/pixturn/plugin_host.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <exception>

#include "tools/pixturn/failure.h"

namespace pixturn {

namespace {

using simhost::HostKind;
using simhost::Storage;

const HostChoice kHostChoices[] = {
    {"desktop", "desktop host, 32-bit offscreen world", HostKind::Desktop, Storage::GWorld32},
    {"desktop24", "desktop host, 24-bit offscreen world (no alpha)", HostKind::Desktop, Storage::GWorld24},
    {"desktop16", "desktop host, 16-bit offscreen world (5 bits a channel, 1-bit alpha)", HostKind::Desktop,
     Storage::GWorld16},
    {"console", "console host, host bitmap (7-bit alpha)", HostKind::Console, Storage::HostBitmap},
    {"web", "web host, host bitmap (7-bit alpha)", HostKind::Web, Storage::HostBitmap},
};

simhost::HostConfig ConfigFor(const HostSettings& settings) {
    simhost::HostConfig config;
    config.kind = settings.choice->kind;
    config.version = settings.version;
    return config;
}

}  // namespace

const HostChoice& HostChoiceNamed(const std::string& name) {
    for (const HostChoice& choice : kHostChoices) {
        if (name == choice.name) return choice;
    }
    throw UsageError("--host: unknown host kind '" + name + "' (one of " + HostChoiceNames() + ")");
}

std::string HostChoiceNames() {
    std::string names;
    for (const HostChoice& choice : kHostChoices) names += (names.empty() ? "" : "|") + std::string(choice.name);
    return names;
}

std::string PluginHost::ResolvePluginPath(const std::string& requested) {
    return requested.empty() ? simhost::DefaultPluginPath() : requested;
}

PluginHost::PluginHost(const HostSettings& settings)
    : choice_(settings.choice), pluginPath_(ResolvePluginPath(settings.pluginPath)), host_(ConfigFor(settings)) {
    if (access(pluginPath_.c_str(), R_OK) != 0) {
        throw RunError("plug-in " + pluginPath_ + ": cannot open: " + std::strerror(errno));
    }
    try {
        plugin_.emplace(host_, pluginPath_);
    } catch (const std::exception& error) {
        throw RunError("plug-in " + pluginPath_ + ": cannot load: " + error.what());
    }
}

const simhost::RegisteredMethod& PluginHost::Method(const MethodEntry& entry) const {
    if (const simhost::RegisteredMethod* method = plugin_->Find(entry)) return *method;
    throw RunError(std::string("the plug-in registered no method \"") + entry.declaration + "\" on this host");
}

HostPicture PluginHost::MakeBlankPicture(int32_t width, int32_t height) {
    HostPicture picture(host_, host_.MakePicture(choice_->storage, width, height));
    if (!picture) {
        throw RunError("the host could not make a " + std::to_string(width) + " x " + std::to_string(height) +
                       " picture");
    }
    return picture;
}

HostPicture PluginHost::MakePicture(const Image& image, ImageRole role) {
    HostPicture picture = MakeBlankPicture(image.width, image.height);
    for (int32_t y = 0; y < image.height; ++y) {
        for (int32_t x = 0; x < image.width; ++x) {
            const uint8_t* p = image.pixel(x, y);
            const uint8_t grey = GreyLevel(p);
            host_.SetPixel(picture.get(), x, y,
                           role == ImageRole::Mask ? simhost::Rgba{grey, grey, grey, 255}
                                                   : simhost::Rgba{p[0], p[1], p[2], p[3]});
        }
    }
    return picture;
}

Image PluginHost::ReadPicture(REALpicture picture) const {
    Image image(host_.Width(picture), host_.Height(picture));
    for (int32_t y = 0; y < image.height; ++y) {
        for (int32_t x = 0; x < image.width; ++x) {
            const simhost::Rgba pixel = host_.GetPixel(picture, x, y);
            uint8_t* p = image.pixel(x, y);
            p[0] = pixel.r;
            p[1] = pixel.g;
            p[2] = pixel.b;
            p[3] = pixel.a;
        }
    }
    return image;
}

}  // namespace pixturn
