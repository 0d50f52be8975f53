// "CloneQLM", "CloneQLM(width, height)" and "BitmapQLM" through the shipped
// library's method table, on every host kind and storage, with faults injected.
#include <gtest/gtest.h>

#include "simhost/simulated_host.h"
#include "tests/harness/plugin_bench.h"
#include "tests/support/pictures.h"

using simhost::HostKind;
using simhost::Rgba;
using simhost::Storage;
using test_support::Image;

namespace {

struct HostCase {
    HostKind kind;
    Storage storage;
    const char* name;
};

const HostCase kHostCases[] = {
    {HostKind::Desktop, Storage::GWorld32, "Desktop32"}, {HostKind::Desktop, Storage::GWorld24, "Desktop24"},
    {HostKind::Desktop, Storage::GWorld16, "Desktop16"}, {HostKind::Desktop, Storage::VectorOnly, "DesktopVector"},
    {HostKind::Console, Storage::HostBitmap, "Console"}, {HostKind::Web, Storage::HostBitmap, "Web"},
};

simhost::HostConfig ConfigFor(HostKind kind) {
    simhost::HostConfig config = test_support::ConfigFor(kind);
    config.newPictureFill = 0x80402010;
    return config;
}

class CopyMethodsTest : public ::testing::TestWithParam<HostCase>, protected test_support::PluginBench {
protected:
    CopyMethodsTest() : PluginBench(ConfigFor(GetParam().kind)) {
        source_ = RandomPicture(GetParam().storage, 9, 6, 11);
    }
    ~CopyMethodsTest() override { host.Release(source_); }

