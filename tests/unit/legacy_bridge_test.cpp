// The legacy pixel-map bridge on a simulated system that lacks the framework or
// one of its functions: each caller takes its own way, nothing stays held, and
// what failed is asked for again next time.
#include <gtest/gtest.h>

#include "picture/legacy_bridge.h"
#include "picture/picture_editor.h"
#include "tests/support/pictures.h"
#include "tests/unit/started_host.h"

using simhost::HostKind;
using simhost::Storage;

namespace {

simhost::HostConfig DesktopWithout(std::set<std::string> missingFunctions, bool installed = true) {
    simhost::HostConfig config;
    config.kind = HostKind::Desktop;
    config.system.applicationServicesInstalled = installed;
    config.system.missingFunctions = std::move(missingFunctions);
    return config;
}

class BridgeTest : public ::testing::Test {
protected:
    void Start(const simhost::HostConfig& config) { host_.emplace(config); }
    std::optional<StartedHost> host_;
};

TEST_F(BridgeTest, WithoutTheFrameworkEveryCallIsUnavailableAndLoadsAgain) {
    Start(DesktopWithout({}, false));
    REALpicture world = host_->MakePicture(Storage::GWorld32, 4, 4);
    PictureReader reader;
    EXPECT_FALSE(reader.GetPictureEditor(world, true, false));
    EXPECT_FALSE(legacy::GetPixDepth(nullptr).has_value());
    EXPECT_FALSE(legacy::UnlockPixels(nullptr));
    legacy::ResetDrawingPort();
    EXPECT_EQ(macos_system::GetCounters().setGWorldNullCalls, 0);

    macos_system::Configuration installed;
    macos_system::Configure(installed);
    legacy::ResetDrawingPort();
    EXPECT_EQ(macos_system::GetCounters().setGWorldNullCalls, 1) << "a framework that appears later is found";
    EXPECT_GE(macos_system::GetCounters().frameworkLoads, 1);
    host_->Release(world);
    EXPECT_EQ(host_->LedgerProblems(), std::vector<std::string>{});
}

TEST_F(BridgeTest, AFoundFunctionIsNeverLookedUpAgain) {
    Start(DesktopWithout({}));
    legacy::ResetDrawingPort();
    const int lookups = macos_system::GetCounters().functionLookups;
    for (int i = 0; i < 3; ++i) legacy::ResetDrawingPort();
    EXPECT_EQ(macos_system::GetCounters().functionLookups, lookups);
    EXPECT_EQ(macos_system::GetCounters().setGWorldNullCalls, 4);
}

// What binding a 32-bit world for reading does when one function is missing.
struct MissingFunctionCase {
    const char* function;
    bool readerBinds;
};

class MissingFunctionTest : public BridgeTest, public ::testing::WithParamInterface<MissingFunctionCase> {};

TEST_P(MissingFunctionTest, TheCallerTakesItsOwnWay) {
    Start(DesktopWithout({GetParam().function}));
    REALpicture world = host_->MakePicture(Storage::GWorld32, 5, 3);
    test_support::FillRandom(*host_, world, 9);
    {
        PictureReader reader;
        EXPECT_EQ(reader.GetPictureEditor(world, true, false), GetParam().readerBinds);
        if (GetParam().readerBinds && std::string(GetParam().function) != "GetPixRowBytes") {
            EXPECT_EQ(reader.GetPixel(4, 2).r, host_->GetPixel(world, 4, 2).r);
        }
        if (std::string(GetParam().function) == "GetPixRowBytes") {
            EXPECT_EQ(reader.rowBytes, 0);
        }
    }
    PictureWriter writer;
    EXPECT_EQ(BindNewPicture(writer, 2, 2), GetParam().readerBinds) << "new pictures are made all the same";
    writer.ReleasePicture();
    host_->Release(world);
    std::vector<std::string> problems = host_->LedgerProblems();
    if (std::string(GetParam().function) == "UnlockPixels")
        EXPECT_FALSE(problems.empty()) << "without UnlockPixels the pixel lock cannot be given back";
    else
        EXPECT_EQ(problems, std::vector<std::string>{});
}

INSTANTIATE_TEST_SUITE_P(EachFunction, MissingFunctionTest,
                         ::testing::Values(MissingFunctionCase{"SetGWorld", true},
                                           MissingFunctionCase{"GetPortPixMap", true},
                                           MissingFunctionCase{"GetGWorldPixMap", false},
                                           MissingFunctionCase{"GetPixDepth", false},
                                           MissingFunctionCase{"LockPixels", false},
                                           MissingFunctionCase{"UnlockPixels", true},
                                           MissingFunctionCase{"GetPixBaseAddr", false},
                                           MissingFunctionCase{"GetPixRowBytes", true}),
                         [](const auto& info) { return std::string(info.param.function); });

}  // namespace
