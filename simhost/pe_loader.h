// The Windows arm64 library in a Linux arm64 process: the PE loader
// (plugin_library_pe.cpp) and what it binds the library's imports to
// (pe_imports.cpp).
#pragma once

#include <string>

#include "platform/xojo/rb_plugin.h"

namespace simhost::internal {

// Whether the file starts as a PE file (an MZ header) does.
bool IsPeFile(const std::string& path);

// Maps a fresh instance of the DLL, binds its imports, runs its entry point
// with DLL_PROCESS_ATTACH and finds REALPluginMain. Throws std::runtime_error
// naming the file and what is wrong; nothing of the library has run by then
// when the file or an import is at fault.
using PluginMain = void (*)(REALResolver);
PluginMain LoadWindowsArm64Plugin(const std::string& path);

// The address a Windows arm64 library's import resolves to in this process:
// `library` as the import table names it (any case), `symbol` its name. Null
// when it cannot be bound.
void* WindowsImport(const std::string& library, const std::string& symbol);

}  // namespace simhost::internal
