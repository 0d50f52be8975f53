// The simulated system of a machine without macOS, for a simulated host whose
// process has not loaded the framework stand-ins, as on a real Linux host: no
// CoreFoundation, no ApplicationServices, nothing counted. A host there has no
// offscreen worlds, so only console and web hosts run; asking for a world is a
// fault of the test that set the host up, and stops the process.
#include <cstdio>
#include <cstdlib>

#include "macos_system.h"

namespace macos_system {

namespace {

[[noreturn]] void NoWorlds() {
    std::fputs("offscreen worlds asked of a process without the macOS stand-ins\n", stderr);
    std::abort();
}

}  // namespace

void Configure(const Configuration&) {}

std::vector<std::string> QuickDrawFunctionNames() { return {}; }
void* QuickDrawFunction(const std::string&) { return nullptr; }

Counters GetCounters() { return {}; }

GWorldPtr NewWorld(int32_t, int32_t, int16_t, int32_t) { NoWorlds(); }
void DisposeWorld(GWorldPtr) { NoWorlds(); }
uint8_t* WorldPixels(GWorldPtr) { NoWorlds(); }
int32_t WorldRowBytes(GWorldPtr) { NoWorlds(); }
int16_t WorldDepth(GWorldPtr) { NoWorlds(); }
int WorldPixelLocks(GWorldPtr) { NoWorlds(); }

}  // namespace macos_system