    REALpicture source_ = nullptr;
};

TEST_P(CopyMethodsTest, CloneHoldsTheSamePixels) {
    REALpicture clone = plugin.Call<REALpicture>(simhost::methods::kClone, source_);
    ASSERT_NE(clone, nullptr);
    EXPECT_NE(clone, source_);
    EXPECT_EQ(test_support::ReadImage(host, clone), test_support::ReadImage(host, source_));
    ExpectBalancedAndRelease({clone});
}

TEST_P(CopyMethodsTest, CloneToALargerSizeKeepsTheSourceUnscaledAtTheTopLeft) {
    REALpicture clone = plugin.Call<REALpicture>(simhost::methods::kCloneToSize, source_, int32_t{18}, int32_t{12});
    ASSERT_NE(clone, nullptr);
    const Image source = test_support::ReadImage(host, source_);
    const Image copy = test_support::ReadImage(host, clone);
    ASSERT_EQ(copy.width, 18);
    ASSERT_EQ(copy.height, 12);
    const Rgba fill{0x40, 0x20, 0x10, 0x80};  // the host's fill of new pictures, 0x80402010
    for (int32_t y = 0; y < 12; ++y)
        for (int32_t x = 0; x < 18; ++x) {
            if (x < 9 && y < 6)
                ASSERT_EQ(copy.at(x, y), source.at(x, y));
            else
                ASSERT_EQ(copy.at(x, y), fill) << "untouched pixels keep the host's fill";
        }
    ExpectBalancedAndRelease({clone});
}

TEST_P(CopyMethodsTest, CloneToASmallerSizeHoldsTheTopLeftPart) {
    REALpicture clone = plugin.Call<REALpicture>(simhost::methods::kCloneToSize, source_, int32_t{4}, int32_t{3});
    ASSERT_NE(clone, nullptr);
    const Image source = test_support::ReadImage(host, source_);
    const Image copy = test_support::ReadImage(host, clone);
    for (int32_t y = 0; y < 3; ++y)
        for (int32_t x = 0; x < 4; ++x) ASSERT_EQ(copy.at(x, y), source.at(x, y));
    ExpectBalancedAndRelease({clone});
}

TEST_P(CopyMethodsTest, CloneToAnEmptySizeIsNil) {
    for (auto [w, h] : {std::pair{0, 5}, {5, 0}, {-1, 5}, {5, -7}})
        EXPECT_EQ(plugin.Call<REALpicture>(simhost::methods::kCloneToSize, source_, int32_t(w), int32_t(h)), nullptr);
    EXPECT_EQ(plugin.Call<REALpicture>(simhost::methods::kClone, nullptr), nullptr);
    EXPECT_EQ(plugin.Call<REALpicture>(simhost::methods::kCloneToSize, nullptr, int32_t{3}, int32_t{3}), nullptr);
    ExpectBalancedAndRelease({});
}

TEST_P(CopyMethodsTest, BitmapIsTheReceiverWhenItAlreadyIsOne) {
    REALpicture bitmap = plugin.Call<REALpicture>(simhost::methods::kBitmap, source_);
    const Storage storage = GetParam().storage;
    if (storage == Storage::GWorld32 || storage == Storage::VectorOnly || storage == Storage::HostBitmap) {
        EXPECT_EQ(bitmap, source_);
        EXPECT_EQ(host.References(source_), 2);
        host.Release(bitmap);
        ExpectBalancedAndRelease({});
        return;
    }
    ASSERT_NE(bitmap, nullptr);
    EXPECT_NE(bitmap, source_);
    EXPECT_EQ(host.StorageOf(bitmap), Storage::GWorld32);
    EXPECT_EQ(test_support::ReadImage(host, bitmap), test_support::ReadImage(host, source_));
    ExpectBalancedAndRelease({bitmap});
}

INSTANTIATE_TEST_SUITE_P(HostsAndStorage, CopyMethodsTest, ::testing::ValuesIn(kHostCases),
                         [](const auto& info) { return std::string(info.param.name); });

// Faults: whatever fails, nothing the plug-in took stays held.
struct FaultCase {
    const char* name;
    HostKind kind;
    void (*configure)(simhost::HostConfig&);
    bool cloneSucceeds;
};

const FaultCase kFaultCases[] = {
    {"NoNewPicture", HostKind::Desktop, [](auto& c) { c.missingEntryPoints = {"newPicture"}; }, false},
    {"NewPictureFails", HostKind::Console, [](auto& c) { c.newPictureFailsFromCall = 1; }, false},
    {"NoGraphics", HostKind::Desktop, [](auto& c) { c.graphicsUnavailable = true; }, true},
    {"NoDrawPictureOnConsole", HostKind::Console, [](auto& c) { c.drawPictureUnavailable = true; }, true},
    {"NoDrawPictureOnDesktop", HostKind::Desktop, [](auto& c) { c.drawPictureUnavailable = true; }, true},
    {"NoPropertyReads", HostKind::Desktop, [](auto& c) { c.missingEntryPoints = {"REALGetPropValueInt"}; }, false},
    {"DescriptionLocksFailOldHost", HostKind::Console,
     [](auto& c) {
         c.version = 2011.0;
         c.drawPictureUnavailable = true;
         c.failingDescriptionTypes = {10};
     },
     true},
    {"NoFramework", HostKind::Desktop, [](auto& c) { c.system.applicationServicesInstalled = false; }, true},
    {"NoSetGWorld", HostKind::Desktop, [](auto& c) { c.system.missingFunctions = {"SetGWorld"}; }, true},
};

class CopyFaultTest : public ::testing::TestWithParam<FaultCase> {};

TEST_P(CopyFaultTest, EveryMethodLeavesTheLedgerBalanced) {
    simhost::HostConfig config = ConfigFor(GetParam().kind);
    GetParam().configure(config);
    test_support::PluginBench bench(config);
    const Storage storage = GetParam().kind == HostKind::Desktop ? Storage::GWorld24 : Storage::HostBitmap;
    REALpicture source = bench.RandomPicture(storage, 5, 4, 3);

    REALpicture clone = bench.plugin.Call<REALpicture>(simhost::methods::kClone, source);
    EXPECT_EQ(clone != nullptr, GetParam().cloneSucceeds);
    bench.ExpectBalancedAndRelease({clone});

    // One call at a time: the ledger must see each result alone.
    for (bool sized : {true, false}) {
        bench.ExpectBalancedAndRelease({sized ? bench.plugin.Call<REALpicture>(simhost::methods::kCloneToSize, source, int32_t{7}, int32_t{2})
                                              : bench.plugin.Call<REALpicture>(simhost::methods::kBitmap, source)});
    }
    bench.host.Release(source);
    bench.ExpectBalancedAndRelease({});
}

INSTANTIATE_TEST_SUITE_P(Faults, CopyFaultTest, ::testing::ValuesIn(kFaultCases),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace
