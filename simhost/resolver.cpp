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
const std::vector<NamedEntryPoint>& EntryPoints() {
    using namespace entry;
    static const std::vector<NamedEntryPoint> table = {
        {"REALGetRBVersion", reinterpret_cast<void*>(&REALGetRBVersion)},
        {"RegisterPluginVersion", reinterpret_cast<void*>(&RegisterPluginVersion)},
        {"PluginRegisterClassExtension", reinterpret_cast<void*>(&PluginRegisterClassExtension)},
        {"PluginRegisterModule", reinterpret_cast<void*>(&PluginRegisterModule)},
        {"newPicture", reinterpret_cast<void*>(&newPicture)},
        {"lockPictureDescription", reinterpret_cast<void*>(&lockPictureDescription)},
        {"REALLockPictureDescription", reinterpret_cast<void*>(&REALLockPictureDescription)},
        {"unlockPictureDescription", reinterpret_cast<void*>(&unlockPictureDescription)},
        {"REALPictureClearCache", reinterpret_cast<void*>(&REALPictureClearCache)},
        {"REALLockObject", reinterpret_cast<void*>(&REALLockObject)},
        {"REALUnlockObject", reinterpret_cast<void*>(&REALUnlockObject)},
        {"pluginPictureGraphicsGetter", reinterpret_cast<void*>(&pluginPictureGraphicsGetter)},
        {"REALLoadObjectMethod", reinterpret_cast<void*>(&REALLoadObjectMethod)},
        {"REALGetPropValueInt", reinterpret_cast<void*>(&REALGetPropValueInt)},
        {"REALGetPictureMask", reinterpret_cast<void*>(&REALGetPictureMask)},
        {"pluginObjectType", reinterpret_cast<void*>(&pluginObjectType)},
    };
    return table;
}

}  // namespace

void* EntryPointNamed(const std::string& name) {
    for (const NamedEntryPoint& entryPoint : EntryPoints())
        if (name == entryPoint.name) return entryPoint.address;
    return nullptr;
}

namespace {

void* Resolve(const char* entryName) {
    HostState* host = HostState::Active();
    if (host == nullptr || entryName == nullptr) return nullptr;
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
    for (const internal::NamedEntryPoint& entryPoint : internal::EntryPoints()) names.push_back(entryPoint.name);
    return names;
}

}  // namespace simhost
