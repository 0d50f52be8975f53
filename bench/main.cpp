// pixturn_bench: times the shipped plug-in's methods on desktop and console hosts
// against peer libraries and memory floors, then prints the comparison. Takes
// Google Benchmark's flags (--benchmark_filter, --benchmark_out=FILE...).
#include <benchmark/benchmark.h>

#include <iostream>

#include "bench/heap_counter.h"
#include "bench/peer_jobs.h"
#include "bench/plugin_session.h"
#include "bench/processor_line.h"
#include "bench/pixturn_jobs.h"
#include "bench/results_table.h"
#include "bench/thread_scaling_jobs.h"

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    heap_counter::KeepFreedMemory();

    // Registration order is running order: all of one host's jobs, then the
    // other's, so each host is built once.
    bench::RegisterPluginJobs(bench::kDesktop);
    bench::RegisterThreadScalingJobs(bench::kDesktop);
    bench::RegisterPluginJobs(bench::kConsole);
    bench::RegisterThreadScalingJobs(bench::kConsole);
    bench::RegisterImageMagickJobs();
    bench::RegisterLeptonicaJobs();
    bench::RegisterOpenCvJobs();
    bench::RegisterMemoryFloorJobs();

    bench::ResultsCollector collector;
    benchmark::RunSpecifiedBenchmarks(&collector);
    bench::PluginSession::EndActive();
    benchmark::Shutdown();
    bench::PrintProcessor(std::cout);
    bench::PrintResults(std::cout, collector.results());
    return 0;
}
