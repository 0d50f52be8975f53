// Which paths this processor runs, asked of the processor itself: x86's CPUID
// through the compiler's builtin, 32-bit ARM's hardware capabilities through the
// kernel's auxiliary vector.
#include "transforms/processor_paths.h"

#if defined(__arm__)
#include <asm/hwcap.h>
#include <sys/auxv.h>
#endif

bool Supports(ProcessorPath path) {
    switch (path) {
        case ProcessorPath::kPortable: return true;
#if defined(PIXTURN_X86_PATHS)
        case ProcessorPath::kSse2: return true;
        case ProcessorPath::kAvx2: return __builtin_cpu_supports("avx2");
        case ProcessorPath::kAvx512: return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw");
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
#if defined(PIXTURN_X86_PATHS)
    __builtin_cpu_init();
#endif
    for (const ProcessorPath path :
         {ProcessorPath::kAvx512, ProcessorPath::kAvx2, ProcessorPath::kSse2, ProcessorPath::kNeon})
        if (Supports(path)) return path;
    return ProcessorPath::kPortable;
}();

ProcessorPath FastestPath() { return gFastestPath; }
