// The editor against the strict simulated host: every storage kind read and
// written exactly, and every binding given back. (The codecs of the specialised
// loops are held to GetPixel and SetPixel by the loops' own tests.)
#include <gtest/gtest.h>

#include <random>

#include "picture/picture_editor.h"
#include "tests/support/pictures.h"
#include "tests/support/rotation_model.h"
#include "tests/unit/started_host.h"

using simhost::HostKind;
using simhost::Rgba;
using simhost::Storage;

namespace {

struct EditorCase {
    HostKind kind;
    Storage storage;
    const char* name;
};

class EditorTest : public ::testing::TestWithParam<EditorCase> {
protected:
    EditorTest() : host_({.kind = GetParam().kind}) {}
    REALpicture MakeRandomPicture(int32_t width, int32_t height, uint32_t seed) {
        REALpicture picture = host_.MakePicture(GetParam().storage, width, height);
        test_support::FillRandom(host_, picture, seed);
        return picture;
    }
    StartedHost host_;
};

Pixel AsPixel(Rgba p) { return {p.r, p.g, p.b, p.a}; }

TEST_P(EditorTest, ReadsEveryPixelAsTheHostHoldsIt) {
    REALpicture picture = MakeRandomPicture(7, 5, 1);
    {
        PictureReader reader;
        ASSERT_TRUE(reader.GetPictureEditor(picture, true, false));
        EXPECT_EQ(reader.width, 7);
        EXPECT_EQ(reader.height, 5);
        EXPECT_EQ(reader.RowAddress(5), reader.RowAddress(0)) << "a row past the last is the first";
        for (int32_t y = 0; y < 5; ++y)
            for (int32_t x = 0; x < 7; ++x)
                ASSERT_EQ(reader.GetPixel(x, y), AsPixel(host_.GetPixel(picture, x, y))) << x << "," << y;
    }
    host_.Release(picture);
    EXPECT_EQ(host_.LedgerProblems(), std::vector<std::string>{});
}

TEST_P(EditorTest, WritesAsTheFormatStoresAndClearsTheCache) {
    REALpicture picture = MakeRandomPicture(6, 4, 2);
    PictureEditor editor;
    if (!editor.GetPictureEditor(picture, true, true)) {
        EXPECT_EQ(GetParam().storage, Storage::GWorld16) << "only an unsupported depth refuses to be written";
        host_.Release(picture);
        EXPECT_EQ(host_.LedgerProblems(), std::vector<std::string>{});
        return;
    }
    std::mt19937 random(3);
    for (int32_t y = 0; y < 4; ++y)
        for (int32_t x = 0; x < 6; ++x) {
            const Pixel written{int32_t(random() % 512), int32_t(random() % 256), int32_t(random() % 256),
                                int32_t(random() % 256)};
            editor.SetPixel(x, y, written);
            EXPECT_EQ(host_.GetPixel(picture, x, y),
                      test_support::StoredPixel(GetParam().storage, written.r, written.g, written.b, written.a));
            EXPECT_EQ(editor.GetPixel(x, y), AsPixel(host_.GetPixel(picture, x, y)));
        }
    const int clearsBefore = host_.CacheClears(picture);
    editor.ReleasePicture();
    EXPECT_EQ(host_.CacheClears(picture), clearsBefore + 1);
    host_.Release(picture);
    EXPECT_EQ(host_.LedgerProblems(), std::vector<std::string>{});
}

TEST_P(EditorTest, RenderHandsOverOneReferenceAndKeepsNone) {
    PictureWriter writer;
    ASSERT_TRUE(BindNewPicture(writer, 3, 2));
    REALpicture result = writer.RenderPictureWriter();
    ASSERT_NE(result, nullptr);
    EXPECT_EQ(host_.References(result), 1);
    EXPECT_GE(host_.CacheClears(result), 2);
    EXPECT_EQ(writer.picture, nullptr);
    EXPECT_EQ(writer.RenderPictureWriter(), nullptr);
    EXPECT_EQ(host_.LedgerProblems({result}), std::vector<std::string>{});
    host_.Release(result);
}

// Each pass of a rotation binds its own editors afresh, so nothing in the
// methods rebinds one: only this test sees the first binding given back.
TEST_P(EditorTest, RebindingReleasesTheFirstPicture) {
    REALpicture first = MakeRandomPicture(2, 2, 7);
    REALpicture second = MakeRandomPicture(3, 3, 8);
    PictureReader reader;
    ASSERT_TRUE(reader.GetPictureEditor(first, true, false));
    ASSERT_TRUE(reader.GetPictureEditor(second, true, false));
    EXPECT_EQ(host_.References(first), 1);
    EXPECT_FALSE(reader.GetPictureEditor(nullptr, true, false));
    EXPECT_EQ(reader.picture, nullptr);
    host_.Release(first);
    host_.Release(second);
    EXPECT_EQ(host_.LedgerProblems(), std::vector<std::string>{});
}

INSTANTIATE_TEST_SUITE_P(
    StorageKinds, EditorTest,
    ::testing::Values(EditorCase{HostKind::Desktop, Storage::GWorld32, "Desktop32"},
                      EditorCase{HostKind::Desktop, Storage::GWorld24, "Desktop24"},
                      EditorCase{HostKind::Desktop, Storage::GWorld16, "Desktop16"},
                      EditorCase{HostKind::Console, Storage::HostBitmap, "Console"},
                      EditorCase{HostKind::Web, Storage::HostBitmap, "Web"},
                      EditorCase{HostKind::Undecided, Storage::HostBitmap, "UndecidedBitmap"},
                      EditorCase{HostKind::Undecided, Storage::GWorld32, "UndecidedWorld"}),
    [](const auto& info) { return std::string(info.param.name); });

// A host bitmap record the editor cannot trust is refused on the console path,
// which never copies, and nothing stays held.
class MalformedRecordTest : public ::testing::TestWithParam<simhost::SimulatedHost::RecordDefect> {};

TEST_P(MalformedRecordTest, IsRefused) {
    StartedHost host({.kind = HostKind::Console});
    REALpicture picture = host.MakePicture(Storage::HostBitmap, 4, 3);
    host.MalformRecord(picture, GetParam());
    for (bool forWriting : {false, true}) {
        PictureEditor editor;
        EXPECT_FALSE(editor.GetPictureEditor(picture, true, forWriting));
        EXPECT_EQ(editor.pixelFormat, PixelFormatNone);
    }
    host.Release(picture);
    EXPECT_EQ(host.LedgerProblems(), std::vector<std::string>{});
}

INSTANTIATE_TEST_SUITE_P(Defects, MalformedRecordTest,
                         ::testing::Values(simhost::SimulatedHost::RecordDefect::FirstWordNotZero,
                                           simhost::SimulatedHost::RecordDefect::ValidityWordZero,
                                           simhost::SimulatedHost::RecordDefect::NoRowTable));

}  // namespace
