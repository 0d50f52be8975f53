// The host the command plays: a simulated Xojo runtime of the chosen kind and
// version with the shipped plug-in loaded into it by its exported entry point,
// the methods it registered, and the passage of images into host pictures and
// back. The command runs one host per process, so the library is loaded where
// it is, with no copy.
#pragma once

#include <optional>
#include <string>
#include <utility>

#include "simhost/simulated_host.h"
#include "tools/pixturn/image.h"
#include "tools/pixturn/method_table.h"

namespace pixturn {

// A value of --host: which kind of host runs and how it stores the input picture.
struct HostChoice {
    const char* name;  // "desktop", "desktop24", "desktop16", "console", "web"
    const char* description;
    simhost::HostKind kind;
    simhost::Storage storage;
};

// Throws a usage Failure for an unknown name.
const HostChoice& HostChoiceNamed(const std::string& name);
std::string HostChoiceNames();  // "desktop|desktop24|..."

struct HostSettings {
    const HostChoice* choice = nullptr;
    std::optional<double> version = 2019.0;  // nullopt: the host reports no version
    std::string pluginPath;                  // empty: $PIXTURN_PLUGIN, else the one beside pixturn
};

// One reference on a host picture, given back when it goes.
class HostPicture {
public:
    HostPicture() = default;
    HostPicture(simhost::SimulatedHost& host, REALpicture picture) : host_(&host), picture_(picture) {}
    ~HostPicture() { Reset(); }
    HostPicture(HostPicture&& other) noexcept
        : host_(other.host_), picture_(std::exchange(other.picture_, nullptr)) {}
    HostPicture& operator=(HostPicture&& other) noexcept {
        if (this != &other) {
            Reset();
            host_ = other.host_;
            picture_ = std::exchange(other.picture_, nullptr);
        }
        return *this;
    }
    REALpicture get() const { return picture_; }
    explicit operator bool() const { return picture_ != nullptr; }
    void Reset() {
        if (picture_ != nullptr) host_->Release(std::exchange(picture_, nullptr));
    }

private:
    simhost::SimulatedHost* host_ = nullptr;
    REALpicture picture_ = nullptr;
};

class PluginHost {
public:
    // Throws Failure when the plug-in library cannot be found or loaded.
    explicit PluginHost(const HostSettings& settings);

    simhost::SimulatedHost& host() { return host_; }
    const HostChoice& choice() const { return *choice_; }
    const std::string& pluginPath() const { return pluginPath_; }
    const simhost::Registration& registration() const { return host_.registration(); }

    // What the plug-in registered for the method. Throws Failure when it
    // registered none.
    const simhost::RegisteredMethod& Method(const MethodEntry& entry) const;

    // A new picture in the storage of the chosen host kind holding the image;
    // a mask gets the image's grey levels.
    HostPicture MakePicture(const Image& image, ImageRole role = ImageRole::Picture);
    // A picture of that size that the host can draw but keeps no pixels for
    // until one is written: enough for a method that reads only the size.
    HostPicture MakeSizedPicture(int32_t width, int32_t height);
    Image ReadPicture(REALpicture picture) const;

private:
    HostPicture MakeBlankPicture(simhost::Storage storage, int32_t width, int32_t height);
    static std::string ResolvePluginPath(const std::string& requested);

    const HostChoice* choice_;
    std::string pluginPath_;
    simhost::SimulatedHost host_;
    std::optional<simhost::PluginLibrary> plugin_;
};

}  // namespace pixturn
