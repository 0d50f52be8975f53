// Reads VmRSS and VmHWM from /proc/self/status; writing "5" to
// /proc/self/clear_refs sets VmHWM back to VmRSS (Linux 4.0 on). Plain file
// calls and a buffer on the stack, so the reading itself claims no heap.
#include "bench/resident_memory.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

namespace resident_memory {

namespace {

// The value of a "Name:   1234 kB" line, in bytes; -1 when absent.
int64_t StatusField(const char* field) {
    const int fd = open("/proc/self/status", O_RDONLY);
    if (fd < 0) return -1;
    char text[8192];
    const ssize_t length = read(fd, text, sizeof text - 1);
    close(fd);
    if (length <= 0) return -1;
    text[length] = '\0';
    const char* line = std::strstr(text, field);
    if (line == nullptr) return -1;
    return std::strtoll(line + std::strlen(field), nullptr, 10) * 1024;
}

}  // namespace

std::optional<int64_t> ResetPeak() {
    const int fd = open("/proc/self/clear_refs", O_WRONLY);
    if (fd < 0) return std::nullopt;
    const bool reset = write(fd, "5", 1) == 1;
    close(fd);
    if (!reset) return std::nullopt;
    return StatusField("VmRSS:");
}

int64_t PeakBytes() { return StatusField("VmHWM:"); }

}  // namespace resident_memory
