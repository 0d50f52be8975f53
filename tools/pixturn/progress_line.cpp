// "\r" and the erase-to-end-of-line sequence keep it to one line that each step
// overwrites, as compilers' and downloaders' progress lines do.
#include "tools/pixturn/progress_line.h"

#include <unistd.h>

#include <cstdio>

namespace pixturn {

namespace {

constexpr auto kQuietFor = std::chrono::seconds(1);

}  // namespace

ProgressLine::ProgressLine(std::string task, size_t steps)
    : task_(std::move(task)), steps_(steps), terminal_(isatty(STDERR_FILENO) == 1) {}

void ProgressLine::Step(const std::string& what) {
    ++done_;
    if (!terminal_ || std::chrono::steady_clock::now() - start_ < kQuietFor) return;
    std::fprintf(stderr, "\rpixturn: %s: %zu/%zu %s\033[K", task_.c_str(), done_, steps_, what.c_str());
    std::fflush(stderr);
    shown_ = true;
}

void ProgressLine::Clear() {
    if (!shown_) return;
    std::fprintf(stderr, "\r\033[K");
    std::fflush(stderr);
    shown_ = false;
}

}  // namespace pixturn
