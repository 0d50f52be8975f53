// The resolver: entry-point names to addresses. Every address is a plain function
// of this library, the same at every look-up, as the plug-in's cache assumes.
// Configured faults act here: names the host lacks, and names it answers only
// from their n-th look-up on.
#include <map>

#include "simhost/entry_points.h"
#include "simhost/host_state.h"

namespace simhost::internal {

void* EntryPointNamed(const std::string& name) {
    using namespace entry;
    static const std::map<std::string, void*> table = {
        {"REALGetRBVersion", reinterpret_cast<void*>(&REALGetRBVersion)},
        {"RegisterPluginVersion", reinterpret_cast<void*>(&RegisterPluginVersion)},
        {"PluginRegisterClassExtension", reinterpret_cast<void*>(&PluginRegisterClassExtension)},
        {"PluginRegisterModule", reinterpret_cast<void*>(&PluginRegisterModule)},
        {"REALLockObject", reinterpret_cast<void*>(&REALLockObject)},
        {"REALUnlockObject", reinterpret_cast<void*>(&REALUnlockObject)},
        {"pluginObjectType", reinterpret_cast<void*>(&pluginObjectType)},
        {"REALGetPropValueInt", reinterpret_cast<void*>(&REALGetPropValueInt)},
        {"newPicture", reinterpret_cast<void*>(&newPicture)},
        {"lockPictureDescription", reinterpret_cast<void*>(&lockPictureDescription)},
        {"REALLockPictureDescription", reinterpret_cast<void*>(&REALLockPictureDescription)},
        {"unlockPictureDescription", reinterpret_cast<void*>(&unlockPictureDescription)},
        {"REALPictureClearCache", reinterpret_cast<void*>(&REALPictureClearCache)},
        {"REALGetPictureMask", reinterpret_cast<void*>(&REALGetPictureMask)},
        {"pluginPictureGraphicsGetter", reinterpret_cast<void*>(&pluginPictureGraphicsGetter)},
        {"REALLoadObjectMethod", reinterpret_cast<void*>(&REALLoadObjectMethod)},
    };
    auto it = table.find(name);
    return it == table.end() ? nullptr : it->second;
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

}  // namespace simhost
