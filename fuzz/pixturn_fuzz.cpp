// The libFuzzer target: every input is one call of one of the fifteen methods,
// on a host and a receiver the input describes, in a fresh instance of the
// shipped library (so start-up and the process-wide caches begin empty). Any
// crash, sanitizer report or hang is a finding, and so is, after the call:
// an unbalanced ledger once the returned picture is released, a receiver that a
// method changed without being one that works in place, and a method that
// succeeded on a host lacking nothing but whose result differs from the slow
// models of the tests.
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

REALpicture MakePicture(SimulatedHost& host, const PictureSpec& spec) {
    REALpicture picture = host.MakePicture(spec.storage, spec.width, spec.height);
    if (picture == nullptr) return nullptr;
    if (spec.pixels.empty()) test_support::FillRandom(host, picture, spec.seed);
    else test_support::WriteImage(host, picture, Image{spec.width, spec.height, spec.pixels});
    return picture;
}

// The method table as the host got it; empty when start-up registered nothing.
std::vector<REALproc> RegisteredFunctions(const SimulatedHost& host) {
    std::vector<REALproc> functions;
    for (const simhost::RegisteredMethod& method : host.registration().methods)
        functions.push_back(method.function);
    return functions;
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

    const std::vector<REALproc> functions = RegisteredFunctions(host);
    const size_t index = static_cast<size_t>(fuzzCase.method);
    if (index < functions.size() && functions[index] != nullptr) {
        const Outcome outcome = Call(functions[index], receiver, fuzzCase);
        if (!IsInPlace(fuzzCase.method) && TakeSnapshot(host, receiver) != before)
            Finding("the receiver changed");
        if (HasFullEntryPoints(fuzzCase.host) && functions.size() == kMethodCount) {
            const std::string difference = CompareWithModels(host, fuzzCase, before, receiver, outcome);
            if (!difference.empty()) Finding("result differs from the slow model", {difference});
        }
        if (outcome.picture != nullptr) host.Release(outcome.picture);
    }

    const std::vector<std::string> problems = host.LedgerProblems();
    if (!problems.empty()) Finding("ledger not balanced", problems);
    if (receiver != nullptr) host.Release(receiver);
}

}  // namespace
}  // namespace pixturn_fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    pixturn_fuzz::Run(pixturn_fuzz::DecodeFuzzCase(data, size));
    return 0;
}
