// The library is checked for before it is loaded so that a wrong path gives a
// one-line message rather than whatever the dynamic loader says.
#include "tools/pixturn/plugin_host.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <vector>

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

// The library is found from where pixturn itself is, never from where it was
// built: lib/pixturn/ beside bin/ once installed (as `cmake --install` lays them
// out), or the build folder's top when run where it was built.
std::string PluginHost::ResolvePluginPath(const std::string& requested) {
    if (!requested.empty()) return requested;
    if (const char* fromEnvironment = std::getenv("PIXTURN_PLUGIN")) return fromEnvironment;
    std::error_code error;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error) return "libPixTurn.so";
    const std::filesystem::path installed = program.parent_path() / PIXTURN_PLUGIN_FROM_PROGRAM;
    if (std::filesystem::exists(installed, error)) return installed.lexically_normal().string();
    return (program.parent_path().parent_path() / "libPixTurn.so").string();
}

PluginHost::PluginHost(const HostSettings& settings)
    : choice_(settings.choice), pluginPath_(ResolvePluginPath(settings.pluginPath)), host_(ConfigFor(settings)) {
    if (access(pluginPath_.c_str(), R_OK) != 0) {
        throw RunError("plug-in " + pluginPath_ + ": cannot open: " + std::strerror(errno));
    }
    try {
        plugin_.emplace(host_, pluginPath_, simhost::PluginLibrary::Instance::InPlace);
    } catch (const std::exception& error) {
        throw RunError("plug-in " + pluginPath_ + ": cannot load: " + error.what());
    }
}

const simhost::RegisteredMethod& PluginHost::Method(const MethodEntry& entry) const {
    if (const simhost::RegisteredMethod* method = plugin_->Find(entry)) return *method;
    throw RunError(std::string("the plug-in registered no method \"") + entry.declaration + "\" on this host");
}

HostPicture PluginHost::MakeBlankPicture(simhost::Storage storage, int32_t width, int32_t height) {
    HostPicture picture(host_, host_.MakePicture(storage, width, height));
    if (!picture) {
        throw RunError("the host could not make a " + std::to_string(width) + " x " + std::to_string(height) +
                       " picture");
    }
    return picture;
}

HostPicture PluginHost::MakeSizedPicture(int32_t width, int32_t height) {
    return MakeBlankPicture(simhost::Storage::VectorOnly, width, height);
}

// Row by row: an Image row and a row of host pixels are both R, G, B, A bytes.
static_assert(sizeof(simhost::Rgba) == 4);

HostPicture PluginHost::MakePicture(const Image& image, ImageRole role) {
    HostPicture picture = MakeBlankPicture(choice_->storage, image.width, image.height);
    std::vector<simhost::Rgba> row(static_cast<size_t>(image.width));
    for (int32_t y = 0; y < image.height; ++y) {
        if (role == ImageRole::Mask) {
            for (int32_t x = 0; x < image.width; ++x) {
                const uint8_t grey = GreyLevel(image.pixel(x, y));
                row[static_cast<size_t>(x)] = {grey, grey, grey, 255};
            }
        } else {
            std::memcpy(row.data(), image.pixel(0, y), image.RowBytes());
        }
        host_.SetRow(picture.get(), y, row.data());
    }
    return picture;
}

Image PluginHost::ReadPicture(REALpicture picture) const {
    Image image(host_.Width(picture), host_.Height(picture));
    std::vector<simhost::Rgba> row(static_cast<size_t>(image.width));
    for (int32_t y = 0; y < image.height; ++y) {
        host_.GetRow(picture, y, row.data());
        std::memcpy(image.pixel(0, y), row.data(), image.RowBytes());
    }
    return image;
}

}  // namespace pixturn
