// One timed job: one implementation (the plug-in on one host, a peer library, a
// memory floor) doing one task on the test card. Jobs become Google Benchmark
// benchmarks named "task/implementation"; the results table reads them back by
// those two names.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace bench {

struct Job {
    std::string task;            // the table's row, as the method is called: "RotateQLM(30)"
    std::string implementation;  // the table's column: "desktop", "imagemagick", "memcpy"...
    // Untimed set-up before each timing: loading the plug-in, making a peer's image.
    std::function<void()> enter;
    // Does the task once and frees what it made; false when it could not (a
    // method not built yet answers nil).
    std::function<bool()> run;
    // The heap the task may claim: the pictures its method must have alive at
    // once at its peak, as the host makes them, plus one row. Unset for peers and floors.
    std::function<int64_t()> allowedBytes;
};

void Register(Job job);

// Counter names shared with the results table.
inline constexpr char kPeakHeapCounter[] = "peak_heap_bytes";
inline constexpr char kPeakResidentCounter[] = "peak_rss_bytes";
inline constexpr char kAllowedCounter[] = "allowed_bytes";
inline constexpr char kPageFaultsCounter[] = "faults_per_call";

}  // namespace bench
