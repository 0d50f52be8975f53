#include "picture/legacy_bridge.h"

#include "platform/macos/CoreServices.h"
#include "plugin/process_state.h"

// On macOS the CoreFoundation and CoreServices functions come with the system.
// Elsewhere the library links none: only a process that already holds them
// provides them (the simulated desktop host loads its stand-ins before the
// plug-in), so they are weak references, null where the process has none. A real
// Linux host has none, and the bridge then finds no ApplicationServices. Windows
// has none either, and a DLL cannot leave a reference for its host's process to
// fill: there the bridge knows at compile time that it finds nothing, and the
// library refers to none of the functions. The unit tests' own build of this
// file for Windows links the stand-ins in (PIXTURN_STAND_INS_LINKED).
#if defined(_WIN32) && !defined(PIXTURN_STAND_INS_LINKED)
#define PIXTURN_NO_SYSTEM_FRAMEWORKS
#elif !defined(__APPLE__) && !defined(_WIN32)
#include "platform/macos/weak_frameworks.h"
#endif

namespace {

#if defined(PIXTURN_NO_SYSTEM_FRAMEWORKS)

CFBundleRef LoadApplicationServices() { return nullptr; }
void* FunctionPointerForName(CFBundleRef, const char*) { return nullptr; }
void ReleaseBundle(CFBundleRef) {}

#else

bool SystemFrameworksPresent() {
#if defined(__APPLE__) || defined(_WIN32)
    return true;
#else
    return &kCFAllocatorSystemDefault != nullptr && &__CFStringMakeConstantString != nullptr &&
           &CFURLCreateFromFSRef != nullptr && &CFURLCreateCopyAppendingPathComponent != nullptr &&
           &CFBundleCreate != nullptr && &CFBundleLoadExecutable != nullptr &&
           &CFBundleGetFunctionPointerForName != nullptr && &CFRelease != nullptr && &FSFindFolder != nullptr;
#endif
}

// Loads a framework bundle from the system disk's frameworks folder.
CFBundleRef LoadFrameworkBundle(CFStringRef name) {
    FSRef folder;
    if (FSFindFolder(kOnSystemDisk, kFrameworksFolderType, kCreateFolder, &folder) != noErr) return nullptr;
    CFURLRef folderURL = CFURLCreateFromFSRef(kCFAllocatorSystemDefault, &folder);
    if (folderURL == nullptr) return nullptr;
    CFURLRef bundleURL = CFURLCreateCopyAppendingPathComponent(kCFAllocatorSystemDefault, folderURL, name, false);
    if (bundleURL == nullptr) {
        CFRelease(folderURL);
        return nullptr;
    }
    CFBundleRef bundle = CFBundleCreate(kCFAllocatorSystemDefault, bundleURL);
    if (bundle != nullptr && !CFBundleLoadExecutable(bundle)) {
        CFRelease(bundle);
        bundle = nullptr;
    }
    CFRelease(bundleURL);
    CFRelease(folderURL);
    return bundle;
}

CFBundleRef LoadApplicationServices() {
    return SystemFrameworksPresent() ? LoadFrameworkBundle(CFSTR("ApplicationServices.framework")) : nullptr;
}

void* FunctionPointerForName(CFBundleRef framework, const char* name) {
    return CFBundleGetFunctionPointerForName(framework, CFSTR(name));
}

void ReleaseBundle(CFBundleRef bundle) { CFRelease(bundle); }

#endif

// ApplicationServices, loaded by the first call that needs it. Two first calls at
// once both load it; the first one stored is kept and the other's reference given
// back, so exactly one stays held. Published with release: the thread that finds
// it uses what the loading thread set up.
CFBundleRef ApplicationServices() {
    std::atomic<CFBundleRef>& kept = gLegacyFunctions.ApplicationServicesFramework;
    if (CFBundleRef framework = kept.load(std::memory_order_acquire)) return framework;
    CFBundleRef loaded = LoadApplicationServices();
    if (loaded == nullptr) return nullptr;
    CFBundleRef first = nullptr;
    if (kept.compare_exchange_strong(first, loaded, std::memory_order_acq_rel, std::memory_order_acquire)) return loaded;
    ReleaseBundle(loaded);
    return first;
}

// A QuickDraw function found by name in ApplicationServices and kept in its slot
// once found; a failed look-up leaves the slot as it is.
template <typename Proc>
class LegacyFunction {
public:
    constexpr LegacyFunction(const char* name, std::atomic<Proc>* slot) : name_(name), address_(slot) {}

