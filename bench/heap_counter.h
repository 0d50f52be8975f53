// The heap bytes the whole process holds, counted at every allocation and free,
// so that the peak a single call reaches (host pictures, row buffers, a peer
// library's images and scratch) can be read after the call.
#pragma once

#include <cstdint>

namespace heap_counter {

int64_t LiveBytes();
// The highest LiveBytes() since the last ResetPeak().
int64_t PeakBytes();
void ResetPeak();

// Keeps freed memory in the process to be handed out again, large blocks
// included, as a long-running host's allocator does: a timed call then pays for
// its work and not for fresh pages from the kernel, whose faults cost many times
// the copy they precede on a virtual machine.
void KeepFreedMemory();
// Gives the pages of freed memory back to the kernel, so that the resident size
// grows with whatever the next call touches.
void ReleaseFreePages();

}  // namespace heap_counter
