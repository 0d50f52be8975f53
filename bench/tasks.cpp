// Task names are the table's keys; formatting them in one place keeps the
// plug-in's, the peers' and the floors' rows the same.
#include "bench/tasks.h"

#include <cstdio>
#include <thread>

namespace bench {

std::string RotateTask(double angle) {
    char name[48];
    std::snprintf(name, sizeof name, "RotateQLM(%g)", angle);
    return name;
}

std::vector<int> ScalingThreadCounts() {
    std::vector<int> counts{1, 2};
    const int cores = static_cast<int>(std::thread::hardware_concurrency());
    if (cores > 2) counts.push_back(cores);
    return counts;
}

std::string ScalingTask(int threads) {
    return "RotateQLM(30) " + std::to_string(kScalingPictureWidth) + "x" + std::to_string(kScalingPictureHeight) +
           ", " + std::to_string(threads) + (threads == 1 ? " thread" : " threads");
}

std::string HostCopyImplementation(const char* hostLabel) { return std::string("host-copy-") + hostLabel; }

}  // namespace bench
