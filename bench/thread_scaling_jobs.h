// RotateQLM(30) from 1, 2 and as many threads as the machine has cores at once,
// each thread on a picture of its own: pictures per second and how they scale.
#pragma once

#include "bench/plugin_session.h"

namespace bench {

void RegisterThreadScalingJobs(const HostUnderTest& host);

}  // namespace bench
