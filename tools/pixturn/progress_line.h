// A line on standard error that says how far a long piece of work has come
// ("pixturn: demo: 5/18 RotateQLM(30, ...)"), rewritten in place. It appears
// only once the work has taken a second, so that quick commands stay quiet, and
// never when standard error is not a terminal, so that logs and pipes get only
// the messages that matter.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>

namespace pixturn {

class ProgressLine {
public:
    ProgressLine(std::string task, size_t steps);
    ~ProgressLine() { Clear(); }
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    // The next step begins; what names it.
    void Step(const std::string& what);
    // Removes the line, before any other output to the terminal and at the end.
    void Clear();

private:
    std::string task_;
    size_t steps_;
    size_t done_ = 0;
    bool terminal_;
    bool shown_ = false;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

}  // namespace pixturn
