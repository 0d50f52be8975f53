// Where a Mac arm64 library, built to Apple's calling convention, calls a
// function of this process, built to Linux's (on a Mac both sides are Apple's,
// so only the test bench meets this). The two conventions differ in four ways:
//   1. Variadic arguments: Apple passes every one of them on the stack, in
//      8-byte slots, and its va_list is a plain pointer to them; Linux passes
//      them in registers like fixed ones.
//   2. Stack arguments past the eighth register: Apple packs them at their own
//      size (two 32-bit integers share one 8-byte slot); Linux gives each an
//      8-byte slot.
//   3. Integers narrower than 32 bits: Apple's callers widen arguments, and
//      expect callees to widen results, to 32 bits; Linux leaves the upper bits
//      of both undefined. So a Linux function's bool, 8- or 16-bit result is
//      widened for an Apple caller; an Apple caller's narrow arguments need
//      nothing. The host's calls into the library pass one narrow argument,
//      RotateImageAndMaskQLM's cut, as GCC loads it (zero-extended); the
//      library only compares it with zero, and a byte is zero exactly when
//      its widened 32 bits are, whichever way it was widened.
//   4. char is signed on Apple arm64 and unsigned on Linux: no function below
//      passes a char by value, and the bytes of strings are the same.
// Every function that crosses, with its shape and adaptation:
//   host entry points (the resolver the library is handed, below):
//     REALLockPictureDescription, REALGetPropValueInt   bool result: widened (3)
//     REALLoadObjectMethod   its answer for DrawPicture's declaration, ten
//                            arguments of which the last two, 32-bit, travel
//                            on the stack: an adapter reads Apple's packed
//                            slot (2); any other method's answer stops the
//                            process, since its shape is unknown here
//     the other entry points: pointers, 32-bit integers, doubles and an 8-bit
//     argument (REALGetPictureMask) in registers: as they are
//   CoreFoundation and CoreServices stand-ins:
//     CFBundleLoadExecutable (Boolean), FSFindFolder (OSErr, 16 bits): results
//     widened (3); CFBundleGetFunctionPointerForName: its answer adapted, as
//     for the QuickDraw functions below; the others as they are
//   QuickDraw stand-ins, as CFBundleGetFunctionPointerForName hands them out:
//     GetPixDepth (16 bits), LockPixels (Boolean): results widened (3); the
//     other six as they are
//   the C library: snprintf through an adapter (1); any other variadic function
//     refuses the load; the rest as they are
// An entry point the table does not know stops the process with its name: a
// new one needs its shape decided here first.
#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "platform/macos/QuickDraw.h"
#include "platform/macos/macos_system.h"
#include "platform/macos/weak_frameworks.h"
#include "simhost/entry_points.h"
#include "simhost/macho_loader.h"

