// The process's resident memory as the kernel counts it, and its high-water mark,
// which can be set back to the current size so that the peak of one call shows.
#pragma once

#include <cstdint>
#include <optional>

namespace resident_memory {

// Sets the high-water mark back to the current resident size and returns that
// size; nullopt where the kernel does not allow the reset.
std::optional<int64_t> ResetPeak();
int64_t PeakBytes();

}  // namespace resident_memory
