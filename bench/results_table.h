// Collects what Google Benchmark reports, while its own console output goes on as
// usual, and prints the comparison the benchmark exists for: per method our time,
// each peer's, the ratios, our fraction of the memory floor, the peak memory of
// a call, and each goal met or missed.
#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <ostream>
#include <string>
#include <utility>

namespace bench {

struct Result {
    double milliseconds = 0;  // median wall-clock time of one call
    std::map<std::string, double> counters;
    std::string error;  // why the job was skipped; empty when it ran
};

// Keyed by task and implementation, as the jobs are named.
using Results = std::map<std::pair<std::string, std::string>, Result>;

class ResultsCollector : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override;
    const Results& results() const { return results_; }

private:
    Results results_;
};

void PrintResults(std::ostream& out, const Results& results);

}  // namespace bench
