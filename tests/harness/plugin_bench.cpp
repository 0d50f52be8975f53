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

REALpicture PluginBench::Apply(const simhost::PictureMethod& method, REALpicture receiver, const Arguments& arguments) const {
    using simhost::MethodForm;
    switch (method.form) {
        case MethodForm::Picture:
            return plugin.Call<REALpicture>(method, receiver);
        case MethodForm::AngleAndBackground:
            return plugin.Call<REALpicture>(method, receiver, arguments.angle, arguments.background);
        case MethodForm::AngleAndCut:
            return plugin.Call<REALpicture>(method, receiver, arguments.angle, static_cast<signed char>(arguments.cut));
        case MethodForm::Size:
            return plugin.Call<REALpicture>(method, receiver, arguments.width, arguments.height);
        case MethodForm::InPlace:
            return plugin.Call<bool>(method, receiver) ? receiver : nullptr;
        case MethodForm::MemoryEstimate:
            break;
    }
    throw std::invalid_argument("the memory estimate gives no picture");
}

}  // namespace test_support
