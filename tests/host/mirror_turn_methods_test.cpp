// The six mirrors and three right-angle turns through the shipped library's method
// table, against slow models written as plain coordinate maps, on every host kind
// and storage; sizes at the limits, a nil receiver and injected faults.
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "simhost/simulated_host.h"
#include "tests/harness/plugin_bench.h"
#include "tests/support/pictures.h"

using simhost::HostKind;
using simhost::Storage;
using test_support::Image;

namespace {

using test_support::Rearrangement;

struct MethodCase {
    const simhost::PictureMethod& method;
    bool inPlace;
    Rearrangement rearrangement;
    const char* undoneBy;
};

const MethodCase kMethods[] = {
    {simhost::methods::kMirror, false, Rearrangement::BothWays, "MirrorQLM"},
    {simhost::methods::kHMirror, false, Rearrangement::LeftRight, "HMirrorQLM"},
    {simhost::methods::kVMirror, false, Rearrangement::TopBottom, "VMirrorQLM"},
    {simhost::methods::kRotate180, false, Rearrangement::BothWays, "Rotate180QLM"},
    {simhost::methods::kRotate90, false, Rearrangement::QuarterAnticlockwise, "Rotate270QLM"},
    {simhost::methods::kRotate270, false, Rearrangement::QuarterClockwise, "Rotate90QLM"},
    {simhost::methods::kMirrorInPlace, true, Rearrangement::BothWays, "MirrorPictureQLM"},
    {simhost::methods::kHMirrorInPlace, true, Rearrangement::LeftRight, "HMirrorPictureQLM"},
    {simhost::methods::kVMirrorInPlace, true, Rearrangement::TopBottom, "VMirrorPictureQLM"},
};

const MethodCase& MethodNamed(const std::string& name) {
    for (const MethodCase& method : kMethods)
        if (name == method.method.name) return method;
    throw std::invalid_argument(name);
}

Image Model(const Image& from, const MethodCase& method) {
    return test_support::Rearranged(from, method.rearrangement);
}

// The new picture (one reference, the caller's), or the receiver itself when an
// in-place method answered true; nil on failure.
REALpicture Apply(const simhost::PluginLibrary& plugin, const MethodCase& method, REALpicture receiver) {
    if (!method.inPlace) return plugin.Call<REALpicture>(method.method, receiver);
    return plugin.Call<bool>(method.method, receiver) ? receiver : nullptr;
}

struct HostCase {
    HostKind kind;
    Storage storage;
    const char* name;
};

const HostCase kHosts[] = {
    {HostKind::Desktop, Storage::GWorld32, "Desktop32"}, {HostKind::Desktop, Storage::GWorld24, "Desktop24"},
    {HostKind::Desktop, Storage::GWorld16, "Desktop16"}, {HostKind::Console, Storage::HostBitmap, "Console"},
    {HostKind::Web, Storage::HostBitmap, "Web"},
};

class MirrorTurnTest : public ::testing::TestWithParam<std::tuple<HostCase, MethodCase>>,
                       protected test_support::PluginBench {
protected:
    MirrorTurnTest() : PluginBench(Host().kind) {}
    static const HostCase& Host() { return std::get<0>(GetParam()); }
    static const MethodCase& Method() { return std::get<1>(GetParam()); }
    // A 16-bit world can be read through a copy but not written in place.
    static bool Succeeds() { return !(Method().inPlace && Host().storage == Storage::GWorld16); }

    // Runs the method on a random picture with a mask. A result must be the model
    // of the receiver, have no mask of its own, and be undone by the inverse method;
    // the receiver (unless changed in place) and its mask stay as they were.
    void ExpectModelled(int32_t width, int32_t height, bool succeeds) {
        SCOPED_TRACE(::testing::Message() << width << " x " << height);
        REALpicture receiver = RandomPicture(Host().storage, width, height, uint32_t(width * 7919 + height));
        REALpicture mask = RandomPicture(Host().storage, width, height, 5);
        host.SetMask(receiver, mask);
        host.Release(mask);
        const Image before = test_support::ReadImage(host, receiver);
        const Image maskBefore = test_support::ReadImage(host, mask);

        std::vector<REALpicture> made;
        REALpicture result = Apply(plugin, Method(), receiver);
        EXPECT_EQ(result != nullptr, succeeds);
        if (result != nullptr) {
            EXPECT_EQ(test_support::ReadImage(host, result), Model(before, Method()));
            REALpicture restored = Apply(plugin, MethodNamed(Method().undoneBy), result);
            ASSERT_NE(restored, nullptr);
            EXPECT_EQ(test_support::ReadImage(host, restored), before);
            for (REALpicture picture : {result, restored})
                if (picture != receiver) {
                    made.push_back(picture);
                    EXPECT_EQ(host.MaskOf(picture), nullptr);
                }
        }
        EXPECT_EQ(test_support::ReadImage(host, receiver), before);
        EXPECT_EQ(host.MaskOf(receiver), mask);
        EXPECT_EQ(test_support::ReadImage(host, mask), maskBefore);
        ExpectBalancedAndRelease(made);
        host.Release(receiver);
    }
};

TEST_P(MirrorTurnTest, EveryPixelGoesWhereTheModelSays) {
    for (auto [w, h] : {std::pair{1, 1}, {1, 7}, {9, 1}, {5, 3}, {4, 6}, {37, 70}}) ExpectModelled(w, h, Succeeds());
    EXPECT_EQ(Apply(plugin, Method(), nullptr), nullptr);
}

TEST_P(MirrorTurnTest, NewPicturesHaveSidesUpTo32767AndInPlaceMirrorsNoLimit) {
    for (auto [w, h] : {std::pair{32767, 1}, {1, 32767}}) ExpectModelled(w, h, Succeeds());
    for (auto [w, h] : {std::pair{32768, 1}, {1, 32768}}) ExpectModelled(w, h, Method().inPlace && Succeeds());
}

INSTANTIATE_TEST_SUITE_P(HostsAndMethods, MirrorTurnTest,
                         ::testing::Combine(::testing::ValuesIn(kHosts), ::testing::ValuesIn(kMethods)),
                         [](const auto& info) {
                             return std::string(std::get<0>(info.param).name) + "_" + std::get<1>(info.param).method.name;
                         });

TEST(MirrorTurnExamples, ThreeByTwoTurnsAndMirrorEqualsHalfTurn) {
    test_support::PluginBench bench(HostKind::Desktop);
    simhost::SimulatedHost& host = bench.host;
    const simhost::Rgba a{1, 2, 3, 255}, b{4, 5, 6, 255}, c{7, 8, 9, 255}, d{10, 11, 12, 255}, e{13, 14, 15, 255},
        f{16, 17, 18, 255};
    REALpicture picture = host.MakePicture(Storage::GWorld32, 3, 2);
    test_support::WriteImage(host, picture, {3, 2, {a, b, c, d, e, f}});
    const std::pair<const simhost::PictureMethod&, Image> expected[] = {
        {simhost::methods::kRotate90, {2, 3, {c, f, b, e, a, d}}},
        {simhost::methods::kRotate180, {3, 2, {f, e, d, c, b, a}}},
        {simhost::methods::kMirror, {3, 2, {f, e, d, c, b, a}}},
        {simhost::methods::kRotate270, {2, 3, {d, a, e, b, f, c}}},
    };
    for (const auto& [method, image] : expected) {
        REALpicture turned = bench.plugin.Call<REALpicture>(method, picture);
        ASSERT_NE(turned, nullptr) << method.name;
        EXPECT_EQ(test_support::ReadImage(host, turned), image) << method.name;
        bench.ExpectBalancedAndRelease({turned});
    }
    host.Release(picture);
}

// Faults: whatever fails, every method answers failure or the right pixels, and
// nothing it took stays held.
struct FaultCase {
    const char* name;
    HostKind kind;
    void (*configure)(simhost::HostConfig&);
    bool newPictures;
    bool inPlace;
};

const FaultCase kFaults[] = {
    {"NoNewPicture", HostKind::Desktop, [](auto& c) { c.missingEntryPoints = {"newPicture"}; }, false, true},
    {"NewPictureFails", HostKind::Console, [](auto& c) { c.newPictureFailsFromCall = 1; }, false, true},
    {"NewPicturesUnwritable", HostKind::Desktop, [](auto& c) { c.newPictureStorage = Storage::GWorld16; }, false, true},
    {"DescriptionLockFails", HostKind::Console, [](auto& c) { c.failingDescriptionTypes = {10}; }, false, false},
    {"DescriptionLockFailsOldHost", HostKind::Web,
     [](auto& c) {
         c.version = 2011.0;
         c.failingDescriptionTypes = {10};
     },
     false, false},
    {"NoApplicationServices", HostKind::Desktop,
     [](auto& c) { c.system.applicationServicesInstalled = false; }, false, false},
    {"NoSetGWorld", HostKind::Desktop, [](auto& c) { c.system.missingFunctions = {"SetGWorld"}; }, true, true},
};

class MirrorTurnFaultTest : public ::testing::TestWithParam<FaultCase> {};

TEST_P(MirrorTurnFaultTest, EveryMethodFailsCleanlyOrIsRight) {
    simhost::HostConfig config = test_support::ConfigFor(GetParam().kind);
    GetParam().configure(config);
    test_support::PluginBench bench(config);
    simhost::SimulatedHost& host = bench.host;
    const Storage storage = GetParam().kind == HostKind::Desktop ? Storage::GWorld32 : Storage::HostBitmap;
    REALpicture receiver = bench.RandomPicture(storage, 5, 4, 4);
    for (const MethodCase& method : kMethods) {
        SCOPED_TRACE(method.method.name);
        const Image before = test_support::ReadImage(host, receiver);
        REALpicture result = Apply(bench.plugin, method, receiver);
        EXPECT_EQ(result != nullptr, method.inPlace ? GetParam().inPlace : GetParam().newPictures);
        EXPECT_EQ(test_support::ReadImage(host, result ? result : receiver), result ? Model(before, method) : before);
        bench.ExpectBalancedAndRelease({method.inPlace ? nullptr : result});
    }
    host.Release(receiver);
    bench.ExpectBalancedAndRelease({});
}

INSTANTIATE_TEST_SUITE_P(Faults, MirrorTurnFaultTest, ::testing::ValuesIn(kFaults),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace
