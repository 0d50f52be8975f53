// Control of the simulated macOS system behind the CoreFoundation, CoreServices
// and QuickDraw stand-ins: whether ApplicationServices is installed and which of
// its functions it exports, offscreen worlds for the simulated host's pictures,
// and the counters a test reads (CoreFoundation objects alive, pixel locks, calls).
// Every function may be called from any thread.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "QuickDraw.h"

namespace macos_system {

struct Configuration {
    bool frameworksFolderFound = true;
    bool applicationServicesInstalled = true;
    bool executableLoads = true;
    std::set<std::string> missingFunctions;  // QuickDraw names the framework lacks
};

// Sets the configuration and clears every counter of events. Worlds and
// CoreFoundation objects stay valid, and so does their census.
void Configure(const Configuration& configuration);

// Every function the framework can hand out, whatever the configuration.
std::vector<std::string> QuickDrawFunctionNames();
// The address the framework hands out for one of them, whatever the
// configuration (null for any other name): for a loader that must know which
// function a library was handed.
void* QuickDrawFunction(const std::string& name);

struct Counters {
    int frameworkLoads = 0;               // CFBundleCreate calls that found the framework
    int functionLookups = 0;              // CFBundleGetFunctionPointerForName calls
    int cfObjectsAlive = 0;               // URLs and bundles not yet released (a census)
    int cfURLsAlive = 0;                  // the URLs among them (a census)
    int deadCFObjectCalls = 0;            // a call on a CoreFoundation object not alive
    int unexpectedFolderRequests = 0;     // FSFindFolder for anything but the frameworks folder
    int setGWorldNullCalls = 0;           // SetGWorld(0, 0)
    int setGWorldOtherCalls = 0;          // any other SetGWorld: never expected
    int quickDrawCallsOnDeadWorlds = 0;   // a pixel map or world that no longer exists
    int unbalancedUnlockPixels = 0;       // UnlockPixels with no lock held
};
Counters GetCounters();

// Offscreen worlds, as the host makes them for its pictures. depth is 16, 24 or
// 32; rowBytes at least width times the bytes per pixel (bigger pads the rows).
// The pixels are exactly rowBytes * height bytes, so reading past them is caught
// by AddressSanitizer. They start as whatever the memory held: the host fills
// them.
GWorldPtr NewWorld(int32_t width, int32_t height, int16_t depth, int32_t rowBytes);
void DisposeWorld(GWorldPtr world);
uint8_t* WorldPixels(GWorldPtr world);
int32_t WorldRowBytes(GWorldPtr world);
int16_t WorldDepth(GWorldPtr world);
int WorldPixelLocks(GWorldPtr world);  // LockPixels minus UnlockPixels

}  // namespace macos_system
