// "RotateMemoryQLM" through the shipped library's method table: the worked sizes,
// a nil receiver, angles no rotation turns by, and angles far too big to count
// down by whole turns.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <utility>

#include "simhost/simulated_host.h"

namespace {

class RotateMemoryTest : public ::testing::Test {
protected:
    RotateMemoryTest() : plugin_(host_, simhost::DefaultPluginPath()) {
        picture_ = host_.MakePicture(simhost::Storage::GWorld32, 100, 50);
    }
    ~RotateMemoryTest() override {
        host_.Release(picture_);
        EXPECT_EQ(host_.LedgerProblems(), std::vector<std::string>{});
    }
    int64_t Estimate(REALpicture picture, double angle) const {
        return plugin_.Call<int64_t>(simhost::methods::kRotateMemory, picture, angle);
    }

    simhost::SimulatedHost host_;
    simhost::PluginLibrary plugin_;
    REALpicture picture_ = nullptr;
};

TEST_F(RotateMemoryTest, WorkedSizesOf100By50) {
    const std::pair<double, int64_t> cases[] = {
        {0, 20000},      {90, 20000},     {-90, 20000},    {180, 20000},   {30, 153048},
        {60, 164252},    {45, 199044},    {1e-10, 61408},  {390, 153048},  {-330, 153048},
        // Whole turns that count as whole exactly, however many.
        {360.0 * 0x1p40 + 30, 153048},   {-360.0 * 0x1p40 + 30, 153048},
    };
    for (const auto& [angle, bytes] : cases) EXPECT_EQ(Estimate(picture_, angle), bytes) << angle;
}

TEST_F(RotateMemoryTest, NilReceiverCountsAsNoPixels) {
    const std::pair<double, int64_t> cases[] = {{0, 0}, {90, 0}, {180, 0}, {270, 0}, {30, 4}, {1e-10, 8}};
    for (const auto& [angle, bytes] : cases) EXPECT_EQ(Estimate(nullptr, angle), bytes) << angle;
}

TEST_F(RotateMemoryTest, AnglesWithoutARotationNeedNothing) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    for (double angle : {std::nan(""), kInfinity, -kInfinity})
        EXPECT_EQ(Estimate(picture_, angle), 0) << angle;
}

TEST_F(RotateMemoryTest, HugeAnglesAreAnsweredAtOnce) {
    for (int exponent = 0; exponent <= 1014; ++exponent) {
        const double wholeTurns = std::ldexp(360.0, exponent);
        EXPECT_EQ(Estimate(picture_, wholeTurns), 20000) << wholeTurns;
        EXPECT_EQ(Estimate(picture_, -wholeTurns), 20000) << -wholeTurns;
    }
    for (int exponent = 7; exponent <= 308; ++exponent)
        for (double angle : {1.2345 * std::pow(10.0, exponent), -9.876 * std::pow(10.0, exponent - 1)})
            EXPECT_GE(Estimate(picture_, angle), 20000) << angle;
    EXPECT_GE(Estimate(picture_, std::numeric_limits<double>::max()), 20000);
    EXPECT_GE(Estimate(picture_, std::numeric_limits<double>::lowest()), 20000);
}

}  // namespace
