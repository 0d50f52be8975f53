// The test bench tested: the simulated host must catch what a careless plug-in
// does (a reference or lock kept, an unlock of nothing, a call on a released
// object) and must behave as the plug-in's code expects of the real host.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>

#include "platform/xojo/rb_plugin.h"
#include "simhost/simulated_host.h"

using simhost::HostKind;
using simhost::Rgba;
using simhost::SimulatedHost;
using simhost::Storage;

namespace {

template <typename Function>
Function EntryPoint(const char* name) {
    return reinterpret_cast<Function>(SimulatedHost::Resolver()(name));
}

const auto LockObject = [] { return EntryPoint<void (*)(REALobject)>("REALLockObject"); };
const auto UnlockObject = [] { return EntryPoint<void (*)(REALobject)>("REALUnlockObject"); };
const auto LockAs = [] {
    return EntryPoint<bool (*)(REALpicture, REALpictureDescription*, int32_t)>("REALLockPictureDescription");
};
const auto Unlock = [] { return EntryPoint<void (*)(REALpicture)>("unlockPictureDescription"); };

const auto NewPicture = [] { return EntryPoint<REALpicture (*)(int32_t, int32_t, int32_t)>("newPicture"); };

// Each careless act, done on a fresh console host with one picture; the ledger
// must name it.
struct CarelessCase {
    const char* name;
    double version;
    std::function<void(SimulatedHost&, REALpicture)> act;
};

const CarelessCase kCarelessCases[] = {
    {"KeptReference", 2019.0, [](SimulatedHost&, REALpicture p) { LockObject()(p); }},
    {"KeptDescriptionLock", 2019.0,
     [](SimulatedHost&, REALpicture p) {
         REALpictureDescription description{};
         LockAs()(p, &description, 10);
     }},
    {"UnlockOfNothing", 2019.0, [](SimulatedHost&, REALpicture p) { Unlock()(p); }},
    {"UnlockAfterFailedLockOnNewHost", 2012.0,
     [](SimulatedHost&, REALpicture p) {
         REALpictureDescription description{};
         EXPECT_FALSE(LockAs()(p, &description, 4));
         Unlock()(p);
     }},
    {"NoUnlockAfterFailedLockOnOldHost", 2011.99,
     [](SimulatedHost&, REALpicture p) {
         REALpictureDescription description{};
         EXPECT_FALSE(LockAs()(p, &description, 4));
     }},
    {"ReleaseOfWhatWasNotTaken", 2019.0, [](SimulatedHost&, REALpicture p) { UnlockObject()(p); }},
    {"NilObject", 2019.0, [](SimulatedHost&, REALpicture) { LockObject()(nullptr); }},
    {"OversizedPicture", 2019.0, [](SimulatedHost&, REALpicture) { EXPECT_EQ(NewPicture()(32768, 1, 32), nullptr); }},
    {"PictureOfAnotherDepth", 2019.0, [](SimulatedHost&, REALpicture) { EXPECT_EQ(NewPicture()(4, 4, 24), nullptr); }},
    {"LeakedNewPicture", 2019.0, [](SimulatedHost&, REALpicture) { EXPECT_NE(NewPicture()(4, 4, 32), nullptr); }},
    {"CallOnAReleasedPicture", 2019.0,
     [](SimulatedHost& host, REALpicture p) {
         host.Release(p);
         LockObject()(p);
     }},
    {"OneReferenceTooManyOnAResult", 2019.0,
     [](SimulatedHost& host, REALpicture) {
         REALpicture made = NewPicture()(2, 2, 32);
         EXPECT_EQ(host.LedgerProblems({made}), std::vector<std::string>{});
         LockObject()(made);
         EXPECT_FALSE(host.LedgerProblems({made}).empty());
     }},
};

class CarelessTest : public ::testing::TestWithParam<CarelessCase> {};

TEST_P(CarelessTest, TheLedgerNamesIt) {
    SimulatedHost host({.version = GetParam().version, .kind = HostKind::Console});
    REALpicture picture = host.MakePicture(Storage::HostBitmap, 3, 2);
    ASSERT_TRUE(host.LedgerProblems().empty());
    GetParam().act(host, picture);
    EXPECT_FALSE(host.LedgerProblems().empty());
}

INSTANTIATE_TEST_SUITE_P(Acts, CarelessTest, ::testing::ValuesIn(kCarelessCases),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(SimulatedHost, OldHostsExpectAnUnlockAfterAFailedLock) {
    SimulatedHost host({.version = 2011.99, .kind = HostKind::Console});
    REALpicture picture = host.MakePicture(Storage::HostBitmap, 3, 2);
    REALpictureDescription description{};
    EXPECT_FALSE(LockAs()(picture, &description, 4));
    Unlock()(picture);
    EXPECT_EQ(host.LedgerProblems(), std::vector<std::string>{});
}

TEST(SimulatedHost, HostBitmapRowsLieApartAndTheRecordIsAsDocumented) {
    SimulatedHost host({.kind = HostKind::Console});
    REALpicture picture = host.MakePicture(Storage::HostBitmap, 5, 3);
    host.SetPixel(picture, 4, 2, Rgba{1, 2, 3, 255});
    REALpictureDescription description{};
    ASSERT_TRUE(LockAs()(picture, &description, 10));
    const void* record = description.pictureData;
    EXPECT_EQ(host_bitmap::ReadWord(record, host_bitmap::kZeroWordOffset), 0);
    EXPECT_EQ(host_bitmap::ReadWord(record, host_bitmap::kWidthOffset), 5);
    EXPECT_EQ(host_bitmap::ReadWord(record, host_bitmap::kHeightOffset), 3);
    EXPECT_NE(host_bitmap::ReadWord(record, host_bitmap::kValidWordOffset), 0);
    uint8_t** rows = host_bitmap::ReadRowTable(record);
    EXPECT_NE(rows[1], rows[0] + 5 * 4) << "rows must not be one block";
    const uint8_t expected[4] = {3, 2, 1, 127};  // B, G, R, 7-bit alpha
    EXPECT_EQ(std::memcmp(rows[2] + 4 * 4, expected, 4), 0);
    Unlock()(picture);
    host.Release(picture);
    EXPECT_EQ(host.LedgerProblems(), std::vector<std::string>{});
}

}  // namespace
