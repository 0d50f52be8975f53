// What the CoreFoundation and QuickDraw stand-ins share inside the simulated
// system: the configuration, the counters, and the table that the framework
// bundle answers function look-ups from. Not for the plug-in or the host.
#pragma once

#include <mutex>

#include "macos_system.h"

namespace macos_system::internal {

// Held by every function of the simulated system while it reads or changes any
// of it: like the real frameworks, it may be called from any thread.
std::mutex& SystemMutex();

Configuration& CurrentConfiguration();
Counters& MutableCounters();

// The address of the stand-in QuickDraw function of that name, or null.
void* QuickDrawFunctionNamed(const std::string& name);

}  // namespace macos_system::internal
