// The demo's index.html: one figure per method call with the picture it gave
// (and the turned mask), the call as Xojo code writes it, the result's size and
// the time the call took.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/pixturn/atomic_output.h"

namespace pixturn {

struct SheetEntry {
    std::string call;    // "p.RotateQLM(30, &cFFFFFFFF)", or a caption for the input
    std::string image;   // file name beside index.html; empty when the call gave none
    std::string mask;    // the turned mask's file name, if any
    std::string result;  // "113 x 94", "= 412345 bytes", "RotateQLM returned nil"
    bool failed = false;
    std::optional<double> seconds;
};

// title names the input and the host in the page's heading.
void WriteContactSheet(AtomicOutputFile& output, const std::string& title, const std::vector<SheetEntry>& entries);

}  // namespace pixturn
