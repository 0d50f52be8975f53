// The legacy pixel-map bridge on a simulated system that lacks the framework or
// one of its functions: what failed is asked for again next time, what was found
// never, and a lock that cannot be given back shows.
#include <gtest/gtest.h>

#include "picture/legacy_bridge.h"
#include "picture/picture_editor.h"
#include "tests/support/pictures.h"
#include "tests/unit/started_host.h"

using simhost::Storage;

namespace {

TEST(LegacyBridge, WithoutTheFrameworkEveryCallIsUnavailableAndLoadsAgain) {
    StartedHost host({.system = {.applicationServicesInstalled = false}});
    REALpicture world = host.MakePicture(Storage::GWorld32, 4, 4);
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
    host.Release(world);
    EXPECT_EQ(host.LedgerProblems(), std::vector<std::string>{});
}

TEST(LegacyBridge, AFoundFunctionIsNeverLookedUpAgain) {
    StartedHost host;
    legacy::ResetDrawingPort();
    const int lookups = macos_system::GetCounters().functionLookups;
    for (int i = 0; i < 3; ++i) legacy::ResetDrawingPort();
    EXPECT_EQ(macos_system::GetCounters().functionLookups, lookups);
    EXPECT_EQ(macos_system::GetCounters().setGWorldNullCalls, 4);
}

// Without UnlockPixels the pixel lock a reader took cannot be given back, and the
// ledger says so. (Every other missing function is a row of the method fault table.)
TEST(LegacyBridge, WithoutUnlockPixelsTheLockStaysOut) {
    StartedHost host({.system = {.missingFunctions = {"UnlockPixels"}}});
    REALpicture world = host.MakePicture(Storage::GWorld32, 5, 3);
    test_support::FillRandom(host, world, 9);
    {
        PictureReader reader;
        ASSERT_TRUE(reader.GetPictureEditor(world, true, false));
        EXPECT_EQ(reader.GetPixel(4, 2).r, host.GetPixel(world, 4, 2).r);
    }
    host.Release(world);
    EXPECT_FALSE(host.LedgerProblems().empty());
}

}  // namespace
