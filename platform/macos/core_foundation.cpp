// The CoreFoundation and CoreServices stand-ins: the frameworks folder, URLs,
// the ApplicationServices bundle and constant strings, on the simulated system.
//
// URLs and bundles are opaque tokens that are never reused, so a release or a
// use after release is recognised (and counted) instead of touching freed
// memory; the census of live objects lets the host's ledger find leaked URLs.
#include <cstring>
#include <map>
#include <set>
#include <string>

#include "CoreServices.h"
#include "system_state.h"

namespace macos_system::internal {

std::mutex& SystemMutex() {
    static std::mutex mutex;
    return mutex;
}

Configuration& CurrentConfiguration() {
    static Configuration configuration;
    return configuration;
}

Counters& MutableCounters() {
    static Counters counters;
    return counters;
}

}  // namespace macos_system::internal

namespace {

using macos_system::internal::CurrentConfiguration;
using macos_system::internal::MutableCounters;
using macos_system::internal::SystemMutex;

constexpr const char* kFrameworksFolderPath = "/System/Library/Frameworks";
constexpr const char* kApplicationServicesPath = "/System/Library/Frameworks/ApplicationServices.framework";

// An FSRef made by FSFindFolder starts with this marker, then the folder path.
constexpr char kFolderRefMarker[] = "simfs:";

struct CFObject {
    enum class Kind { URL, Bundle } kind;
    std::string path;
};

std::map<uintptr_t, CFObject>& LiveObjects() {
    static std::map<uintptr_t, CFObject> objects;
    return objects;
}

uintptr_t NewToken() {
    static uintptr_t serial = 0;
    return 0x20000000u + ++serial * 16u;
}

void UpdateCensus() {
    int urls = 0;
    for (const auto& [token, object] : LiveObjects())
        if (object.kind == CFObject::Kind::URL) ++urls;
    MutableCounters().cfObjectsAlive = static_cast<int>(LiveObjects().size());
    MutableCounters().cfURLsAlive = urls;
}

const void* Create(CFObject object) {
    const uintptr_t token = NewToken();
    LiveObjects().emplace(token, std::move(object));
    UpdateCensus();
    return reinterpret_cast<const void*>(token);
}

// The live object behind a handle, or null (counted) when it is not one.
CFObject* Find(const void* handle, CFObject::Kind kind) {
    auto it = LiveObjects().find(reinterpret_cast<uintptr_t>(handle));
    if (it == LiveObjects().end() || it->second.kind != kind) {
        ++MutableCounters().deadCFObjectCalls;
        return nullptr;
    }
    return &it->second;
}

// Constant strings are interned, so equal texts share one object for the
// life of the process, as CFSTR's do.
std::set<std::string>& ConstantStrings() {
    static std::set<std::string> strings;
    return strings;
}

const std::string* StringOf(CFStringRef string) {
    for (const std::string& interned : ConstantStrings())
        if (reinterpret_cast<CFStringRef>(&interned) == string) return &interned;
    return nullptr;
}

}  // namespace

namespace macos_system {

void Configure(const Configuration& configuration) {
    std::lock_guard lock(internal::SystemMutex());
    internal::CurrentConfiguration() = configuration;
    Counters& counters = internal::MutableCounters();
    counters = Counters{};
    UpdateCensus();
}

Counters GetCounters() {
    std::lock_guard lock(internal::SystemMutex());
    return internal::MutableCounters();
}

}  // namespace macos_system

extern "C" {

const CFAllocatorRef kCFAllocatorSystemDefault = nullptr;

CFStringRef __CFStringMakeConstantString(const char* cString) {
    std::lock_guard lock(SystemMutex());
    auto [it, inserted] = ConstantStrings().insert(cString);
    return reinterpret_cast<CFStringRef>(&*it);
}

OSErr FSFindFolder(int16_t vRefNum, OSType folderType, Boolean, FSRef* foundRef) {
    std::lock_guard lock(SystemMutex());
    if (vRefNum != kOnSystemDisk || folderType != kFrameworksFolderType || foundRef == nullptr) {
        ++MutableCounters().unexpectedFolderRequests;
        return fnfErr;
    }
    if (!CurrentConfiguration().frameworksFolderFound) return fnfErr;
    std::memset(foundRef->hidden, 0, sizeof foundRef->hidden);
    const std::string text = std::string(kFolderRefMarker) + kFrameworksFolderPath;
    std::memcpy(foundRef->hidden, text.data(), text.size());
    return noErr;
}

CFURLRef CFURLCreateFromFSRef(CFAllocatorRef, const FSRef* fsRef) {
    std::lock_guard lock(SystemMutex());
    if (fsRef == nullptr) return nullptr;
    const char* text = reinterpret_cast<const char*>(fsRef->hidden);
    const size_t length = strnlen(text, sizeof fsRef->hidden);
    const size_t markerLength = sizeof kFolderRefMarker - 1;
    if (length < markerLength || std::memcmp(text, kFolderRefMarker, markerLength) != 0) return nullptr;
    return static_cast<CFURLRef>(
        Create({CFObject::Kind::URL, std::string(text + markerLength, length - markerLength)}));
}

CFURLRef CFURLCreateCopyAppendingPathComponent(CFAllocatorRef, CFURLRef url, CFStringRef pathComponent,
                                               Boolean) {
    std::lock_guard lock(SystemMutex());
    const CFObject* base = Find(url, CFObject::Kind::URL);
    const std::string* component = StringOf(pathComponent);
    if (base == nullptr || component == nullptr) return nullptr;
    return static_cast<CFURLRef>(Create({CFObject::Kind::URL, base->path + "/" + *component}));
}

CFBundleRef CFBundleCreate(CFAllocatorRef, CFURLRef bundleURL) {
    std::lock_guard lock(SystemMutex());
    const CFObject* url = Find(bundleURL, CFObject::Kind::URL);
    if (url == nullptr || url->path != kApplicationServicesPath) return nullptr;
    if (!CurrentConfiguration().applicationServicesInstalled) return nullptr;
    ++MutableCounters().frameworkLoads;
    return static_cast<CFBundleRef>(const_cast<void*>(Create({CFObject::Kind::Bundle, url->path})));
}

Boolean CFBundleLoadExecutable(CFBundleRef bundle) {
    std::lock_guard lock(SystemMutex());
    if (Find(bundle, CFObject::Kind::Bundle) == nullptr) return false;
    return CurrentConfiguration().executableLoads;
}

void* CFBundleGetFunctionPointerForName(CFBundleRef bundle, CFStringRef functionName) {
    std::lock_guard lock(SystemMutex());
    ++MutableCounters().functionLookups;
    const std::string* name = StringOf(functionName);
    if (Find(bundle, CFObject::Kind::Bundle) == nullptr || name == nullptr) return nullptr;
    if (CurrentConfiguration().missingFunctions.contains(*name)) return nullptr;
    return macos_system::internal::QuickDrawFunctionNamed(*name);
}

void CFRelease(CFTypeRef object) {
    std::lock_guard lock(SystemMutex());
    auto it = LiveObjects().find(reinterpret_cast<uintptr_t>(object));
    if (it == LiveObjects().end()) {
        ++MutableCounters().deadCFObjectCalls;
        return;
    }
    LiveObjects().erase(it);
    UpdateCensus();
}

}  // extern "C"
