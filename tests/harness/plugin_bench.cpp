#include "tests/harness/plugin_bench.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "simhost/built_plugin.h"

namespace test_support {

PluginBench::PluginBench(simhost::HostConfig config)
    : host(std::move(config)), plugin(host, simhost::DefaultPluginPath()) {}

REALpicture PluginBench::RandomPicture(simhost::Storage storage, int32_t width, int32_t height, uint32_t seed) {
    REALpicture picture = host.MakePicture(storage, width, height);
    FillRandom(host, picture, seed);
    return picture;
}

void PluginBench::ExpectBalancedAndRelease(const std::vector<REALpicture>& results, REALpicture receiver) {
    std::vector<REALpicture> made;
    for (REALpicture result : results)
        if (result != nullptr && result != receiver) made.push_back(result);
    EXPECT_EQ(host.LedgerProblems(made), std::vector<std::string>{});
    for (REALpicture result : made) host.Release(result);
}

REALpicture PluginBench::Apply(const simhost::PictureMethod& method, REALpicture receiver,
                               const Arguments& arguments) const {
    if (method.form == simhost::MethodForm::MemoryEstimate) throw std::invalid_argument("no picture from the estimate");
    const simhost::MethodResult result = plugin.Call(method, receiver, arguments.Native());
    return method.form == simhost::MethodForm::InPlace ? (result.changed ? receiver : nullptr) : result.picture;
}

}  // namespace test_support
