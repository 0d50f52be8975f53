// The plug-in's methods on one host kind, each called through the method table
// the plug-in registered, as a program on that host calls them; and the host's
// own copy of a picture, which the clone and bitmap methods are measured against.
#pragma once

#include "bench/plugin_session.h"

namespace bench {

void RegisterPluginJobs(const HostUnderTest& host);

}  // namespace bench
