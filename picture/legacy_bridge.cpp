#include "picture/legacy_bridge.h"

#include "platform/macos/CoreServices.h"

namespace {

CFBundleRef ApplicationServicesFramework = nullptr;

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

// A QuickDraw function found by name in ApplicationServices and kept once found.
template <typename Proc>
class LegacyFunction {
public:
    constexpr explicit LegacyFunction(const char* name) : name_(name) {}

    Proc Find() const {
        if (address_ != nullptr) return address_;
        if (ApplicationServicesFramework == nullptr)
            ApplicationServicesFramework = LoadFrameworkBundle(CFSTR("ApplicationServices.framework"));
        if (ApplicationServicesFramework == nullptr) return nullptr;
        address_ = reinterpret_cast<Proc>(CFBundleGetFunctionPointerForName(ApplicationServicesFramework, CFSTR(name_)));
        return address_;
    }

    template <typename... Arguments>
    auto operator()(Arguments... arguments) const -> std::optional<decltype(Proc()(arguments...))> {
        if (Proc function = Find()) return function(arguments...);
        return std::nullopt;
    }

private:
    const char* name_;
    mutable Proc address_ = nullptr;
};

const LegacyFunction<SetGWorldProc> _SetGWorld{"SetGWorld"};
const LegacyFunction<GetPortPixMapProc> _GetPortPixMap{"GetPortPixMap"};
const LegacyFunction<GetPixDepthProc> _GetPixDepth{"GetPixDepth"};
const LegacyFunction<UnlockPixelsProc> _UnlockPixels{"UnlockPixels"};
const LegacyFunction<LockPixelsProc> _LockPixels{"LockPixels"};
const LegacyFunction<GetGWorldPixMapProc> _GetGWorldPixMap{"GetGWorldPixMap"};
const LegacyFunction<GetPixBaseAddrProc> _GetPixBaseAddr{"GetPixBaseAddr"};
const LegacyFunction<GetPixRowBytesProc> _GetPixRowBytes{"GetPixRowBytes"};

}  // namespace

namespace legacy {

void ResetDrawingPort() {
    if (SetGWorldProc setGWorld = _SetGWorld.Find()) setGWorld(nullptr, nullptr);
}

std::optional<PixMapHandle> GetPortPixMap(CGrafPtr port) { return _GetPortPixMap(port); }
std::optional<PixMapHandle> GetGWorldPixMap(GWorldPtr world) { return _GetGWorldPixMap(world); }
std::optional<int16_t> GetPixDepth(PixMapHandle pixMap) { return _GetPixDepth(pixMap); }
std::optional<bool> LockPixels(PixMapHandle pixMap) {
    if (auto locked = _LockPixels(pixMap)) return *locked != 0;
    return std::nullopt;
}
bool UnlockPixels(PixMapHandle pixMap) {
    if (UnlockPixelsProc unlockPixels = _UnlockPixels.Find()) {
        unlockPixels(pixMap);
        return true;
    }
    return false;
}
std::optional<Ptr> GetPixBaseAddr(PixMapHandle pixMap) { return _GetPixBaseAddr(pixMap); }
std::optional<int32_t> GetPixRowBytes(PixMapHandle pixMap) { return _GetPixRowBytes(pixMap); }

}  // namespace legacy