    Proc Find() const {
        if (Proc found = address_->load(std::memory_order_relaxed)) return found;
        CFBundleRef framework = ApplicationServices();
        if (framework == nullptr) return nullptr;
        Proc found = reinterpret_cast<Proc>(FunctionPointerForName(framework, name_));
        if (found != nullptr) address_->store(found, std::memory_order_relaxed);
        return found;
    }

    template <typename... Arguments>
    auto operator()(Arguments... arguments) const -> std::optional<decltype(Proc()(arguments...))> {
        if (Proc function = Find()) return function(arguments...);
        return std::nullopt;
    }

private:
    const char* name_;
    std::atomic<Proc>* address_;
};

constexpr LegacyFunction<SetGWorldProc> SetGWorldFunction{"SetGWorld", &gLegacyFunctions._SetGWorld};
constexpr LegacyFunction<GetPortPixMapProc> GetPortPixMapFunction{"GetPortPixMap", &gLegacyFunctions._GetPortPixMap};
constexpr LegacyFunction<GetPixDepthProc> GetPixDepthFunction{"GetPixDepth", &gLegacyFunctions._GetPixDepth};
constexpr LegacyFunction<UnlockPixelsProc> UnlockPixelsFunction{"UnlockPixels", &gLegacyFunctions._UnlockPixels};
constexpr LegacyFunction<LockPixelsProc> LockPixelsFunction{"LockPixels", &gLegacyFunctions._LockPixels};
constexpr LegacyFunction<GetGWorldPixMapProc> GetGWorldPixMapFunction{"GetGWorldPixMap", &gLegacyFunctions._GetGWorldPixMap};
constexpr LegacyFunction<GetPixBaseAddrProc> GetPixBaseAddrFunction{"GetPixBaseAddr", &gLegacyFunctions._GetPixBaseAddr};
constexpr LegacyFunction<GetPixRowBytesProc> GetPixRowBytesFunction{"GetPixRowBytes", &gLegacyFunctions._GetPixRowBytes};

}  // namespace

namespace legacy {

void ResetDrawingPort() {
    if (SetGWorldProc setGWorld = SetGWorldFunction.Find()) setGWorld(nullptr, nullptr);
}

std::optional<PixMapHandle> GetPortPixMap(CGrafPtr port) { return GetPortPixMapFunction(port); }
std::optional<PixMapHandle> GetGWorldPixMap(GWorldPtr world) { return GetGWorldPixMapFunction(world); }
std::optional<int16_t> GetPixDepth(PixMapHandle pixMap) { return GetPixDepthFunction(pixMap); }
std::optional<bool> LockPixels(PixMapHandle pixMap) {
    if (auto locked = LockPixelsFunction(pixMap)) return *locked != 0;
    return std::nullopt;
}
bool UnlockPixels(PixMapHandle pixMap) {
    if (UnlockPixelsProc unlockPixels = UnlockPixelsFunction.Find()) {
        unlockPixels(pixMap);
        return true;
    }
    return false;
}
std::optional<Ptr> GetPixBaseAddr(PixMapHandle pixMap) { return GetPixBaseAddrFunction(pixMap); }
std::optional<int32_t> GetPixRowBytes(PixMapHandle pixMap) { return GetPixRowBytesFunction(pixMap); }

}  // namespace legacy
