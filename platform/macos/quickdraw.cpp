// The QuickDraw stand-ins: offscreen worlds as the simulated host makes them for
// its pictures, and the eight functions the framework bundle hands out by name.
//
// Worlds and pixel maps are opaque tokens that are never reused, so a call on a
// disposed world is recognised and counted instead of reading freed memory.
// The functions have internal linkage: the plug-in can only reach them through
// CFBundleGetFunctionPointerForName, never link them by accident.
#include <map>
#include <memory>
#include <new>
#include <utility>

#include "QuickDraw.h"
#include "system_state.h"

namespace {

using macos_system::internal::MutableCounters;
using macos_system::internal::SystemMutex;

// Pixels start on a cache line, as QuickDraw's own allocations of pixel maps are
// aligned (copies from a misaligned start run markedly slower, which would blur
// the benchmarks).
constexpr std::align_val_t kPixelAlignment{64};

struct FreePixels {
    void operator()(uint8_t* pixels) const { operator delete[](pixels, kPixelAlignment); }
};

struct World {
    int32_t width;
    int32_t height;
    int16_t depth;
    int32_t rowBytes;
    std::unique_ptr<uint8_t[], FreePixels> pixels;  // exactly rowBytes * height bytes
    int pixelLocks = 0;
};

// A world's token; its pixel map's token is the next word.
constexpr uintptr_t kPixMapOffset = 8;

std::map<uintptr_t, World>& Worlds() {
    static std::map<uintptr_t, World> worlds;
    return worlds;
}

World* FindWorld(const void* world) {
    auto it = Worlds().find(reinterpret_cast<uintptr_t>(world));
    return it == Worlds().end() ? nullptr : &it->second;
}

// The world of a pixel map, or null (counted) when there is none.
World* WorldOfPixMap(PixMapHandle pixMap) {
    const uintptr_t token = reinterpret_cast<uintptr_t>(pixMap);
    World* world = token % 16 == kPixMapOffset ? FindWorld(reinterpret_cast<void*>(token - kPixMapOffset)) : nullptr;
    if (world == nullptr) ++MutableCounters().quickDrawCallsOnDeadWorlds;
    return world;
}

PixMapHandle PixMapOf(CGrafPtr world) {
    if (FindWorld(world) == nullptr) {
        ++MutableCounters().quickDrawCallsOnDeadWorlds;
        return nullptr;
    }
    return reinterpret_cast<PixMapHandle>(reinterpret_cast<uintptr_t>(world) + kPixMapOffset);
}

int32_t BytesPerPixel(int16_t depth) {
    switch (depth) {
        case 16: return 2;
        case 24: return 3;
        case 32: return 4;
        default: return 0;
    }
}

}  // namespace

extern "C" {

static void SetGWorld(CGrafPtr port, GDHandle device) {
    std::lock_guard lock(SystemMutex());
    if (port == nullptr && device == nullptr)
        ++MutableCounters().setGWorldNullCalls;
    else
        ++MutableCounters().setGWorldOtherCalls;
}

static PixMapHandle GetPortPixMap(CGrafPtr port) {
    std::lock_guard lock(SystemMutex());
    return PixMapOf(port);
}

static PixMapHandle GetGWorldPixMap(GWorldPtr world) {
    std::lock_guard lock(SystemMutex());
    return PixMapOf(world);
}

static int16_t GetPixDepth(PixMapHandle pixMap) {
    std::lock_guard lock(SystemMutex());
    const World* world = WorldOfPixMap(pixMap);
    return world == nullptr ? 0 : world->depth;
}

static Boolean LockPixels(PixMapHandle pixMap) {
    std::lock_guard lock(SystemMutex());
    World* world = WorldOfPixMap(pixMap);
    if (world == nullptr) return false;
    ++world->pixelLocks;
    return true;
}

static void UnlockPixels(PixMapHandle pixMap) {
    std::lock_guard lock(SystemMutex());
    World* world = WorldOfPixMap(pixMap);
    if (world == nullptr) return;
    if (world->pixelLocks == 0)
        ++MutableCounters().unbalancedUnlockPixels;
    else
        --world->pixelLocks;
}

static Ptr GetPixBaseAddr(PixMapHandle pixMap) {
    std::lock_guard lock(SystemMutex());
    World* world = WorldOfPixMap(pixMap);
    return world == nullptr ? nullptr : reinterpret_cast<Ptr>(world->pixels.get());
}

static int32_t GetPixRowBytes(PixMapHandle pixMap) {
    std::lock_guard lock(SystemMutex());
    const World* world = WorldOfPixMap(pixMap);
    return world == nullptr ? 0 : world->rowBytes;
}

}  // extern "C"

