// Loading the plug-in as a host does. A host that runs once per process loads the
// library where it is. Tests and tools that start host after host in one process
// load a fresh instance each time (its process-wide state, host kind, entry-point
// caches and start-up values, starts as at load): a copy in memory, since the
// loader hands back the instance it already has for a file it has seen. The copy
// lives in an anonymous memory file rather than in $TMPDIR, which may be full,
// missing, read-only or mounted noexec, and its size is checked before it is
// loaded: a truncated library would load and then fault in the middle of a call.
// A Mac library (Mach-O) goes to the loader of plugin_library_macho.cpp instead,
// and in an arm64 process a Windows arm64 DLL to that of plugin_library_pe.cpp;
// both map a fresh instance at every load.
#include <dlfcn.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <stdexcept>
#include <vector>

#include "simhost/simulated_host.h"
#if defined(SIMHOST_LOADS_MAC_LIBRARIES)
#include "simhost/macho_loader.h"
#endif
#if defined(SIMHOST_LOADS_WINDOWS_ARM64_LIBRARIES)
#include "simhost/pe_loader.h"
#endif

namespace simhost {

namespace {

std::runtime_error LoadError(const std::string& libraryPath, const std::string& why) {
    return std::runtime_error("cannot load " + libraryPath + ": " + why);
}

// The path of a memory file holding an exact copy of the library. Its descriptor
// stays open for as long as the instance loaded from it, which is to the end of
// the process: the loader knows a library by its path, and a descriptor number
// used again would name the earlier instance.
std::string CopyIntoMemory(const std::string& libraryPath) {
    struct stat source {};
    if (stat(libraryPath.c_str(), &source) != 0) throw LoadError(libraryPath, std::strerror(errno));
    std::vector<char> bytes(static_cast<size_t>(source.st_size));
    std::ifstream from(libraryPath, std::ios::binary);
    if (!from.read(bytes.data(), source.st_size)) throw LoadError(libraryPath, "cannot read the library whole");
    const int descriptor = memfd_create("pixturn-plugin", MFD_CLOEXEC);
    if (descriptor < 0) throw LoadError(libraryPath, std::string("no memory file: ") + std::strerror(errno));
    size_t written = 0;
    while (written < bytes.size()) {
        const ssize_t step = write(descriptor, bytes.data() + written, bytes.size() - written);
        if (step <= 0) break;
        written += static_cast<size_t>(step);
    }
    if (written != bytes.size()) {
        close(descriptor);
        throw LoadError(libraryPath, "the copy in memory is incomplete");
    }
    return "/proc/self/fd/" + std::to_string(descriptor);
}

}  // namespace

PluginLibrary::PluginLibrary(SimulatedHost& host, const std::string& libraryPath, Instance instance) : host_(host) {
#if defined(SIMHOST_LOADS_MAC_LIBRARIES)
    if (internal::IsMachOFile(libraryPath)) {
        const internal::LoadedMacPlugin loaded = internal::LoadMacPlugin(libraryPath, host.config().kind);
        loaded.pluginMain(loaded.resolver);
        return;
    }
#endif
#if defined(SIMHOST_LOADS_WINDOWS_ARM64_LIBRARIES)
    if (internal::IsPeFile(libraryPath)) {
        internal::LoadWindowsArm64Plugin(libraryPath)(SimulatedHost::Resolver());
        return;
    }
#endif
    if (instance == Instance::InPlace && dlopen(libraryPath.c_str(), RTLD_NOW | RTLD_NOLOAD) != nullptr)
        throw LoadError(libraryPath, "it is loaded already, and a plug-in starts once per process");
    const std::string loaded = instance == Instance::Fresh ? CopyIntoMemory(libraryPath) : libraryPath;
    void* handle = dlopen(loaded.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) throw LoadError(libraryPath, dlerror());
    auto pluginMain = reinterpret_cast<void (*)(REALResolver)>(dlsym(handle, "REALPluginMain"));
    if (pluginMain == nullptr) throw std::runtime_error(libraryPath + " exports no REALPluginMain");
    pluginMain(SimulatedHost::Resolver());
}

}  // namespace simhost
