// The Mac library in a Linux process: the Mach-O loader (plugin_library_macho.cpp)
// and what it binds a Mac library's imports to (macho_imports.cpp and, for
// Apple's arm64 calling convention, apple_arm64_calls.cpp).
#pragma once

#include <cstdint>
#include <string>

#include "platform/xojo/rb_plugin.h"
#include "simhost/import_binding.h"
#include "simhost/simulated_host.h"

namespace simhost::internal {

// Whether the file starts as a Mach-O file or a fat (universal) one does.
bool IsMachOFile(const std::string& path);

struct LoadedMacPlugin {
    void (*pluginMain)(REALResolver);
    REALResolver resolver;  // the resolver to hand it: adapted to its calls where needed
};

// Maps a fresh instance of the slice for this process's processor, binds its
// imports, runs its initialisers and finds REALPluginMain. Throws
// std::runtime_error naming the file and what is wrong; nothing of the library
// has run by then when the file or an import is at fault.
LoadedMacPlugin LoadMacPlugin(const std::string& path, HostKind kind);

// The address a Mac library's import resolves to in this process: `library` is
// the install name it was linked against, `symbol` the Mach-O name (with its
// leading underscore). Null when it cannot be bound.
void* MacImport(const std::string& library, const std::string& symbol, HostKind kind);

// Apple's arm64 calling convention meets Linux's where the Mac library calls a
// function of this process: the version of `address` (found for `name`) that an
// Apple caller may call, or null when the loader has no adapter for its shape.
void* AppleArm64Callable(const std::string& name, void* address);
// The resolver a Mac arm64 library is handed: the host's, its answers adapted.
REALResolver AppleArm64Resolver();

}  // namespace simhost::internal