namespace simhost::internal {

namespace {

[[noreturn]] void NoAdapter(const std::string& what) {
    std::fprintf(stderr, "the Mac arm64 loader has no adapter for %s: its calling shape needs deciding first\n",
                 what.c_str());
    std::abort();
}

// (3) A function known here whose narrow result is widened for Apple's caller.
template <auto function>
struct WidenedResult;
template <typename Result, typename... Arguments, Result (*function)(Arguments...)>
struct WidenedResult<function> {
    static int32_t Call(Arguments... arguments) { return function(arguments...); }
};

// (3) The same for a function handed out at run time; its address is the same
// at every hand-out, so the one slot per kind never changes once set.
template <typename Kind, typename Result, typename... Arguments>
struct WidenedHandedOut {
    static inline std::atomic<Result (*)(Arguments...)> function{nullptr};
    static int32_t Call(Arguments... arguments) { return function.load(std::memory_order_relaxed)(arguments...); }
    static void* For(void* address) {
        function.store(reinterpret_cast<Result (*)(Arguments...)>(address), std::memory_order_relaxed);
        return Address(&Call);
    }
};
struct GetPixDepthKind;
struct LockPixelsKind;
using WidenedGetPixDepth = WidenedHandedOut<GetPixDepthKind, int16_t, PixMapHandle>;
using WidenedLockPixels = WidenedHandedOut<LockPixelsKind, Boolean, PixMapHandle>;

void* CallableQuickDraw(void* address) {
    if (address == nullptr) return nullptr;
    if (address == macos_system::QuickDrawFunction("GetPixDepth")) return WidenedGetPixDepth::For(address);
    if (address == macos_system::QuickDrawFunction("LockPixels")) return WidenedLockPixels::For(address);
    for (const std::string& name : macos_system::QuickDrawFunctionNames())
        if (address == macos_system::QuickDrawFunction(name)) return address;
    NoAdapter("a function the QuickDraw stand-ins do not know");
}

void* FunctionPointerForName(CFBundleRef bundle, CFStringRef name) {
    return CallableQuickDraw(CFBundleGetFunctionPointerForName(bundle, name));
}

// (2) DrawPicture: Apple puts sw and sh, the ninth and tenth arguments, in one
// 8-byte stack slot, sw in its low half; a Linux function's ninth parameter is
// that slot.
using DrawPictureMethod = void (*)(REALobject, REALpicture, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t,
                                   int32_t, int32_t);
std::atomic<DrawPictureMethod> gDrawPicture{nullptr};

void DrawPictureFromApple(REALobject graphics, REALpicture image, int32_t x, int32_t y, int32_t w, int32_t h,
                          int32_t sx, int32_t sy, uint64_t packedSwSh) {
    gDrawPicture.load(std::memory_order_relaxed)(graphics, image, x, y, w, h, sx, sy,
                                                 static_cast<int32_t>(packedSwSh & 0xffffffffu),
                                                 static_cast<int32_t>(packedSwSh >> 32));
}

void* LoadObjectMethod(REALobject object, const char* declaration) {
    void* method = entry::REALLoadObjectMethod(object, declaration);
    if (method == nullptr) return nullptr;
    if (std::strcmp(declaration, kDrawPictureDeclaration) != 0)
        NoAdapter(std::string("the host method ") + declaration);
    gDrawPicture.store(reinterpret_cast<DrawPictureMethod>(method), std::memory_order_relaxed);
    return Address(&DrawPictureFromApple);
}

// (1) snprintf: the variadic arguments are on the stack where the call left
// them, one 8-byte slot each; the stub below hands their address on as a fourth
// argument, and vsnprintf reads them from there.
extern "C" int PixturnAppleSnprintf(char* buffer, size_t size, const char* format, void* stackArguments) {
    va_list arguments;
    VaListOverSlots(stackArguments, arguments);
    return std::vsnprintf(buffer, size, format, arguments);
}
extern "C" int PixturnAppleSnprintfEntry(char*, size_t, const char*, ...);
asm(".text\n"
    ".p2align 2\n"
    ".type PixturnAppleSnprintfEntry, %function\n"
    "PixturnAppleSnprintfEntry:\n"
    "    mov x3, sp\n"
    "    b PixturnAppleSnprintf\n"
    ".size PixturnAppleSnprintfEntry, .-PixturnAppleSnprintfEntry\n");

// The C library's functions that take variadic arguments or a va_list (Apple's
// is a pointer, glibc's a structure): only snprintf has an adapter.
constexpr const char* kVariadicCFunctions[] = {
    "_printf",  "_fprintf", "_sprintf", "_vprintf", "_vfprintf",      "_vsprintf",      "_vsnprintf", "_asprintf",
    "_dprintf", "_scanf",   "_fscanf",  "_sscanf",  "_open",          "_openat",        "_fcntl",     "_ioctl",
    "_syslog",  "_execl",   "_execle",  "_execlp",  "___sprintf_chk", "___snprintf_chk"};

struct Adapted {
    void* address;
    void* forApple;
};

// Keyed by the function's address: the shape belongs to the function, whatever
// name the library found it by.
const Adapted kAdaptedFunctions[] = {
    {Address(&CFBundleLoadExecutable), Address(&WidenedResult<&CFBundleLoadExecutable>::Call)},
    {Address(&FSFindFolder), Address(&WidenedResult<&FSFindFolder>::Call)},
    {Address(&CFBundleGetFunctionPointerForName), Address(&FunctionPointerForName)},
};

struct EntryPointShape {
    const char* name;
    void* forApple;  // null: called as it is
};
const EntryPointShape kEntryPointShapes[] = {
    {"REALGetRBVersion", nullptr},
    {"RegisterPluginVersion", nullptr},
    {"PluginRegisterClassExtension", nullptr},
    {"PluginRegisterModule", nullptr},
    {"newPicture", nullptr},
    {"lockPictureDescription", nullptr},
    {"REALLockPictureDescription", Address(&WidenedResult<&entry::REALLockPictureDescription>::Call)},
    {"unlockPictureDescription", nullptr},
    {"REALPictureClearCache", nullptr},
    {"REALLockObject", nullptr},
    {"REALUnlockObject", nullptr},
    {"pluginPictureGraphicsGetter", nullptr},
    {"REALLoadObjectMethod", Address(&LoadObjectMethod)},
    {"REALGetPropValueInt", Address(&WidenedResult<&entry::REALGetPropValueInt>::Call)},
    {"REALGetPictureMask", nullptr},
    {"pluginObjectType", nullptr},
};

void* ResolveForApple(const char* name) {
    void* address = SimulatedHost::Resolver()(name);
    if (address == nullptr) return nullptr;
    for (const EntryPointShape& shape : kEntryPointShapes)
        if (std::strcmp(name, shape.name) == 0) return shape.forApple != nullptr ? shape.forApple : address;
    NoAdapter(std::string("the host entry point ") + name);
}

}  // namespace

void* AppleArm64Callable(const std::string& name, void* address) {
    if (name == "_snprintf") return Address(&PixturnAppleSnprintfEntry);
    for (const char* variadic : kVariadicCFunctions)
        if (name == variadic) return nullptr;
    for (const Adapted& adapted : kAdaptedFunctions)
        if (address == adapted.address) return adapted.forApple;
    return address;
}

REALResolver AppleArm64Resolver() { return &ResolveForApple; }

}  // namespace simhost::internal