namespace macos_system {

namespace internal {

namespace {

struct NamedFunction {
    const char* name;
    void* address;
};

// Fuzz inputs name a function by its place in this list: new ones go last.
const NamedFunction kFunctions[] = {
    {"SetGWorld", reinterpret_cast<void*>(static_cast<SetGWorldProc>(SetGWorld))},
    {"GetPortPixMap", reinterpret_cast<void*>(static_cast<GetPortPixMapProc>(GetPortPixMap))},
    {"GetPixDepth", reinterpret_cast<void*>(static_cast<GetPixDepthProc>(GetPixDepth))},
    {"UnlockPixels", reinterpret_cast<void*>(static_cast<UnlockPixelsProc>(UnlockPixels))},
    {"LockPixels", reinterpret_cast<void*>(static_cast<LockPixelsProc>(LockPixels))},
    {"GetGWorldPixMap", reinterpret_cast<void*>(static_cast<GetGWorldPixMapProc>(GetGWorldPixMap))},
    {"GetPixBaseAddr", reinterpret_cast<void*>(static_cast<GetPixBaseAddrProc>(GetPixBaseAddr))},
    {"GetPixRowBytes", reinterpret_cast<void*>(static_cast<GetPixRowBytesProc>(GetPixRowBytes))},
};

}  // namespace

void* QuickDrawFunctionNamed(const std::string& name) {
    for (const NamedFunction& function : kFunctions)
        if (name == function.name) return function.address;
    return nullptr;
}

}  // namespace internal

void* QuickDrawFunction(const std::string& name) { return internal::QuickDrawFunctionNamed(name); }

std::vector<std::string> QuickDrawFunctionNames() {
    std::vector<std::string> names;
    for (const internal::NamedFunction& function : internal::kFunctions) names.push_back(function.name);
    return names;
}

GWorldPtr NewWorld(int32_t width, int32_t height, int16_t depth, int32_t rowBytes) {
    std::lock_guard lock(SystemMutex());
    const int32_t bytesPerPixel = BytesPerPixel(depth);
    if (bytesPerPixel == 0 || width < 0 || height < 0 || rowBytes < int64_t{width} * bytesPerPixel) return nullptr;
    static uintptr_t serial = 0;
    const uintptr_t token = 0x10000000u + ++serial * 16u;
    const size_t size = static_cast<size_t>(rowBytes) * static_cast<size_t>(height);
    std::unique_ptr<uint8_t[], FreePixels> pixels(new (kPixelAlignment) uint8_t[size]);
    Worlds().emplace(token, World{width, height, depth, rowBytes, std::move(pixels)});
    return reinterpret_cast<GWorldPtr>(token);
}

void DisposeWorld(GWorldPtr world) {
    std::lock_guard lock(SystemMutex());
    if (Worlds().erase(reinterpret_cast<uintptr_t>(world)) == 0) ++internal::MutableCounters().quickDrawCallsOnDeadWorlds;
}

uint8_t* WorldPixels(GWorldPtr world) {
    std::lock_guard lock(SystemMutex());
    World* found = FindWorld(world);
    return found == nullptr ? nullptr : found->pixels.get();
}

int32_t WorldRowBytes(GWorldPtr world) {
    std::lock_guard lock(SystemMutex());
    const World* found = FindWorld(world);
    return found == nullptr ? 0 : found->rowBytes;
}

int16_t WorldDepth(GWorldPtr world) {
    std::lock_guard lock(SystemMutex());
    const World* found = FindWorld(world);
    return found == nullptr ? 0 : found->depth;
}

int WorldPixelLocks(GWorldPtr world) {
    std::lock_guard lock(SystemMutex());
    const World* found = FindWorld(world);
    return found == nullptr ? 0 : found->pixelLocks;
}

}  // namespace macos_system
