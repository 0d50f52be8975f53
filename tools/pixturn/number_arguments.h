// The numbers a command line carries: angles and host versions as finite
// decimals, sizes as WIDTHxHEIGHT. Each parser names the option in its message.
#pragma once

#include <cstdint>
#include <string>

namespace pixturn {

struct PictureSize {
    int32_t width = 0;
    int32_t height = 0;
};

// Throw a usage Failure naming `option` when the text is not what they read.
double ParseFiniteNumber(const std::string& text, const std::string& option);
PictureSize ParsePictureSize(const std::string& text, const std::string& option);
// A whole number from lowest to highest.
int ParseWholeNumber(const std::string& text, const std::string& option, int lowest, int highest);

}  // namespace pixturn
