// The libFuzzer target: every input is one call of one of the fifteen methods,
// on a host and a receiver the input describes, in a fresh instance of the
// shipped library (so start-up and the process-wide caches begin empty). Any
// crash, sanitizer report or hang is a finding, and so is, after the call:
// an unbalanced ledger once the returned picture is released, a result from a
// nil receiver, a receiver that a method changed without being one that works
// in place (or one that did and reported failure), a turned picture carrying a
// mask, and a method that succeeded on a host lacking nothing but whose result
// differs from the slow models of the tests.
#include <array>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "fuzz/expected_results.h"
#include "fuzz/fuzz_case.h"
#include "simhost/simulated_host.h"
#include "tests/support/pictures.h"

namespace pixturn_fuzz {
namespace {

using simhost::SimulatedHost;
using test_support::Image;

[[noreturn]] void Finding(const std::string& what, const std::vector<std::string>& details = {}) {
    std::fprintf(stderr, "FINDING: %s\n", what.c_str());
    for (const std::string& detail : details) std::fprintf(stderr, "  %s\n", detail.c_str());
    std::abort();
}

REALpicture MakePicture(SimulatedHost& host, const PictureRecipe& recipe) {
    REALpicture picture = host.MakePicture(recipe.storage, recipe.width, recipe.height);
    if (picture == nullptr) return nullptr;
    if (recipe.pixels.empty()) test_support::FillRandom(host, picture, recipe.seed);
    else test_support::WriteImage(host, picture, Image{recipe.width, recipe.height, recipe.pixels});
    if (recipe.defect) host.MalformRecord(picture, *recipe.defect);
    return picture;
}

// Whether a host that lacks an entry point (from the start, or for its first
// look-ups) or a QuickDraw function brought a ledger problem on itself: the
// plug-in skips a release or an unlock it can't find, and answers a description
// lock it couldn't make with an unlock all the same where the host's version
// says so (a host that gives none counts as an old one) or where the lock was
// the two-argument one, whose result is never tested.
bool BroughtOnByTheHost(const std::string& problem, const simhost::HostConfig& host) {
    const auto lacks = [&](const char* name) {
        return host.missingEntryPoints.contains(name) || host.entryPointsFromLookup.contains(name);
    };
    const auto says = [&](const char* text) { return problem.find(text) != std::string::npos; };
    return ((lacks("REALLockObject") || lacks("REALUnlockObject")) && says(" references where ")) ||
           (lacks("unlockPictureDescription") && says("description locked")) ||
           ((lacks("REALGetRBVersion") || lacks("lockPictureDescription") || lacks("REALLockPictureDescription")) &&
            says("whose description is not locked")) ||
           (host.system.missingFunctions.contains("UnlockPixels") && says("pixels locked"));
}

// The ledger's problems, less those the host brought on itself.
std::vector<std::string> UnexpectedProblems(const SimulatedHost& host, const FuzzCase& fuzzCase) {
    std::vector<std::string> problems = host.LedgerProblems();
    std::erase_if(problems, [&](const std::string& problem) { return BroughtOnByTheHost(problem, fuzzCase.host); });
    return problems;
}

Outcome Call(REALproc function, REALpicture receiver, const FuzzCase& fuzzCase) {
    using PictureMethod = REALpicture (*)(REALpicture);
    using FlagMethod = bool (*)(REALpicture);
    Outcome outcome;
    switch (fuzzCase.method) {
    case Method::Rotate:
        outcome.picture = reinterpret_cast<REALpicture (*)(REALpicture, double, uint32_t)>(function)(
            receiver, fuzzCase.angle, fuzzCase.background);
        break;
    case Method::RotateImageAndMask:
        outcome.picture = reinterpret_cast<REALpicture (*)(REALpicture, double, signed char)>(function)(
            receiver, fuzzCase.angle, fuzzCase.cut);
        break;
    case Method::RotateMemory:
        outcome.bytes = reinterpret_cast<int64_t (*)(REALpicture, double)>(function)(receiver, fuzzCase.angle);
        break;
    case Method::CloneToSize:
        outcome.picture = reinterpret_cast<REALpicture (*)(REALpicture, int32_t, int32_t)>(function)(
            receiver, fuzzCase.width, fuzzCase.height);
        break;
    case Method::MirrorInPlace:
    case Method::VMirrorInPlace:
    case Method::HMirrorInPlace:
        outcome.flag = reinterpret_cast<FlagMethod>(function)(receiver);
        break;
    default:
        outcome.picture = reinterpret_cast<PictureMethod>(function)(receiver);
        break;
    }
    return outcome;
}

void Run(const FuzzCase& fuzzCase) {
    SimulatedHost host(fuzzCase.host);
    simhost::PluginLibrary library(host, simhost::DefaultPluginPath());

    REALpicture receiver = fuzzCase.receiver ? MakePicture(host, *fuzzCase.receiver) : nullptr;
    if (receiver != nullptr && fuzzCase.mask) {
        REALpicture mask = MakePicture(host, *fuzzCase.mask);
        if (mask != nullptr) {
            host.SetMask(receiver, mask);
            host.Release(mask);
        }
    }
    const Snapshot before = TakeSnapshot(host, receiver);

    // Method lists the methods in the order of the table.
    const simhost::PictureMethod& method = *simhost::kPictureMethods[static_cast<size_t>(fuzzCase.method)];
    if (const simhost::RegisteredMethod* registered = library.Find(method)) {
        const Outcome outcome = Call(registered->function, receiver, fuzzCase);
        if (receiver == nullptr && (outcome.picture != nullptr || outcome.flag))
            Finding("a nil receiver gave a result");
        if ((!IsInPlace(fuzzCase.method) || !outcome.flag) && TakeSnapshot(host, receiver) != before)
            Finding(IsInPlace(fuzzCase.method) ? "a failed in-place mirror changed the receiver"
                                               : "the receiver changed");
        if (fuzzCase.method == Method::Rotate && outcome.picture != nullptr && host.MaskOf(outcome.picture) != nullptr)
            Finding("a turned picture carries a mask");
        if (HasFullEntryPoints(fuzzCase.host)) {
            const std::string difference = CompareWithModels(host, fuzzCase, before, receiver, outcome);
            if (!difference.empty()) Finding("result differs from the slow model", {difference});
        }
        if (outcome.picture != nullptr) host.Release(outcome.picture);
    }

    const std::vector<std::string> problems = UnexpectedProblems(host, fuzzCase);
    if (!problems.empty()) Finding("ledger not balanced", problems);
    if (receiver != nullptr) host.Release(receiver);
}

}  // namespace
}  // namespace pixturn_fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    pixturn_fuzz::Run(pixturn_fuzz::DecodeFuzzCase(data, size));
    return 0;
}
