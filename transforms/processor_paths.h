// The instruction sets the fast loops can run in, and which one they take: the
// fastest this processor has, decided once per process. Every target has the
// portable path; x86 has SSE2 (which every x86 build assumes), and AVX2 and
// AVX-512 where the processor has them; ARM has NEON (on 32-bit ARM where the
// processor has it).
// The loops are written once, templated on a path (transforms/paths/*.h), and
// WithPath picks the instantiation once per pass.
#pragma once

#include "transforms/paths/portable.h"
#if defined(__x86_64__) || defined(__i386__)
#include "transforms/paths/avx2.h"
#include "transforms/paths/avx512.h"
#include "transforms/paths/sse2.h"
#define PIXTURN_X86_PATHS 1
#elif defined(__aarch64__) || defined(__arm__)
#include "transforms/paths/neon.h"
#define PIXTURN_NEON_PATH 1
#endif

enum class ProcessorPath { kPortable, kSse2, kAvx2, kAvx512, kNeon };

// Whether this build has the path and the processor can run it.
bool Supports(ProcessorPath path);
ProcessorPath FastestPath();

// Calls visitor.template operator()<Path>() with path's primitives; a path this
// build lacks takes the portable one.
template <typename Visitor>
void WithPath(ProcessorPath path, Visitor&& visitor) {
    switch (path) {
#if defined(PIXTURN_X86_PATHS)
        case ProcessorPath::kSse2: visitor.template operator()<Sse2Path>(); return;
        case ProcessorPath::kAvx2: visitor.template operator()<Avx2Path>(); return;
        case ProcessorPath::kAvx512: visitor.template operator()<Avx512Path>(); return;
#elif defined(PIXTURN_NEON_PATH)
        case ProcessorPath::kNeon: visitor.template operator()<NeonPath>(); return;
#endif
        default: visitor.template operator()<PortablePath>(); return;
    }
}
