// Where this build put the plug-in library, for the tests, tools and benchmarks
// of this tree (targets linked with built_plugin, which build after it);
// $PIXTURN_PLUGIN names another. The simulated host itself takes any path.
#pragma once

#include <cstdlib>
#include <string>

namespace simhost {

inline std::string DefaultPluginPath() {
    if (const char* path = std::getenv("PIXTURN_PLUGIN")) return path;
    return PIXTURN_PLUGIN_PATH;
}

}  // namespace simhost
