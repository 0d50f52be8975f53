// Which paths this processor runs, asked of the processor itself: x86's CPUID
// through the compiler's builtin, 32-bit ARM's hardware capabilities through the
// kernel's auxiliary vector. On an Intel Mac the kernel answers for x86: macOS
// turns a thread's AVX-512 registers on at their first use, so CPUID's view of
// the enabled registers says no AVX-512 on a Mac that has it (and the Mac
// library's runtime has no CPUID builtin).
#include "transforms/processor_paths.h"

#if defined(__arm__)
#include <asm/hwcap.h>
#include <sys/auxv.h>
#endif
#if defined(PIXTURN_X86_PATHS) && defined(__APPLE__)
#include <sys/sysctl.h>

#include <cstddef>

namespace {

bool MacHasFeature(const char* name) {
    int present = 0;
    size_t size = sizeof present;
    return sysctlbyname(name, &present, &size, nullptr, 0) == 0 && present != 0;
}

}  // namespace

#define PIXTURN_X86_HAS(macName, builtinName) MacHasFeature(macName)
#elif defined(PIXTURN_X86_PATHS)
#define PIXTURN_X86_HAS(macName, builtinName) __builtin_cpu_supports(builtinName)
#endif

bool Supports(ProcessorPath path) {
    switch (path) {
        case ProcessorPath::kPortable: return true;
#if defined(PIXTURN_X86_PATHS)
        case ProcessorPath::kSse2: return true;
        case ProcessorPath::kAvx2: return PIXTURN_X86_HAS("hw.optional.avx2_0", "avx2");
        case ProcessorPath::kAvx512:
            return PIXTURN_X86_HAS("hw.optional.avx512f", "avx512f") && PIXTURN_X86_HAS("hw.optional.avx512bw", "avx512bw");
#elif defined(__aarch64__)
        case ProcessorPath::kNeon: return true;
#elif defined(__arm__)
        case ProcessorPath::kNeon: return (getauxval(AT_HWCAP) & HWCAP_NEON) != 0;
#endif
        default: return false;
    }
}

// Decided when the library is loaded, on the loading thread, and only read
// afterwards. A function-local static would do the same on first use, but its
// guard brings the C++ runtime's exception machinery into the library, and with
// it a need for a newer C library than the plug-in otherwise asks for.
// __builtin_cpu_init makes x86's answer independent of the order in which the
// library's initialisers run.
static const ProcessorPath gFastestPath = [] {
#if defined(PIXTURN_X86_PATHS) && !defined(__APPLE__)
    __builtin_cpu_init();
#endif
    for (const ProcessorPath path :
         {ProcessorPath::kAvx512, ProcessorPath::kAvx2, ProcessorPath::kSse2, ProcessorPath::kNeon})
        if (Supports(path)) return path;
    return ProcessorPath::kPortable;
}();

ProcessorPath FastestPath() { return gFastestPath; }
