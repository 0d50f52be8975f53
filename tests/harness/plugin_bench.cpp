#include "tests/harness/plugin_bench.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/pictures.h"

namespace test_support {

simhost::HostConfig ConfigFor(simhost::HostKind kind) {
    simhost::HostConfig config;
    config.kind = kind;
    return config;
}

PluginBench::PluginBench(simhost::HostConfig config)
    : host(std::move(config)), plugin(host, simhost::DefaultPluginPath()) {}

REALpicture PluginBench::RandomPicture(simhost::Storage storage, int32_t width, int32_t height, uint32_t seed) {
    REALpicture picture = host.MakePicture(storage, width, height);
    FillRandom(host, picture, seed);
    return picture;
}

void PluginBench::ExpectBalancedAndRelease(const std::vector<REALpicture>& results) {
    std::vector<REALpicture> made;
    for (REALpicture result : results)
        if (result != nullptr) made.push_back(result);
    EXPECT_EQ(host.LedgerProblems(made), std::vector<std::string>{});
    for (REALpicture result : made) host.Release(result);
}

}  // namespace test_support
