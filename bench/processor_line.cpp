// The bench reaches the plug-in only through the host, which cannot ask it
// which path it took; the plug-in's own choice (transforms/processor_paths.cpp)
// is compiled in here, so the line reports what that same code decides on this
// processor.
#include "bench/processor_line.h"

#include <fstream>
#include <string>
#include <utility>

#include "transforms/processor_paths.h"

namespace bench {
namespace {

// x86 names the processor in "model name"; ARM kernels give "Hardware" or
// "Processor" where they give a name at all, and otherwise the part numbers.
std::string ProcessorName() {
    std::ifstream cpuinfo("/proc/cpuinfo");
    std::string best;
    int bestRank = 0;
    const std::pair<const char*, int> keys[] = {
        {"model name", 4}, {"Hardware", 3}, {"Processor", 2}, {"CPU part", 1}};
    for (std::string line; std::getline(cpuinfo, line);) {
        for (const auto& [key, rank] : keys) {
            const std::string prefix = key;
            if (rank <= bestRank || line.compare(0, prefix.size(), prefix) != 0) continue;
            const auto value = line.find_first_not_of(" \t:", prefix.size());
            best = value == std::string::npos ? "" : line.substr(value);
            bestRank = rank;
        }
    }
    return best.empty() ? "unknown" : best;
}

const char* PathName(ProcessorPath path) {
    switch (path) {
        case ProcessorPath::kSse2: return "SSE2";
        case ProcessorPath::kAvx2: return "AVX2";
        case ProcessorPath::kAvx512: return "AVX-512";
        case ProcessorPath::kNeon: return "NEON";
        case ProcessorPath::kPortable: break;
    }
    return "portable";
}

}  // namespace

void PrintProcessor(std::ostream& out) {
    out << "Processor: " << ProcessorName() << "\nVector paths it offers the plug-in: ";
    const char* separator = "";
    for (const ProcessorPath path :
         {ProcessorPath::kSse2, ProcessorPath::kAvx2, ProcessorPath::kAvx512, ProcessorPath::kNeon}) {
        if (!Supports(path)) continue;
        out << separator << PathName(path);
        separator = ", ";
    }
    out << "\nPath the plug-in takes: " << PathName(FastestPath()) << "\n\n";
}

}  // namespace bench
