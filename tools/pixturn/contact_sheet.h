// The demo's index.html: one card per method call with the call as Xojo code
// writes it, one line on what the method does, what it returned, the pictures
// side by side (the result, its mask, the result with the mask applied) as
// thumbnails linking to the full-size files, their sizes and the call's time.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/pixturn/atomic_output.h"

namespace pixturn {

struct SheetImage {
    std::string file;       // full size, beside index.html
    std::string thumbnail;  // what the page shows: file itself when small enough
    std::string label;      // "picture", "mask", "picture with its mask applied"
    int32_t width = 0;
    int32_t height = 0;
};

struct SheetEntry {
    std::string call;      // "p.RotateQLM(30, &cFFFFFFFF)", or "p" for the input
    std::string what;      // one line on what the method does
    std::string returned;  // "a new picture", "p itself", "True", "Nil", "153048 bytes (0.1 MiB)"
    std::vector<SheetImage> images;
    bool failed = false;
    std::optional<double> seconds;
};

// The widest a thumbnail is drawn: three side by side stay within 1400 px.
constexpr int32_t kThumbnailSide = 360;

// title names the input and the host in the page's heading; about says what the
// page shows.
void WriteContactSheet(AtomicOutputFile& output, const std::string& title, const std::string& about,
                       const std::vector<SheetEntry>& entries);

}  // namespace pixturn
