// A parsed command line: the command, its operands and the options given, each
// value already checked and converted.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/pixturn/image_files.h"
#include "tools/pixturn/number_arguments.h"

namespace pixturn {

// One bit per option, so that a command can say which it accepts and requires.
enum OptionBit : unsigned {
    kOptionAngle = 1u << 0,
    kOptionBackground = 1u << 1,
    kOptionHost = 1u << 2,
    kOptionHostVersion = 1u << 3,
    kOptionOutput = 1u << 4,
    kOptionMask = 1u << 5,
    kOptionCut = 1u << 6,
    kOptionMaskOutput = 1u << 7,
    kOptionSize = 1u << 8,
    kOptionPlugin = 1u << 9,
    kOptionInput = 1u << 10,
    kOptionPngLevel = 1u << 11,
    kOptionQuality = 1u << 12,
    kOptionFlatten = 1u << 13,
    kOptionFormat = 1u << 14,
    kOptionOutDir = 1u << 15,
    kOptionNoAutoOrient = 1u << 16,
};

struct Invocation {
    std::string command;
    std::vector<std::string> operands;
    unsigned given = 0;  // OptionBits
    bool help = false;

    double angle = 0;
    std::optional<uint32_t> background;
    std::string host = "desktop";
    std::optional<double> hostVersion = 2019.0;  // nullopt: "none", a host that reports no version
    std::string output;
    std::string mask;
    bool cut = false;
    std::string maskOutput;
    PictureSize size;
    std::string plugin;
    std::string input;
    std::string outDir;
    ReadSettings reading;
    EncodeSettings encoding;

    bool Has(OptionBit option) const { return (given & option) != 0; }
};

}  // namespace pixturn
