// Loading the plug-in as a Windows host does (LoadLibrary, GetProcAddress); the
// counterpart of plugin_library.cpp. Windows hands back the module it already
// has for a path it has loaded, so a fresh instance is loaded from a copy of
// the library under a name of its own: process number and count, in a folder
// of the temporary directory kept for these copies. A loaded DLL cannot be
// deleted and a host never unloads one, so each copy outlives its process;
// every new copy first deletes those of processes that have ended. The copy's
// size is checked before it is loaded: a truncated library would load and then
// fault in the middle of a call.
#include <windows.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <system_error>

#include "simhost/simulated_host.h"

namespace simhost {

namespace {

std::runtime_error LoadError(const std::string& libraryPath, const std::string& why) {
    return std::runtime_error("cannot load " + libraryPath + ": " + why);
}

std::string LastErrorText() { return "Windows error " + std::to_string(GetLastError()); }

bool ProcessRuns(DWORD processId) {
    HANDLE process = OpenProcess(SYNCHRONIZE, FALSE, processId);
    if (process == nullptr) return false;
    const bool runs = WaitForSingleObject(process, 0) == WAIT_TIMEOUT;
    CloseHandle(process);
    return runs;
}

// Copies are named after the process that made them: PixTurn-<process>-<count>.dll.
constexpr char kCopyPrefix[] = "PixTurn-";

void DeleteCopiesOfEndedProcesses(const std::filesystem::path& folder) {
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator(folder, ignored)) {
        const std::string name = entry.path().filename().string();
        if (name.rfind(kCopyPrefix, 0) != 0) continue;
        if (!ProcessRuns(std::strtoul(name.c_str() + sizeof(kCopyPrefix) - 1, nullptr, 10)))
            std::filesystem::remove(entry.path(), ignored);
    }
}

std::string CopyUnderNewName(const std::string& libraryPath) {
    static std::atomic<unsigned> copiesMade{0};
    std::error_code error;
    const std::filesystem::path folder = std::filesystem::temp_directory_path(error) / "pixturn-plugin-copies";
    if (error || (std::filesystem::create_directories(folder, error), error))
        throw LoadError(libraryPath, "no folder for its copy: " + error.message());
    DeleteCopiesOfEndedProcesses(folder);
    const std::filesystem::path copy =
        folder / (kCopyPrefix + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(copiesMade++) + ".dll");
    if (!std::filesystem::copy_file(libraryPath, copy, std::filesystem::copy_options::overwrite_existing, error))
        throw LoadError(libraryPath, "cannot copy it: " + error.message());
    if (std::filesystem::file_size(copy, error) != std::filesystem::file_size(libraryPath))
        throw LoadError(libraryPath, "the copy is incomplete");
    return copy.string();
}

}  // namespace

PluginLibrary::PluginLibrary(SimulatedHost& host, const std::string& libraryPath, Instance instance) : host_(host) {
    if (instance == Instance::InPlace && GetModuleHandleA(libraryPath.c_str()) != nullptr)
        throw LoadError(libraryPath, "it is loaded already, and a plug-in starts once per process");
    const std::string loaded = instance == Instance::Fresh ? CopyUnderNewName(libraryPath) : libraryPath;
    HMODULE module = LoadLibraryA(loaded.c_str());
    if (module == nullptr) throw LoadError(libraryPath, LastErrorText());
    auto pluginMain = reinterpret_cast<void (*)(REALResolver)>(reinterpret_cast<void*>(GetProcAddress(module, "REALPluginMain")));
    if (pluginMain == nullptr) throw std::runtime_error(libraryPath + " exports no REALPluginMain");
    pluginMain(SimulatedHost::Resolver());
}

}  // namespace simhost
