// std::from_chars reads numbers the same way whatever the user's locale, so a
// decimal point is always a point.
#include "tools/pixturn/number_arguments.h"

#include <charconv>
#include <cmath>
#include <limits>

#include "tools/pixturn/failure.h"

namespace pixturn {

namespace {

Failure BadValue(const std::string& option, const std::string& text, const std::string& expected) {
    return UsageError(option + ": '" + text + "' is not " + expected);
}

// A whole number from 1 to the largest 32-bit signed value.
bool ParseSide(const std::string& text, int32_t& side) {
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, side);
    return error == std::errc() && stop == end && side >= 1;
}

}  // namespace

double ParseFiniteNumber(const std::string& text, const std::string& option) {
    // from_chars takes no leading '+', which people write for angles.
    const size_t start = !text.empty() && text[0] == '+' ? 1 : 0;
    const char* begin = text.data() + start;
    const char* end = text.data() + text.size();
    double value = 0;
    const auto [stop, error] = std::from_chars(begin, end, value, std::chars_format::general);
    if (begin == end || (start == 1 && *begin == '-') || stop != end) {
        throw BadValue(option, text, "a number");
    }
    if (error == std::errc::result_out_of_range || !std::isfinite(value)) {
        throw BadValue(option, text, "a finite number");
    }
    return value;
}

PictureSize ParsePictureSize(const std::string& text, const std::string& option) {
    const size_t cross = text.find_first_of("xX");
    PictureSize size;
    if (cross == std::string::npos || !ParseSide(text.substr(0, cross), size.width) ||
        !ParseSide(text.substr(cross + 1), size.height)) {
        throw BadValue(option, text, "a size WIDTHxHEIGHT of whole numbers from 1 to " +
                                         std::to_string(std::numeric_limits<int32_t>::max()));
    }
    return size;
}

int ParseWholeNumber(const std::string& text, const std::string& option, int lowest, int highest) {
    int value = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (text.empty() || error != std::errc() || stop != end || value < lowest || value > highest) {
        throw BadValue(option, text, "a whole number from " + std::to_string(lowest) + " to " + std::to_string(highest));
    }
    return value;
}

}  // namespace pixturn
