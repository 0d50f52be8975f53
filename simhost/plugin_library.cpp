// Loading the plug-in as a host does. Each load takes a private copy of the
// library file, so that every test starts with a plug-in whose process-wide
// state (host kind, entry-point caches, start-up values) is fresh.
#include <dlfcn.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <stdexcept>

#include "simhost/simulated_host.h"

namespace simhost {

namespace {

std::string CopyToTemporaryFile(const std::string& libraryPath) {
    const char* directory = std::getenv("TMPDIR");
    std::string path = std::string(directory != nullptr ? directory : "/tmp") + "/pixturn-plugin-XXXXXX";
    const int descriptor = mkstemp(path.data());
    if (descriptor < 0) throw std::runtime_error("cannot make a temporary copy of " + libraryPath);
    close(descriptor);
    std::ifstream from(libraryPath, std::ios::binary);
    std::ofstream to(path, std::ios::binary | std::ios::trunc);
    to << from.rdbuf();
    if (!from || !to.flush()) {
        unlink(path.c_str());
        throw std::runtime_error("cannot copy the plug-in library " + libraryPath);
    }
    return path;
}

}  // namespace

PluginLibrary::PluginLibrary(SimulatedHost& host, const std::string& libraryPath) : host_(host) {
    const std::string copy = CopyToTemporaryFile(libraryPath);
    void* handle = dlopen(copy.c_str(), RTLD_NOW | RTLD_LOCAL);
    unlink(copy.c_str());
    if (handle == nullptr) throw std::runtime_error("cannot load " + libraryPath + ": " + dlerror());
    auto pluginMain = reinterpret_cast<void (*)(REALResolver)>(dlsym(handle, "REALPluginMain"));
    if (pluginMain == nullptr) throw std::runtime_error(libraryPath + " exports no REALPluginMain");
    pluginMain(SimulatedHost::Resolver());
}

}  // namespace simhost
