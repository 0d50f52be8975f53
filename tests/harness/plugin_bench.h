// The shipped plug-in loaded into a simulated host of the test's own, with what
// every method test needs around it.
#pragma once

#include <cstdint>
#include <vector>

#include "simhost/simulated_host.h"

namespace test_support {

simhost::HostConfig ConfigFor(simhost::HostKind kind);

struct PluginBench {
    explicit PluginBench(simhost::HostConfig config);
    explicit PluginBench(simhost::HostKind kind) : PluginBench(ConfigFor(kind)) {}

    // A picture of the test's own, of pseudo-random pixels.
    REALpicture RandomPicture(simhost::Storage storage, int32_t width, int32_t height, uint32_t seed);
    // Nothing is held but the test's own pictures and the method's results, which
    // are then released. A nil result is skipped.
    void ExpectBalancedAndRelease(const std::vector<REALpicture>& results);

    simhost::SimulatedHost host;
    simhost::PluginLibrary plugin;
};

}  // namespace test_support
