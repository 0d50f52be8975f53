// The raw form is accepted too so that a value seen in a debugger or in the
// host's documentation can be passed on unchanged.
#include "tools/pixturn/colour_literal.h"

#include <cctype>
#include <cstdio>

namespace pixturn {

namespace {

std::optional<uint32_t> ParseHexDigits(const std::string& digits) {
    uint32_t value = 0;
    for (char c : digits) {
        if (!std::isxdigit(static_cast<unsigned char>(c))) return std::nullopt;
        const int digit = std::isdigit(static_cast<unsigned char>(c))
                              ? c - '0'
                              : std::tolower(static_cast<unsigned char>(c)) - 'a' + 10;
        value = value * 16 + static_cast<uint32_t>(digit);
    }
    return value;
}

bool StartsWithIgnoringCase(const std::string& text, const char* prefix) {
    for (size_t i = 0; prefix[i] != '\0'; ++i) {
        if (i >= text.size() || std::tolower(static_cast<unsigned char>(text[i])) != prefix[i]) return false;
    }
    return true;
}

}  // namespace

std::optional<uint32_t> ParseColour(const std::string& text) {
    if (StartsWithIgnoringCase(text, "&c")) {
        const std::string digits = text.substr(2);
        if (digits.size() != 6 && digits.size() != 8) return std::nullopt;
        const std::optional<uint32_t> value = ParseHexDigits(digits);
        if (!value) return std::nullopt;
        if (digits.size() == 6) return *value;
        return (*value >> 8) | ((*value & 0xFF) << 24);
    }
    if (StartsWithIgnoringCase(text, "0x")) {
        const std::string digits = text.substr(2);
        if (digits.empty() || digits.size() > 8) return std::nullopt;
        return ParseHexDigits(digits);
    }
    return std::nullopt;
}

std::string ColourLiteral(uint32_t value) {
    char text[16];
    std::snprintf(text, sizeof text, "&c%06X%02X", static_cast<unsigned>(value & 0xFFFFFF),
                  static_cast<unsigned>(value >> 24));
    return text;
}

}  // namespace pixturn
