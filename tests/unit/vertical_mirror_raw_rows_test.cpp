// "VMirrorQLM" between pictures of the same format copies rows as raw bytes: on a
// host bitmap the top bit of every alpha byte arrives, which a pixel-by-pixel copy
// would drop. The simulated host has no call that writes raw pixel bytes, so the
// receiver's bytes are set through an editor bound in place.
#include <gtest/gtest.h>

#include "picture/picture_editor.h"
#include "plugin/methods.h"
#include "plugin/startup_state.h"
#include "simhost/simulated_host.h"
#include "tests/support/pictures.h"

TEST(VMirrorRawRows, HostBitmapAlphaKeepsItsTopBit) {
    simhost::HostConfig config;
    config.kind = simhost::HostKind::Console;
    simhost::SimulatedHost host(config);
    gResolver = simhost::SimulatedHost::Resolver();
    rbversion_rbversion = *config.version;

    const int32_t w = 5, h = 4;
    REALpicture picture = host.MakePicture(simhost::Storage::HostBitmap, w, h);
    test_support::FillRandom(host, picture, 8);
    {
        PictureEditor editor;
        ASSERT_TRUE(editor.GetPictureEditor(picture, true, true));
        for (int32_t y = 0; y < h; ++y)
            for (int32_t x = (y & 1); x < w; x += 2) editor.PixelAddress(x, y)[3] |= 0x80;
    }
    REALpicture mirrored = VMirrorQLM(picture);
    ASSERT_NE(mirrored, nullptr);
    for (int32_t y = 0; y < h; ++y)
        for (int32_t x = 0; x < w; ++x) {
            EXPECT_EQ(host.RawPixel(mirrored, x, h - 1 - y), host.RawPixel(picture, x, y)) << x << "," << y;
            EXPECT_EQ(host.RawPixel(picture, x, y)[3] >> 7, (x + y + 1) & 1);
        }
    EXPECT_EQ(host.LedgerProblems({mirrored}), std::vector<std::string>{});
    host.Release(mirrored);
    host.Release(picture);
}
