// "CloneQLM", "CloneQLM(width, height)" and "BitmapQLM" through the shipped
// library's method table, on every host kind and storage, with faults injected.
#include <gtest/gtest.h>

#include "simhost/simulated_host.h"
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
    simhost::HostConfig config;
    config.kind = kind;
    config.newPictureFill = 0x80402010;
    return config;
}

class CopyMethodsTest : public ::testing::TestWithParam<HostCase> {
protected:
    CopyMethodsTest() : host_(ConfigFor(GetParam().kind)), plugin_(host_, simhost::DefaultPluginPath()) {
        source_ = host_.MakePicture(GetParam().storage, 9, 6);
        test_support::FillRandom(host_, source_, 11);
    }
    ~CopyMethodsTest() override { host_.Release(source_); }

    void ExpectBalanced(REALpicture result) {
        EXPECT_EQ(host_.LedgerProblems(result ? std::vector<REALpicture>{result} : std::vector<REALpicture>{}),
                  std::vector<std::string>{});
        if (result != nullptr) host_.Release(result);
    }

    simhost::SimulatedHost host_;
    simhost::PluginLibrary plugin_;
    REALpicture source_ = nullptr;
};

TEST_P(CopyMethodsTest, CloneHoldsTheSamePixels) {
    REALpicture clone = plugin_.Call<REALpicture>("CloneQLM", source_);
    ASSERT_NE(clone, nullptr);
    EXPECT_NE(clone, source_);
    EXPECT_EQ(test_support::ReadImage(host_, clone), test_support::ReadImage(host_, source_));
    ExpectBalanced(clone);
}

TEST_P(CopyMethodsTest, CloneToALargerSizeKeepsTheSourceUnscaledAtTheTopLeft) {
    REALpicture clone = plugin_.Call<REALpicture>("CloneQLM", source_, int32_t{18}, int32_t{12});
    ASSERT_NE(clone, nullptr);
    const Image source = test_support::ReadImage(host_, source_);
    const Image copy = test_support::ReadImage(host_, clone);
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
    ExpectBalanced(clone);
}

TEST_P(CopyMethodsTest, CloneToASmallerSizeHoldsTheTopLeftPart) {
    REALpicture clone = plugin_.Call<REALpicture>("CloneQLM", source_, int32_t{4}, int32_t{3});
    ASSERT_NE(clone, nullptr);
    const Image source = test_support::ReadImage(host_, source_);
    const Image copy = test_support::ReadImage(host_, clone);
    for (int32_t y = 0; y < 3; ++y)
        for (int32_t x = 0; x < 4; ++x) ASSERT_EQ(copy.at(x, y), source.at(x, y));
    ExpectBalanced(clone);
}

TEST_P(CopyMethodsTest, CloneToAnEmptySizeIsNil) {
    for (auto [w, h] : {std::pair{0, 5}, {5, 0}, {-1, 5}, {5, -7}})
        EXPECT_EQ(plugin_.Call<REALpicture>("CloneQLM", source_, int32_t(w), int32_t(h)), nullptr);
    EXPECT_EQ(plugin_.Call<REALpicture>("CloneQLM", nullptr), nullptr);
    EXPECT_EQ(plugin_.Call<REALpicture>("CloneQLM", nullptr, int32_t{3}, int32_t{3}), nullptr);
    ExpectBalanced(nullptr);
}

TEST_P(CopyMethodsTest, BitmapIsTheReceiverWhenItAlreadyIsOne) {
    REALpicture bitmap = plugin_.Call<REALpicture>("BitmapQLM", source_);
    const Storage storage = GetParam().storage;
    if (storage == Storage::GWorld32 || storage == Storage::VectorOnly || storage == Storage::HostBitmap) {
        EXPECT_EQ(bitmap, source_);
        EXPECT_EQ(host_.References(source_), 2);
        host_.Release(bitmap);
        ExpectBalanced(nullptr);
        return;
    }
    ASSERT_NE(bitmap, nullptr);
    EXPECT_NE(bitmap, source_);
    EXPECT_EQ(host_.StorageOf(bitmap), Storage::GWorld32);
    EXPECT_EQ(test_support::ReadImage(host_, bitmap), test_support::ReadImage(host_, source_));
    ExpectBalanced(bitmap);
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
    simhost::SimulatedHost host(config);
    simhost::PluginLibrary plugin(host, simhost::DefaultPluginPath());
    const Storage storage = GetParam().kind == HostKind::Desktop ? Storage::GWorld24 : Storage::HostBitmap;
    REALpicture source = host.MakePicture(storage, 5, 4);
    test_support::FillRandom(host, source, 3);

    REALpicture clone = plugin.Call<REALpicture>("CloneQLM", source);
    EXPECT_EQ(clone != nullptr, GetParam().cloneSucceeds);
    EXPECT_EQ(host.LedgerProblems(clone ? std::vector{clone} : std::vector<REALpicture>{}), std::vector<std::string>{});
    if (clone) host.Release(clone);

    // One call at a time: the ledger must see each result alone.
    for (bool sized : {true, false}) {
        REALpicture result = sized ? plugin.Call<REALpicture>("CloneQLM", source, int32_t{7}, int32_t{2})
                                   : plugin.Call<REALpicture>("BitmapQLM", source);
        EXPECT_EQ(host.LedgerProblems(result ? std::vector{result} : std::vector<REALpicture>{}),
                  std::vector<std::string>{});
        if (result) host.Release(result);
    }
    host.Release(source);
    EXPECT_EQ(host.LedgerProblems(), std::vector<std::string>{});
}

INSTANTIATE_TEST_SUITE_P(Faults, CopyFaultTest, ::testing::ValuesIn(kFaultCases),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace
