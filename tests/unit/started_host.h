// A simulated host for tests that link the plug-in's code directly: the start-up
// values REALPluginMain would set (the resolver, the host version) point at it.
#pragma once

#include "plugin/process_state.h"
#include "simhost/simulated_host.h"

struct StartedHost : simhost::SimulatedHost {
    explicit StartedHost(const simhost::HostConfig& config = {}) : SimulatedHost(config) {
        gResolver = Resolver();
        rbversion_rbversion = config.version.value_or(0.0);
    }
};
