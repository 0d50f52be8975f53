// Counts heap bytes by standing in for the C library's allocation functions, the
// way the GNU C library allows a program to replace them: every shared library
// of the process (the plug-in, the simulated host, the peers) allocates through
// these, and each forwards to the C library's own allocator under its internal
// name. Sizes are the allocator's usable sizes, so a free subtracts exactly what
// its allocation added.
#include "bench/heap_counter.h"

#include <malloc.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstddef>

extern "C" {
void* __libc_malloc(size_t size) noexcept;
void* __libc_calloc(size_t count, size_t size) noexcept;
void* __libc_realloc(void* block, size_t size) noexcept;
void* __libc_memalign(size_t alignment, size_t size) noexcept;
void* __libc_valloc(size_t size) noexcept;
void* __libc_pvalloc(size_t size) noexcept;
void __libc_free(void* block) noexcept;
}

namespace {

std::atomic<int64_t> gLiveBytes{0};
std::atomic<int64_t> gPeakBytes{0};

void RaisePeakTo(int64_t live) {
    int64_t peak = gPeakBytes.load(std::memory_order_relaxed);
    while (live > peak && !gPeakBytes.compare_exchange_weak(peak, live, std::memory_order_relaxed)) {
    }
}

void* Counted(void* block) {
    if (block != nullptr) {
        const auto size = static_cast<int64_t>(malloc_usable_size(block));
        RaisePeakTo(gLiveBytes.fetch_add(size, std::memory_order_relaxed) + size);
    }
    return block;
}

void Uncount(void* block) {
    if (block != nullptr)
        gLiveBytes.fetch_sub(static_cast<int64_t>(malloc_usable_size(block)), std::memory_order_relaxed);
}

bool IsValidAlignment(size_t alignment) {
    return alignment != 0 && (alignment & (alignment - 1)) == 0 && alignment % sizeof(void*) == 0;
}

}  // namespace

namespace heap_counter {

int64_t LiveBytes() { return gLiveBytes.load(std::memory_order_relaxed); }
int64_t PeakBytes() { return gPeakBytes.load(std::memory_order_relaxed); }
void ResetPeak() { gPeakBytes.store(LiveBytes(), std::memory_order_relaxed); }

void KeepFreedMemory() {
    mallopt(M_MMAP_MAX, 0);
    mallopt(M_TRIM_THRESHOLD, INT_MAX);
}

void ReleaseFreePages() { malloc_trim(0); }

}  // namespace heap_counter

extern "C" {

void* malloc(size_t size) noexcept { return Counted(__libc_malloc(size)); }

void* calloc(size_t count, size_t size) noexcept { return Counted(__libc_calloc(count, size)); }

void* realloc(void* block, size_t size) noexcept {
    const auto before = static_cast<int64_t>(block != nullptr ? malloc_usable_size(block) : 0);
    void* moved = __libc_realloc(block, size);
    // A failed growth leaves the block as it was; a zero size frees it.
    if (moved == nullptr && size != 0) return nullptr;
    gLiveBytes.fetch_sub(before, std::memory_order_relaxed);
    return Counted(moved);
}

void* reallocarray(void* block, size_t count, size_t size) noexcept {
    size_t total;
    if (__builtin_mul_overflow(count, size, &total)) {
        errno = ENOMEM;
        return nullptr;
    }
    return realloc(block, total);
}

void free(void* block) noexcept {
    Uncount(block);
    __libc_free(block);
}

void* memalign(size_t alignment, size_t size) noexcept { return Counted(__libc_memalign(alignment, size)); }

void* aligned_alloc(size_t alignment, size_t size) noexcept { return Counted(__libc_memalign(alignment, size)); }

int posix_memalign(void** result, size_t alignment, size_t size) noexcept {
    if (!IsValidAlignment(alignment)) return EINVAL;
    void* block = Counted(__libc_memalign(alignment, size));
    if (block == nullptr) return ENOMEM;
    *result = block;
    return 0;
}

void* valloc(size_t size) noexcept { return Counted(__libc_valloc(size)); }

void* pvalloc(size_t size) noexcept { return Counted(__libc_pvalloc(size)); }

}  // extern "C"
