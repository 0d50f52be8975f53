// Every job runs on the test card's pixel count, one thread, wall-clock time, and
// is repeated so that the table can take the median. Before the first timing the
// job runs once with the memory counters watching, after the free pages went
// back to the kernel so that the resident size shows the call's peak too; that
// call also tells a method that is not built yet, which is skipped. Untimed calls
// then bring the pages it needs back in. The page faults of the timed calls are
// counted (faults_per_call in the JSON output): 0 means warm memory.
#include "bench/job.h"

#include <benchmark/benchmark.h>

#include <memory>
#include <sys/resource.h>
#include <optional>

#include "bench/heap_counter.h"
#include "bench/resident_memory.h"
#include "bench/test_card.h"

namespace bench {

namespace {

constexpr int kRepetitions = 3;
constexpr double kMinSecondsPerRepetition = 0.2;

struct CallMemory {
    int64_t peakHeapBytes = 0;                 // above the heap held when the call began
    std::optional<int64_t> peakResidentBytes;  // above the resident size when it began
};

struct MeasuredFirstCall {
    bool done = false;
    CallMemory memory;
};

MeasuredFirstCall MeasureFirstCall(const Job& job) {
    heap_counter::ReleaseFreePages();
    const int64_t heapBefore = heap_counter::LiveBytes();
    heap_counter::ResetPeak();
    const std::optional<int64_t> residentBefore = resident_memory::ResetPeak();
    MeasuredFirstCall first;
    first.done = job.run();
    first.memory.peakHeapBytes = heap_counter::PeakBytes() - heapBefore;
    if (residentBefore) first.memory.peakResidentBytes = resident_memory::PeakBytes() - *residentBefore;
    return first;
}

int64_t MinorPageFaults() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_minflt;
}

// The measured call gave its free pages back to the kernel; calls are repeated
// untimed until one runs on pages already in place, so that timed calls are not
// timed on the virtual machine's page faults.
void WarmUp(const Job& job) {
    constexpr int kMostWarmUpCalls = 5;
    for (int call = 0; call < kMostWarmUpCalls; ++call) {
        const int64_t before = MinorPageFaults();
        job.run();
        if (MinorPageFaults() == before) return;
    }
}

benchmark::Counter Bytes(int64_t bytes) {
    return benchmark::Counter(static_cast<double>(bytes), benchmark::Counter::kDefaults,
                              benchmark::Counter::kIs1024);
}

void Time(benchmark::State& state, const Job& job, std::optional<CallMemory>& memory) {
    if (job.enter) job.enter();
    if (!memory) {
        const MeasuredFirstCall first = MeasureFirstCall(job);
        if (!first.done) {
            state.SkipWithError("not done (method not built yet, or it failed)");
            return;
        }
        memory = first.memory;
        WarmUp(job);
    }
    const int64_t faultsBefore = MinorPageFaults();
    for (auto _ : state) {
        if (!job.run()) {
            state.SkipWithError("failed while timed");
            break;
        }
    }
    state.counters[kPageFaultsCounter] =
        benchmark::Counter(static_cast<double>(MinorPageFaults() - faultsBefore) / static_cast<double>(state.iterations()));
    state.SetItemsProcessed(state.iterations() * test_card::kPixels);
    state.counters[kPeakHeapCounter] = Bytes(memory->peakHeapBytes);
    if (memory->peakResidentBytes) state.counters[kPeakResidentCounter] = Bytes(*memory->peakResidentBytes);
    if (job.allowedBytes) state.counters[kAllowedCounter] = Bytes(job.allowedBytes());
}

}  // namespace

void Register(Job job) {
    const std::string name = job.task + "/" + job.implementation;
    auto memory = std::make_shared<std::optional<CallMemory>>();
    benchmark::RegisterBenchmark(name.c_str(),
                                 [job = std::move(job), memory](benchmark::State& state) {
                                     Time(state, job, *memory);
                                 })
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime()
        ->MinTime(kMinSecondsPerRepetition)
        ->Repetitions(kRepetitions)
        ->ReportAggregatesOnly(true);
}

}  // namespace bench
