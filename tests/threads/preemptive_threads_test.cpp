// The methods called from many threads at once, as a Xojo program's preemptive
// threads call them. Built only with ThreadSanitizer, which fails the test at the
// first data race; in any other build the test fails, races there going unseen,
// except against a library no sanitizer can see into (the Mac libraries, loaded
// by the simulated host's own loader), where its results and ledger still count.
#include <gtest/gtest.h>

#include <algorithm>
#include <latch>
#include <map>
#include <numeric>
#include <random>
#include <thread>
#include <tuple>

#include "tests/harness/plugin_bench.h"

namespace {

using simhost::HostKind;
using simhost::MethodForm;
using simhost::Storage;
using Call = std::pair<const simhost::PictureMethod*, Storage>;
// Bit for bit: the picture's size and stored bytes (the receiver's for the in-place
// mirrors), the turned mask's bytes, the estimate, the in-place answer.
using Outcome = std::tuple<int32_t, int32_t, size_t, size_t, int64_t, bool>;

class PreemptiveThreads : public ::testing::TestWithParam<HostKind> {
protected:
    // One call, on a receiver of its own (the same pixels each time) or a shared one.
    Outcome Perform(const Call& call, bool share) {
        simhost::SimulatedHost& host = bench.host;
        REALpicture receiver = share ? shared.at(call.second) : bench.RandomPicture(call.second, 23, 17, 7);
        const simhost::MethodResult result = bench.plugin.Call(*call.first, receiver, test_support::Arguments{}.Native());
        REALpicture picture = call.first->form == MethodForm::InPlace ? receiver : result.picture;
        REALpicture mask = call.first == &simhost::methods::kRotateImageAndMask ? host.MaskOf(picture) : nullptr;
        const Outcome outcome{host.Width(picture),        host.Height(picture), host.StoredBytesHash(picture),
                              host.StoredBytesHash(mask), result.bytes,         result.changed};
        if (result.picture != nullptr) host.Release(result.picture);
        if (!share) host.Release(receiver);
        return outcome;
    }

    // Eight threads, released together, make every call on every storage (only those
    // that make a new picture, on shared receivers) `rounds` times, each in orders of
    // its own; every outcome must be what one thread then gets.
    void ExpectWhatOneThreadGives(bool share, int rounds) {
        std::vector<Call> calls;
        for (const auto& [storage, unused] : shared)
            for (const simhost::PictureMethod* method : simhost::kPictureMethods)
                if (!share || (method->form != MethodForm::InPlace && method->form != MethodForm::MemoryEstimate))
                    calls.emplace_back(method, storage);
        std::latch start(8);
        std::vector<std::vector<std::pair<size_t, Outcome>>> seen(8);
        std::vector<std::thread> threads;
        for (size_t t = 0; t < seen.size(); ++t)
            threads.emplace_back([&, t] {
                std::vector<size_t> order(calls.size());
                std::iota(order.begin(), order.end(), 0);
                std::mt19937 random(t);
                start.arrive_and_wait();
                for (int round = 0; round < rounds; ++round) {
                    std::shuffle(order.begin(), order.end(), random);
                    for (size_t i : order) seen[t].emplace_back(i, Perform(calls[i], share));
                }
            });
        for (std::thread& thread : threads) thread.join();
        std::vector<Outcome> expected;
        for (const Call& call : calls) expected.push_back(Perform(call, share));
        for (const auto& thread : seen)
            for (const auto& [i, outcome] : thread)
                ASSERT_EQ(outcome, expected[i]) << calls[i].first->declaration << ", storage " << int(calls[i].second);
    }

    test_support::PluginBench bench{GetParam()};
    std::map<Storage, REALpicture> shared{{Storage::GWorld32, nullptr}, {Storage::GWorld24, nullptr},
        {Storage::GWorld16, nullptr}, {Storage::VectorOnly, nullptr}, {Storage::HostBitmap, nullptr}};
};

// A fresh instance of the plug-in: the threads' first calls race to look the entry
// points up, load the framework and its functions, and decide the host kind.
TEST_P(PreemptiveThreads, EveryMethodGivesWhatOneThreadGivesAndNothingStaysHeld) {
#if !defined(__SANITIZE_THREAD__) && !defined(PIXTURN_PLUGIN_UNINSTRUMENTED)
    FAIL() << "only a ThreadSanitizer build sees data races";
#endif
    ExpectWhatOneThreadGives(false, 20);
    for (auto& [storage, picture] : shared) picture = bench.RandomPicture(storage, 31, 19, 11);
    ExpectWhatOneThreadGives(true, 4);
    for (const auto& [storage, picture] : shared) bench.host.Release(picture);
    bench.ExpectBalancedAndRelease({});
}

INSTANTIATE_TEST_SUITE_P(Hosts, PreemptiveThreads, ::testing::Values(HostKind::Desktop, HostKind::Console),
                         [](const auto& info) { return info.param == HostKind::Desktop ? "Desktop" : "Console"; });

}  // namespace
