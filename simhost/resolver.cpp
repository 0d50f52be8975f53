// The resolver: entry-point names to addresses. Every address is a plain function
// of this library, the same at every look-up, as the plug-in's cache assumes.
// Configured faults act here: names the host lacks, and names it answers only
// from their n-th look-up on.
#include <vector>

#include "simhost/entry_points.h"
#include "simhost/host_state.h"

namespace simhost::internal {

namespace {

struct NamedEntryPoint {
    const char* name;
    void* address;
};

// Fuzz inputs name an entry point by its place in this list: new ones go last.
const NamedEntryPoint kEntryPoints[] = {
    {"REALGetRBVersion", reinterpret_cast<void*>(&entry::REALGetRBVersion)},
    {"RegisterPluginVersion", reinterpret_cast<void*>(&entry::RegisterPluginVersion)},
    {"PluginRegisterClassExtension", reinterpret_cast<void*>(&entry::PluginRegisterClassExtension)},
    {"PluginRegisterModule", reinterpret_cast<void*>(&entry::PluginRegisterModule)},
    {"newPicture", reinterpret_cast<void*>(&entry::newPicture)},
    {"lockPictureDescription", reinterpret_cast<void*>(&entry::lockPictureDescription)},
    {"REALLockPictureDescription", reinterpret_cast<void*>(&entry::REALLockPictureDescription)},
    {"unlockPictureDescription", reinterpret_cast<void*>(&entry::unlockPictureDescription)},
    {"REALPictureClearCache", reinterpret_cast<void*>(&entry::REALPictureClearCache)},
    {"REALLockObject", reinterpret_cast<void*>(&entry::REALLockObject)},
    {"REALUnlockObject", reinterpret_cast<void*>(&entry::REALUnlockObject)},
    {"pluginPictureGraphicsGetter", reinterpret_cast<void*>(&entry::pluginPictureGraphicsGetter)},
    {"REALLoadObjectMethod", reinterpret_cast<void*>(&entry::REALLoadObjectMethod)},
    {"REALGetPropValueInt", reinterpret_cast<void*>(&entry::REALGetPropValueInt)},
    {"REALGetPictureMask", reinterpret_cast<void*>(&entry::REALGetPictureMask)},
    {"pluginObjectType", reinterpret_cast<void*>(&entry::pluginObjectType)},
};

}  // namespace

void* EntryPointNamed(const std::string& name) {
    for (const NamedEntryPoint& entryPoint : kEntryPoints)
        if (name == entryPoint.name) return entryPoint.address;
    return nullptr;
}

namespace {

void* Resolve(const char* entryName) {
    HostAccess host(HostState::Active());
    if (!host || entryName == nullptr) return nullptr;
    const std::string name = entryName;
    const int lookup = ++host->lookups[name];
    if (host->config.missingEntryPoints.contains(name)) return nullptr;
    if (name == "REALGetRBVersion" && !host->config.version) return nullptr;
    auto late = host->config.entryPointsFromLookup.find(name);
    if (late != host->config.entryPointsFromLookup.end() && lookup < late->second) return nullptr;
    return EntryPointNamed(name);
}

}  // namespace
}  // namespace simhost::internal

namespace simhost {

REALResolver SimulatedHost::Resolver() { return &internal::Resolve; }

std::vector<std::string> SimulatedHost::EntryPointNames() {
    std::vector<std::string> names;
    for (const internal::NamedEntryPoint& entryPoint : internal::kEntryPoints) names.push_back(entryPoint.name);
    return names;
}

}  // namespace simhost
