// The libFuzzer target: every input is a host and a receiver the input
// describes and one to three method calls on them, made in-process on the
// plug-in's own code after the reset that returns its process-wide state to load
// time, so that start-up and the caches begin empty and a finding reproduces
// from its input alone. Any crash, sanitizer report or hang is a finding, and so
// is, after each call: a result from a nil picture, a picture a method changed
// without being one that works in place (or one that did and reported failure),
// a turned picture carrying a mask, and a method that succeeded on a host
// lacking nothing but whose result differs from the slow models of the tests;
// and, once the results are released, an unbalanced ledger.
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "fuzz/expected_results.h"
#include "fuzz/fuzz_case.h"
#include "platform/macos/macos_system.h"
#include "plugin/process_state.h"
#include "simhost/simulated_host.h"
#include "tests/support/pictures.h"

extern "C" void REALPluginMain(REALResolver resolver);

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

// What the models need to know of a picture the host made for the plug-in.
PictureRecipe RecipeOf(const SimulatedHost& host, REALpicture picture) {
    return PictureRecipe{host.StorageOf(picture), host.Width(picture), host.Height(picture), {}, 0, std::nullopt};
}

// A picture as stored, with its mask: what a call that does not work in place
// must leave as it found it. The stored bytes, copied and compared whole, which
// costs far less than reading the pixels, or than hashing the bytes.
struct StoredState {
    std::vector<uint8_t> picture;
    REALpicture mask = nullptr;
    std::vector<uint8_t> maskPicture;
    friend bool operator==(const StoredState&, const StoredState&) = default;
};

StoredState StoredStateOf(const SimulatedHost& host, REALpicture picture) {
    REALpicture mask = picture != nullptr ? host.MaskOf(picture) : nullptr;
    return {host.StoredBytes(picture), mask, host.StoredBytes(mask)};
}

// One call on `target`; its picture result, if any, for the caller to release.
REALpicture RunCall(SimulatedHost& host, const FuzzCase& fuzzCase, const MethodCall& call, REALpicture target,
                    const Subject& subject) {
    const bool modelled = HasFullEntryPoints(fuzzCase.host);
    const Snapshot before = modelled ? TakeSnapshot(host, target) : Snapshot{};
    const StoredState stored = StoredStateOf(host, target);
    const simhost::RegisteredMethod* registered = host.registration().Find(*call.method);
    if (registered == nullptr) return nullptr;
    const simhost::MethodResult outcome =
        simhost::CallInForm(registered->function, call.method->form, target, call.arguments.Native());
    if (target == nullptr && (outcome.picture != nullptr || outcome.changed)) Finding("a nil picture gave a result");
    if ((!IsInPlace(call.method) || !outcome.changed) && StoredStateOf(host, target) != stored)
        Finding(IsInPlace(call.method) ? "a failed in-place mirror changed the picture" : "the picture changed");
    const bool turned = call.method->form == simhost::MethodForm::AngleAndBackground;
    if (turned && outcome.picture != nullptr && host.MaskOf(outcome.picture) != nullptr)
        Finding("a turned picture carries a mask");
    if (modelled) {
        const std::string difference = CompareWithModels(host, fuzzCase.host, call, subject, before, target, outcome);
        if (!difference.empty()) Finding("result differs from the slow model", {difference});
    }
    return outcome.picture;
}

void Run(const FuzzCase& fuzzCase) {
    SimulatedHost host(fuzzCase.host);
    REALPluginMain(SimulatedHost::Resolver());

    REALpicture receiver = fuzzCase.receiver ? MakePicture(host, *fuzzCase.receiver) : nullptr;
    if (receiver != nullptr && fuzzCase.mask) {
        REALpicture mask = MakePicture(host, *fuzzCase.mask);
        host.SetMask(receiver, mask);
        host.Release(mask);
    }
    const Subject receiverSubject{fuzzCase.receiver.value_or(PictureRecipe{}), fuzzCase.mask};

    std::vector<REALpicture> results;
    for (const MethodCall& call : fuzzCase.calls) {
        REALpicture target = receiver;
        Subject subject = receiverSubject;
        if (call.onPreviousResult && !results.empty() && results.back() != nullptr) {
            target = results.back();
            subject.picture = RecipeOf(host, target);
            subject.mask = std::nullopt;
            if (REALpicture mask = host.MaskOf(target)) subject.mask = RecipeOf(host, mask);
        }
        results.push_back(RunCall(host, fuzzCase, call, target, subject));
    }
    for (REALpicture result : results)
        if (result != nullptr) host.Release(result);

    const std::vector<std::string> problems = UnexpectedProblems(host, fuzzCase);
    if (!problems.empty()) Finding("ledger not balanced", problems);
    if (receiver != nullptr) host.Release(receiver);

    if (fuzzCase.loops)
        if (std::string difference = CompareLoopsWithDefinitions(*fuzzCase.loops); !difference.empty())
            Finding(difference);
    if (fuzzCase.records)
        if (std::string problem = ReshapeRecords(*fuzzCase.records); !problem.empty()) Finding(problem);
}

}  // namespace
}  // namespace pixturn_fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    // Before the input, so that it meets the plug-in as loaded; and after it, so
    // that what start-up allocated is given back within the input, as libFuzzer's
    // leak check counts it (and so is the simulated system's configuration).
    ResetProcessState();
    pixturn_fuzz::FuzzCase fuzzCase = pixturn_fuzz::DecodeFuzzCase(data, size);
    // Every call of an input is made on this thread, so the host need not lock
    // against others, though libFuzzer keeps a thread of its own.
    fuzzCase.host.oneThread = true;
    pixturn_fuzz::Run(fuzzCase);
    ResetProcessState();
    macos_system::Configure({});
    return 0;
}
