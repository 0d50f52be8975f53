// What a Mac library's imports are bound to in this process, by the library
// they were linked against (Mach-O names carry a leading underscore):
//   - libSystem: the process's own C library and maths library, found by the
//     name without its underscore, except Darwin's own names, which the table
//     below answers:
//       ___bzero             memset with zero
//       ___sincos_stret      sin and cos, as glibc's; returns both in the two
//                            floating registers, as a struct of two doubles does
//       ___error             glibc's errno location
//       ___stack_chk_guard   a guard word of this loader's
//       ___stack_chk_fail    glibc's
//       ___stderrp           a variable holding glibc's stderr
//       _sysctlbyname        the hw.optional.avx2_0, avx512f and avx512bw
//                            questions of an Intel Mac, answered for the
//                            running processor; nothing else
//       dyld_stub_binder     stops the process: every lazy import is bound at
//                            load, so no stub may reach it
//   - CoreFoundation and CoreServices: the stand-ins (platform/macos), so that
//     on a desktop host the QuickDraw path runs inside the Mac library too. On
//     console and web hosts a 64-bit Mac's answer: the frameworks are there, but
//     ApplicationServices has no QuickDraw function, so every look-up of one
//     finds none. A process without the stand-ins cannot bind them.
//   - any other library: nothing; the load is refused with the import's name.
// On arm64 every function bound here is then given in the form an Apple caller
// may call (apple_arm64_calls.cpp).
#include <dlfcn.h>

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "platform/macos/weak_frameworks.h"
#include "simhost/macho_loader.h"

namespace simhost::internal {

namespace {

constexpr char kLibSystem[] = "/usr/lib/libSystem.B.dylib";
constexpr char kCoreFoundation[] = "/System/Library/Frameworks/CoreFoundation.framework/Versions/A/CoreFoundation";
constexpr char kCoreServices[] = "/System/Library/Frameworks/CoreServices.framework/Versions/A/CoreServices";

void Bzero(void* bytes, size_t count) { std::memset(bytes, 0, count); }

struct SineAndCosine {
    double sine, cosine;
};
SineAndCosine SinCosStret(double angle) { return {std::sin(angle), std::cos(angle)}; }

int* ErrorLocation() { return &errno; }

uintptr_t gStackGuard = 0x5078547572e0a7ffu;
FILE* gStandardError = stderr;

extern "C" void __stack_chk_fail();

int SysctlByName([[maybe_unused]] const char* name, void* value, size_t* size, void* newValue, size_t) {
    bool present = false;
#if defined(__x86_64__)
    if (std::strcmp(name, "hw.optional.avx2_0") == 0)
        present = __builtin_cpu_supports("avx2");
    else if (std::strcmp(name, "hw.optional.avx512f") == 0)
        present = __builtin_cpu_supports("avx512f");
    else if (std::strcmp(name, "hw.optional.avx512bw") == 0)
        present = __builtin_cpu_supports("avx512bw");
    else
#endif
    {
        errno = ENOENT;
        return -1;
    }
    if (newValue != nullptr || size == nullptr || value == nullptr || *size < sizeof(int)) {
        errno = EINVAL;
        return -1;
    }
    const int answer = present ? 1 : 0;
    std::memcpy(value, &answer, sizeof answer);
    *size = sizeof answer;
    return 0;
}

[[noreturn]] void StubBinderReached() {
    std::fputs("a Mac library's lazy stub reached dyld_stub_binder, though every import was bound at load\n", stderr);
    std::abort();
}

void* NoQuickDrawOn64BitMac(CFBundleRef, CFStringRef) { return nullptr; }

const Binding kDarwinNames[] = {
    {"___bzero", Address(&Bzero)},
    {"___sincos_stret", Address(&SinCosStret)},
    {"___error", Address(&ErrorLocation)},
    {"___stack_chk_guard", &gStackGuard},
    {"___stack_chk_fail", Address(&__stack_chk_fail)},
    {"___stderrp", &gStandardError},
    {"_sysctlbyname", Address(&SysctlByName)},
    {"dyld_stub_binder", Address(&StubBinderReached)},
};

const Binding kFrameworkNames[] = {
    {"_kCFAllocatorSystemDefault", const_cast<CFAllocatorRef*>(&kCFAllocatorSystemDefault)},
    {"___CFStringMakeConstantString", Address(&__CFStringMakeConstantString)},
    {"_CFURLCreateFromFSRef", Address(&CFURLCreateFromFSRef)},
    {"_CFURLCreateCopyAppendingPathComponent", Address(&CFURLCreateCopyAppendingPathComponent)},
    {"_CFBundleCreate", Address(&CFBundleCreate)},
    {"_CFBundleLoadExecutable", Address(&CFBundleLoadExecutable)},
    {"_CFBundleGetFunctionPointerForName", Address(&CFBundleGetFunctionPointerForName)},
    {"_CFRelease", Address(&CFRelease)},
    {"_FSFindFolder", Address(&FSFindFolder)},
};

void* CLibraryFunction(const std::string& symbol) {
    if (void* darwin = Find(kDarwinNames, symbol)) return darwin;
    if (symbol.size() < 2 || symbol[0] != '_') return nullptr;
    static void* const cLibrary = dlopen("libc.so.6", RTLD_NOW | RTLD_NOLOAD);
    static void* const mathLibrary = dlopen("libm.so.6", RTLD_NOW);
    for (void* library : {cLibrary, mathLibrary})
        if (void* found = library != nullptr ? dlsym(library, symbol.c_str() + 1) : nullptr) return found;
    return nullptr;
}

void* FrameworkFunction(const std::string& library, const std::string& symbol, HostKind kind) {
    const bool coreServices = symbol == "_FSFindFolder";
    if (coreServices != (library == kCoreServices)) return nullptr;
    if (symbol == "_CFBundleGetFunctionPointerForName" && (kind == HostKind::Console || kind == HostKind::Web))
        return Address(&NoQuickDrawOn64BitMac);
    return Find(kFrameworkNames, symbol);
}

}  // namespace

void* MacImport(const std::string& library, const std::string& symbol, HostKind kind) {
    void* address = nullptr;
    if (library == kLibSystem)
        address = CLibraryFunction(symbol);
    else if (library == kCoreFoundation || library == kCoreServices)
        address = FrameworkFunction(library, symbol, kind);
#if defined(__aarch64__)
    if (address != nullptr) return AppleArm64Callable(symbol, address);
#endif
    return address;
}

}  // namespace simhost::internal
