// "RotateMemoryQLM" through the shipped library's method table: the worked sizes,
// a nil receiver, angles no rotation turns by, and whole turns however many.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <utility>

#include "tests/harness/plugin_bench.h"

namespace {

class RotateMemoryTest : public ::testing::Test, protected test_support::PluginBench {
protected:
    RotateMemoryTest() : PluginBench(simhost::HostKind::Desktop) {
        picture_ = host.MakePicture(simhost::Storage::GWorld32, 100, 50);
    }
    ~RotateMemoryTest() override {
        host.Release(picture_);
        EXPECT_EQ(host.LedgerProblems(), std::vector<std::string>{});
    }
    int64_t Estimate(REALpicture picture, double angle) const {
        return plugin.Call(simhost::methods::kRotateMemory, picture, {.angle = angle}).bytes;
    }

    REALpicture picture_ = nullptr;
};

TEST_F(RotateMemoryTest, WorkedSizesOf100By50) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    const std::pair<double, int64_t> cases[] = {
        {0, 20000},      {90, 20000},     {-90, 20000},    {180, 20000},   {30, 153048},
        {60, 164252},    {45, 199044},    {1e-10, 61408},  {-1e-20, 61408}, {390, 153048},  {-330, 153048},
        // Three quarter turns exchange the sides too: 20000 for the turn, then 50 x 100 at 30 degrees.
        {300, 20000 + 144252},
        // Whole turns that count as whole exactly, however many.
        {360.0 * 0x1p40 + 30, 153048},   {-360.0 * 0x1p40 + 30, 153048},  {360.0 * 0x1p1000, 20000},
        // No rotation turns by these.
        {std::nan(""), 0}, {kInfinity, 0}, {-kInfinity, 0},
    };
    for (const auto& [angle, bytes] : cases) EXPECT_EQ(Estimate(picture_, angle), bytes) << angle;
}

TEST_F(RotateMemoryTest, NilReceiverCountsAsNoPixels) {
    const std::pair<double, int64_t> cases[] = {{0, 0}, {90, 0}, {180, 0}, {270, 0}, {30, 4}, {1e-10, 8}};
    for (const auto& [angle, bytes] : cases) EXPECT_EQ(Estimate(nullptr, angle), bytes) << angle;
}

}  // namespace
