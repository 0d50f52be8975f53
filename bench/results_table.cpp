// Ratios are always someone else's time over ours, so above 1 means the plug-in
// is faster, and the memory floor's time over ours is the plug-in's speed as a
// fraction of a plain copy of the bytes it must write.
#include "bench/results_table.h"

#include <algorithm>
#include <cstdio>
#include <functional>
#include <optional>
#include <vector>

#include "bench/job.h"
#include "bench/plugin_session.h"
#include "bench/tasks.h"

namespace bench {

namespace {

constexpr double kMiB = 1024.0 * 1024.0;

using Row = std::vector<std::string>;

const char* const kHostLabels[] = {kDesktop.label, kConsole.label};

std::vector<std::string> TaskOrder() {
    std::vector<std::string> tasks;
    for (double angle : kRotationAngles) tasks.push_back(RotateTask(angle));
    tasks.insert(tasks.end(), {kRotateWithMask, kRotateWithMaskCut, kRotate90, kRotate180, kRotate270, kMirror,
                               kHMirror, kVMirror, kMirrorInPlace, kHMirrorInPlace, kVMirrorInPlace, kClone,
                               kCloneToSize, kBitmap, kRotateMemory});
    return tasks;
}

std::string Format(const char* format, double value) {
    char text[64];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

class Lookup {
public:
    explicit Lookup(const Results& results) : results_(results) {}

    const Result* Find(const std::string& task, const std::string& implementation) const {
        const auto found = results_.find({task, implementation});
        return found == results_.end() ? nullptr : &found->second;
    }
    std::optional<double> Milliseconds(const std::string& task, const std::string& implementation) const {
        const Result* result = Find(task, implementation);
        if (result == nullptr || !result->error.empty()) return std::nullopt;
        return result->milliseconds;
    }
    std::optional<double> Counter(const std::string& task, const std::string& implementation,
                                  const std::string& counter) const {
        const Result* result = Find(task, implementation);
        if (result == nullptr || !result->error.empty()) return std::nullopt;
        const auto found = result->counters.find(counter);
        if (found == result->counters.end()) return std::nullopt;
        return found->second;
    }
    // The clone and bitmap methods are measured against the host's own copy.
    std::optional<double> HostCopyMilliseconds(const std::string& task, const char* host) const {
        if (task != kClone && task != kCloneToSize && task != kBitmap) return std::nullopt;
        return Milliseconds(kClone, HostCopyImplementation(host));
    }
    // Another's time over ours.
    std::optional<double> Ratio(std::optional<double> theirs, const std::string& task, const char* host) const {
        const std::optional<double> ours = Milliseconds(task, host);
        if (!theirs || !ours || *ours <= 0) return std::nullopt;
        return *theirs / *ours;
    }
    std::string TimeCell(const std::string& task, const std::string& implementation) const {
        const Result* result = Find(task, implementation);
        if (result == nullptr) return "-";
        if (!result->error.empty()) return "skipped";
        return Format(result->milliseconds < 10 ? "%.2f" : "%.1f", result->milliseconds);
    }

private:
    const Results& results_;
};

std::string RatioCell(std::optional<double> ratio) { return ratio ? Format("%.2f", *ratio) : "-"; }

std::string MiBCell(std::optional<double> bytes) { return bytes ? Format("%.1f", *bytes / kMiB) : "-"; }

// The first nameColumns columns hold names, set to the left; numbers to the right.
void PrintTable(std::ostream& out, const std::string& title, const std::vector<Row>& rows, size_t nameColumns = 2) {
    std::vector<size_t> widths;
    for (const Row& row : rows)
        for (size_t column = 0; column < row.size(); ++column) {
            if (widths.size() <= column) widths.push_back(0);
            widths[column] = std::max(widths[column], row[column].size());
        }
    out << "\n" << title << "\n";
    for (size_t index = 0; index < rows.size(); ++index) {
        const Row& row = rows[index];
        std::string line;
        for (size_t column = 0; column < row.size(); ++column) {
            const std::string padding(widths[column] - row[column].size(), ' ');
            line += column < nameColumns ? row[column] + padding : padding + row[column];
            line += "  ";
        }
        out << line.substr(0, line.find_last_not_of(' ') + 1) << "\n";
        if (index == 0) out << std::string(line.find_last_not_of(' ') + 1, '-') << "\n";
    }
}

void PrintTimes(std::ostream& out, const Lookup& lookup) {
    std::vector<Row> rows{{"method", "", "desktop", "console", "ImageMagick", "Leptonica", "Lept.area-map", "OpenCV",
                           "host copy d", "host copy c", "memcpy", "memcpy-fresh"}};
    for (const std::string& task : TaskOrder())
        rows.push_back({task, "", lookup.TimeCell(task, kDesktop.label), lookup.TimeCell(task, kConsole.label),
                        lookup.TimeCell(task, kImageMagick), lookup.TimeCell(task, kLeptonica),
                        lookup.TimeCell(task, kLeptonicaAreaMap), lookup.TimeCell(task, kOpenCv),
                        lookup.TimeCell(task, HostCopyImplementation(kDesktop.label)),
                        lookup.TimeCell(task, HostCopyImplementation(kConsole.label)),
                        lookup.TimeCell(task, kMemcpy), lookup.TimeCell(task, kMemcpyFresh)});
    PrintTable(out,
               "Time of one call, ms (median of 3 repetitions; 4000 x 3000 pixels, one thread; "
               "'-': the library has no such operation)",
               rows);
}

void PrintRatios(std::ostream& out, const Lookup& lookup) {
    std::vector<Row> rows{{"method", "host", "Mpx/s", "ImageMagick", "Leptonica", "Lept.area-map", "OpenCV",
                           "host copy", "memcpy", "memcpy-fresh"}};
    for (const std::string& task : TaskOrder())
        for (const char* host : kHostLabels) {
            const std::optional<double> itemsPerSecond = lookup.Counter(task, host, "items_per_second");
            rows.push_back({task, host, itemsPerSecond ? Format("%.1f", *itemsPerSecond / 1e6) : "-",
                            RatioCell(lookup.Ratio(lookup.Milliseconds(task, kImageMagick), task, host)),
                            RatioCell(lookup.Ratio(lookup.Milliseconds(task, kLeptonica), task, host)),
                            RatioCell(lookup.Ratio(lookup.Milliseconds(task, kLeptonicaAreaMap), task, host)),
                            RatioCell(lookup.Ratio(lookup.Milliseconds(task, kOpenCv), task, host)),
                            RatioCell(lookup.Ratio(lookup.HostCopyMilliseconds(task, host), task, host)),
                            RatioCell(lookup.Ratio(lookup.Milliseconds(task, kMemcpy), task, host)),
                            RatioCell(lookup.Ratio(lookup.Milliseconds(task, kMemcpyFresh), task, host))});
        }
    PrintTable(out,
               "Their time / our time (above 1: the plug-in is faster; memcpy columns: the plug-in's speed as a "
               "fraction of a copy of the bytes it writes); Mpx/s: source pixels per second",
               rows);
}

void PrintMemory(std::ostream& out, const Lookup& lookup) {
    std::vector<Row> rows{{"method", "host", "peak heap", "allowed", "heap/allowed", "peak RSS", "ImageMagick",
                           "Leptonica", "Lept.area-map", "OpenCV"}};
    for (const std::string& task : TaskOrder())
        for (const char* host : kHostLabels) {
            const std::optional<double> heap = lookup.Counter(task, host, kPeakHeapCounter);
            const std::optional<double> allowed = lookup.Counter(task, host, kAllowedCounter);
            rows.push_back({task, host, MiBCell(heap), MiBCell(allowed),
                            RatioCell(heap && allowed && *allowed > 0 ? std::optional(*heap / *allowed) : std::nullopt),
                            MiBCell(lookup.Counter(task, host, kPeakResidentCounter)),
                            MiBCell(lookup.Counter(task, kImageMagick, kPeakHeapCounter)),
                            MiBCell(lookup.Counter(task, kLeptonica, kPeakHeapCounter)),
                            MiBCell(lookup.Counter(task, kLeptonicaAreaMap, kPeakHeapCounter)),
                            MiBCell(lookup.Counter(task, kOpenCv, kPeakHeapCounter))});
        }
    PrintTable(out,
               "Peak memory of one call, MiB above the level at its start (allowed: the host pictures the method is "
               "bound to have alive at once, as this host makes them, plus one row; peers: peak heap)",
               rows);
}

// Pictures per second from each count of threads, and how close each count comes
// to that many times one thread's rate.
void PrintThreadScaling(std::ostream& out, const Lookup& lookup) {
    std::vector<Row> rows{{"threads", "host", "pictures/s", "speed-up", "efficiency"}};
    for (const char* host : kHostLabels) {
        const std::optional<double> alone = lookup.Counter(ScalingTask(1), host, "items_per_second");
        for (int threads : ScalingThreadCounts()) {
            const std::optional<double> rate = lookup.Counter(ScalingTask(threads), host, "items_per_second");
            const std::optional<double> speedUp = rate && alone && *alone > 0 ? std::optional(*rate / *alone) : std::nullopt;
            rows.push_back({std::to_string(threads), host, rate ? Format("%.1f", *rate) : "-",
                            speedUp ? Format("%.2f", *speedUp) : "-",
                            speedUp ? Format("%.0f%%", *speedUp / threads * 100) : "-"});
        }
    }
    PrintTable(out,
               "RotateQLM(30) on " + std::to_string(kScalingPictureWidth) + " x " +
                   std::to_string(kScalingPictureHeight) +
                   " pictures, each thread its own (median of 3 repetitions; efficiency: speed-up / threads)",
               rows);
}

struct Goal {
    std::string text;
    std::string task;
    // The measured figure for one host, and whether it meets the goal.
    std::function<std::optional<double>(const char* host)> measure;
    // The goal is measured >= bound, or measured <= bound when not atLeast.
    bool atLeast;
    double bound;
    const char* unit;
    bool exact = false;  // counted rather than timed: no noise
    const char* onlyHost = nullptr;  // a goal set for one kind of host
};

// Repetitions of one call on this kind of machine spread by a few percent, so a
// figure that misses its bound by less than that says nothing either way.
constexpr double kNoise = 0.05;

const char* Verdict(const Goal& goal, double measured) {
    const double margin = goal.atLeast ? measured / goal.bound : goal.bound / measured;
    if (margin >= 1) return "met";
    return !goal.exact && margin >= 1 - kNoise ? "within noise" : "MISSED";
}

void PrintGoals(std::ostream& out, const Lookup& lookup) {
    const std::string rotate30 = RotateTask(30);
    std::vector<Goal> goals{
        {"at least 10x faster than ImageMagick's RotateImage", rotate30,
         [&](const char* host) { return lookup.Ratio(lookup.Milliseconds(rotate30, kImageMagick), rotate30, host); },
         true, 10, "x faster"},
        {"at least as fast as Leptonica's shear rotation", rotate30,
         [&](const char* host) { return lookup.Ratio(lookup.Milliseconds(rotate30, kLeptonica), rotate30, host); },
         true, 1, "x faster"},
        {"within 2.5x of the memory floor of its passes", rotate30,
         [&](const char* host) {
             const std::optional<double> ratio = lookup.Ratio(lookup.Milliseconds(rotate30, kMemcpy), rotate30, host);
             return ratio ? std::optional(1 / *ratio) : std::nullopt;
         },
         false, 2.5, "x memcpy's time"}};
    // OpenCV's time over ours, as a multiple of OpenCV's time.
    auto timesOpenCv = [&](const std::string& task, const std::string& openCvTask, double openCvCalls) {
        return [&, task, openCvTask, openCvCalls](const char* host) -> std::optional<double> {
            const std::optional<double> theirs = lookup.Milliseconds(openCvTask, kOpenCv);
            const std::optional<double> ours = lookup.Milliseconds(task, host);
            if (!theirs || !ours || *theirs <= 0) return std::nullopt;
            return *ours / (*theirs * openCvCalls);
        };
    };
    // Console hosts widen and narrow a host bitmap's 7-bit alpha in every pass,
    // so only the desktop host is asked to be well ahead.
    for (double angle : {30.0, 45.0, 60.0}) {
        const std::string task = RotateTask(angle);
        goals.push_back({"at most 0.8x OpenCV's warpAffine time", task, timesOpenCv(task, task, 1), false, 0.8,
                         "x OpenCV's time", false, kDesktop.label});
        goals.push_back({"no slower than OpenCV's warpAffine", task, timesOpenCv(task, task, 1), false, 1.0,
                         "x OpenCV's time", false, kConsole.label});
    }
    goals.push_back({"no slower than two warpAffine calls (picture, mask)", kRotateWithMask,
                     timesOpenCv(kRotateWithMask, rotate30, 2), false, 1.0, "x OpenCV's time"});
    for (const char* task : {kRotate90, kRotate270})
        goals.push_back({"no slower than OpenCV's rotate", task, timesOpenCv(task, task, 1), false, 1.0,
                         "x OpenCV's time"});
    for (const char* task : {kRotate180, kMirror, kHMirror, kVMirror})
        goals.push_back({"no slower than the host's own copy", task,
                         [&, task](const char* host) {
                             return lookup.Ratio(lookup.Milliseconds(kClone, HostCopyImplementation(host)), task, host);
                         },
                         true, 1, "x faster"});
    for (const char* task : {kMirrorInPlace, kHMirrorInPlace, kVMirrorInPlace})
        goals.push_back({"at least as fast as memcpy of the picture", task,
                         [&, task](const char* host) {
                             return lookup.Ratio(lookup.Milliseconds(task, kMemcpy), task, host);
                         },
                         true, 1, "of memcpy's speed"});
    for (const char* task : {kClone, kCloneToSize, kBitmap})
        goals.push_back({"no slower than the host's own copy", task,
                         [&, task](const char* host) {
                             return lookup.Ratio(lookup.HostCopyMilliseconds(task, host), task, host);
                         },
                         true, 1, "x faster"});
    for (double angle : kRotationAngles) {
        const std::string task = RotateTask(angle);
        goals.push_back({"peak memory within the pictures it makes, plus one row", task,
                         [&, task](const char* host) -> std::optional<double> {
                             const std::optional<double> heap = lookup.Counter(task, host, kPeakHeapCounter);
                             const std::optional<double> allowed = lookup.Counter(task, host, kAllowedCounter);
                             if (!heap || !allowed || *allowed <= 0) return std::nullopt;
                             return *heap / *allowed;
                         },
                         false, 1, "of what is allowed", true});
    }

    std::vector<Row> rows{{"method", "host", "goal", "measured", "verdict"}};
    for (const Goal& goal : goals)
        for (const char* host : kHostLabels) {
            if (goal.onlyHost != nullptr && std::string(goal.onlyHost) != host) continue;
            const std::optional<double> measured = goal.measure(host);
            rows.push_back({goal.task, host, goal.text,
                            measured ? Format("%.2f", *measured) + " " + goal.unit : "no data",
                            !measured ? "-" : Verdict(goal, *measured)});
        }
    PrintTable(out,
               "Goals (4000 x 3000, one thread, same run; within noise: missed by less than " +
                   Format("%.0f", kNoise * 100) + "%)",
               rows, 3);
}

}  // namespace

void ResultsCollector::ReportRuns(const std::vector<Run>& runs) {
    for (const Run& run : runs) {
        const std::string& name = run.run_name.function_name;
        const size_t slash = name.rfind('/');
        Result& result = results_[{name.substr(0, slash), name.substr(slash + 1)}];
        if (run.error_occurred) {
            result.error = run.error_message;
            continue;
        }
        // With repetitions only the aggregates arrive; a single run is its own median.
        const bool median = run.run_type == Run::RT_Aggregate && run.aggregate_name == "median";
        if (!median && run.run_type == Run::RT_Aggregate) continue;
        result.error.clear();
        result.milliseconds = run.GetAdjustedRealTime() * 1e3 / benchmark::GetTimeUnitMultiplier(run.time_unit);
        for (const auto& [counter, value] : run.counters) result.counters[counter] = value.value;
    }
    ConsoleReporter::ReportRuns(runs);
}

void PrintResults(std::ostream& out, const Results& results) {
    const Lookup lookup(results);
    PrintTimes(out, lookup);
    PrintRatios(out, lookup);
    PrintMemory(out, lookup);
    PrintThreadScaling(out, lookup);
    PrintGoals(out, lookup);
}

}  // namespace bench
