// The look-up-and-cache rule every host call goes through, on an entry point of
// the test's own: a failed look-up is asked again at the next call, a successful
// one never, and nothing is called while the host has no answer.
#include <gtest/gtest.h>

#include <string>

#include "plugin/host_entry_points.h"

namespace {

int gLookups = 0;
int gAnswersFromLookup = 0;  // 0: never
int gTargetCalls = 0;

int32_t Twice(int32_t value) {
    ++gTargetCalls;
    return 2 * value;
}

void* TestResolver(const char* name) {
    ++gLookups;
    const bool answers = gAnswersFromLookup != 0 && gLookups >= gAnswersFromLookup;
    return answers && std::string(name) == "Twice" ? reinterpret_cast<void*>(&Twice) : nullptr;
}

struct CacheCase {
    const char* name;
    int answersFromLookup;
    int32_t results[3];  // of three calls with 21
    int lookups;         // after the three calls
};

class EntryPointCacheTest : public ::testing::TestWithParam<CacheCase> {};

TEST_P(EntryPointCacheTest, AsksUntilTheHostAnswersThenNeverAgain) {
    gResolver = TestResolver;
    gLookups = gTargetCalls = 0;
    gAnswersFromLookup = GetParam().answersFromLookup;
    std::atomic<void*> slot = nullptr;
    const HostEntryPoint<int32_t(int32_t)> twice{"Twice", &slot};
    int expectedTargetCalls = 0;
    for (int32_t expected : GetParam().results) {
        EXPECT_EQ(twice(21), expected);
        expectedTargetCalls += expected != 0;
    }
    EXPECT_EQ(gLookups, GetParam().lookups);
    EXPECT_EQ(gTargetCalls, expectedTargetCalls);
}

INSTANTIATE_TEST_SUITE_P(Resolvers, EntryPointCacheTest,
                         ::testing::Values(CacheCase{"NeverKnown", 0, {0, 0, 0}, 3},
                                           CacheCase{"LearnedLater", 2, {0, 42, 42}, 2},
                                           CacheCase{"KnownFromTheStart", 1, {42, 42, 42}, 1}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(EntryPointCache, NoResolverAnswersZero) {
    gResolver = nullptr;
    std::atomic<void*> slot = nullptr;
    const HostEntryPoint<int32_t(int32_t)> twice{"Twice", &slot};
    EXPECT_EQ(twice(21), 0);
    EXPECT_FALSE(twice.IsAvailable());
}

}  // namespace
