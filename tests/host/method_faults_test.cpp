// Every method on hosts that fail it somewhere: entry points missing, new
// pictures refused (or out of memory) or of a storage the plug-in cannot write, description locks
// failing, no graphics or DrawPicture, no legacy framework. Each answers nil,
// false or the slow model's result exactly as the table says, and nothing it
// took stays held.
#include <gtest/gtest.h>

#include <string>

#include "tests/harness/plugin_bench.h"

using simhost::HostConfig;
using simhost::HostKind;
using simhost::MethodForm;
using simhost::Storage;
using test_support::Image;

namespace {

struct FaultCase {
    const char* name;
    HostKind kind;
    double angle;  // 30 makes three new pictures, 60 four (the quarter turn first)
    // Per method, in the table's order (the rotation and its mask; the three
    // turns; the estimate; three mirrors; three in place; the two clones and the
    // bitmap): '+' the model's result, '-' nil or false, '~' a picture whose
    // pixels were not drawn as the source (or an estimate). Blanks group.
    const char* outcomes;
    void (*configure)(HostConfig&);
    const char* missingFunction = nullptr;  // of the legacy framework
};

void Unchanged(HostConfig&) {}

template <int Call>
void NewPictureFailsFrom(HostConfig& config) {
    config.newPictureFailsFromCall = Call;
}

const FaultCase kFaults[] = {
    {"NoNewPicture", HostKind::Desktop, 30, "-- --- ~ --- +++ ---",
     [](auto& c) { c.missingEntryPoints = {"newPicture"}; }},
    {"NoMemoryForPixels", HostKind::Desktop, 30, "-- --- ~ --- +++ ---",
     [](auto& c) { c.largestPixelAllocation = 0; }},
    {"FirstNewPictureFails", HostKind::Console, 30, "-- --- ~ --- +++ --+", NewPictureFailsFrom<1>},
    {"SecondNewPictureFails", HostKind::Console, 30, "-- --- ~ --- +++ --+", NewPictureFailsFrom<2>},
    {"ThirdNewPictureFails", HostKind::Desktop, 30, "-- --- ~ --- +++ ---", NewPictureFailsFrom<3>},
    {"FourthNewPictureFails", HostKind::Console, 60, "-- --- ~ --- +++ --+", NewPictureFailsFrom<4>},
    {"FourthNewPictureFailsAfterThree", HostKind::Console, 30, "+- --- ~ --- +++ --+", NewPictureFailsFrom<4>},
    {"NewPicturesOf24Bits", HostKind::Desktop, 60, "++ +++ ~ +++ +++ +++",
     [](auto& c) { c.newPictureStorage = Storage::GWorld24; }},
    {"NewPicturesOf16Bits", HostKind::Desktop, 30, "-- --- ~ --- +++ +++",
     [](auto& c) { c.newPictureStorage = Storage::GWorld16; }},
    {"NoGraphics", HostKind::Desktop, 30, "++ +++ ~ +++ +++ ~~~", [](auto& c) { c.graphicsUnavailable = true; }},
    {"NoDrawPictureOnDesktop", HostKind::Desktop, 30, "++ +++ ~ +++ +++ ~~~",
     [](auto& c) { c.drawPictureUnavailable = true; }},
    {"NoDrawPictureOnConsole", HostKind::Console, 30, "++ +++ ~ +++ +++ +~+",
     [](auto& c) { c.drawPictureUnavailable = true; }},
    {"NoPropertyReads", HostKind::Desktop, 30, "++ +++ ~ +++ +++ -++",
     [](auto& c) { c.missingEntryPoints = {"REALGetPropValueInt"}; }},
    {"NoLockObject", HostKind::Desktop, 60, "-- --- ~ --- --- +++",
     [](auto& c) { c.missingEntryPoints = {"REALLockObject"}; }},
    {"NoClearCache", HostKind::Desktop, 60, "++ +++ ~ +++ +++ +++",
     [](auto& c) { c.missingEntryPoints = {"REALPictureClearCache"}; }},
    {"DescriptionLocksFail", HostKind::Console, 30, "-- --- ~ --- --- +++",
     [](auto& c) { c.version = 2012.0; c.failingDescriptionTypes = {10}; }},
    {"DescriptionLocksFailOldHost", HostKind::Web, 30, "-- --- ~ --- --- ~~+",
     [](auto& c) {
         c.version = 2011.99;
         c.failingDescriptionTypes = {10};
         c.drawPictureUnavailable = true;
     }},
    {"NoFramework", HostKind::Desktop, 30, "-- --- ~ --- --- +++",
     [](auto& c) { c.system.applicationServicesInstalled = false; }},
    {"ConsoleWithoutFramework", HostKind::Console, 30, "++ +++ ~ +++ +++ +++",
     [](auto& c) { c.system.applicationServicesInstalled = false; }},
    {"NoSetGWorld", HostKind::Desktop, 60, "++ +++ ~ +++ +++ +++", Unchanged, "SetGWorld"},
    {"NoGetPortPixMap", HostKind::Desktop, 30, "++ +++ ~ +++ +++ +++", Unchanged, "GetPortPixMap"},
    {"NoGetGWorldPixMap", HostKind::Desktop, 30, "-- --- ~ --- --- +++", Unchanged, "GetGWorldPixMap"},
    {"NoGetPixDepth", HostKind::Desktop, 30, "-- --- ~ --- --- +++", Unchanged, "GetPixDepth"},
    {"NoLockPixels", HostKind::Desktop, 30, "-- --- ~ --- --- +++", Unchanged, "LockPixels"},
    {"NoGetPixBaseAddr", HostKind::Desktop, 30, "-- --- ~ --- --- +++", Unchanged, "GetPixBaseAddr"},
    // Every row of a world is then read as the first.
    {"NoGetPixRowBytes", HostKind::Desktop, 30, "~~ ~~~ ~ ~~~ ~-~ +++", Unchanged, "GetPixRowBytes"},
    {"NoHostKindAnswer", HostKind::Undecided, 60, "++ +++ ~ +++ +++ +++", Unchanged},
};

class MethodFaultTest : public ::testing::TestWithParam<FaultCase> {};

TEST_P(MethodFaultTest, EveryMethodAnswersAsTheTableSaysAndHoldsNothing) {
    const FaultCase& fault = GetParam();
    HostConfig config{.kind = fault.kind};
    fault.configure(config);
    if (fault.missingFunction != nullptr) config.system.missingFunctions = {fault.missingFunction};
    test_support::PluginBench bench(config);
    const test_support::Arguments arguments{.angle = fault.angle};
    REALpicture receiver =
        bench.RandomPicture(fault.kind == HostKind::Desktop ? Storage::GWorld24 : Storage::HostBitmap, 5, 4, 3);
    std::string outcomes;
    for (const simhost::PictureMethod* method : simhost::kPictureMethods) {
        SCOPED_TRACE(method->name);
        const Image before = test_support::ReadImage(bench.host, receiver);
        if (method->form == MethodForm::MemoryEstimate) {
            outcomes += '~';
            bench.plugin.Call(*method, receiver, {.angle = fault.angle});
            bench.ExpectBalancedAndRelease({});
            continue;
        }
        REALpicture result = bench.Apply(*method, receiver, arguments);
        const Image after = test_support::ReadImage(bench.host, result != nullptr ? result : receiver);
        outcomes += result == nullptr ? '-' : after == bench.Expected(*method, before, arguments) ? '+' : '~';
        if (result != receiver) {
            EXPECT_EQ(test_support::ReadImage(bench.host, receiver), before) << "the receiver is left alone";
        } else if (method->form != MethodForm::InPlace) {
            bench.host.Release(result);  // the bitmap handed back as it was
        }
        bench.ExpectBalancedAndRelease({result}, receiver);
    }
    std::string expected = fault.outcomes;
    std::erase(expected, ' ');
    EXPECT_EQ(outcomes, expected);
    bench.host.Release(receiver);
    bench.ExpectBalancedAndRelease({});
}

INSTANTIATE_TEST_SUITE_P(Faults, MethodFaultTest, ::testing::ValuesIn(kFaults), test_support::CaseName());

}  // namespace
