// Task names are the table's keys; formatting them in one place keeps the
// plug-in's, the peers' and the floors' rows the same.
#include "bench/tasks.h"

#include <cstdio>

namespace bench {

std::string RotateTask(double angle) {
    char name[48];
    std::snprintf(name, sizeof name, "RotateQLM(%g)", angle);
    return name;
}

std::string HostCopyImplementation(const char* hostLabel) { return std::string("host-copy-") + hostLabel; }

}  // namespace bench
