// The raw form is accepted too so that a value seen in a debugger or in the
// host's documentation can be passed on unchanged.
#include "tools/pixturn/colour_literal.h"

#include <cctype>
#include <cstdio>
#include <cstring>

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

struct NamedColour {
    const char* name;
    uint32_t value;  // 0xAARRGGBB
};

// CSS's basic colours, with their CSS values (green is CSS's dark green).
constexpr NamedColour kNamedColours[] = {
    {"transparent", 0x00000000}, {"black", 0xFF000000}, {"white", 0xFFFFFFFF},   {"grey", 0xFF808080},
    {"gray", 0xFF808080},        {"silver", 0xFFC0C0C0}, {"red", 0xFFFF0000},    {"maroon", 0xFF800000},
    {"lime", 0xFF00FF00},        {"green", 0xFF008000},  {"blue", 0xFF0000FF},   {"navy", 0xFF000080},
    {"yellow", 0xFFFFFF00},      {"orange", 0xFFFFA500}, {"cyan", 0xFF00FFFF},   {"aqua", 0xFF00FFFF},
    {"magenta", 0xFFFF00FF},     {"fuchsia", 0xFFFF00FF}, {"purple", 0xFF800080}, {"teal", 0xFF008080},
    {"olive", 0xFF808000},
};

std::optional<uint32_t> ParseCss(const std::string& digits) {
    const std::optional<uint32_t> value = ParseHexDigits(digits);
    if (!value) return std::nullopt;
    switch (digits.size()) {
        case 3: {
            uint32_t rgb = 0;
            for (int shift = 8; shift >= 0; shift -= 4) rgb = rgb << 8 | ((*value >> shift) & 0xF) * 0x11;
            return 0xFF000000 | rgb;
        }
        case 6: return 0xFF000000 | *value;
        case 8: return (*value >> 8) | ((*value & 0xFF) << 24);
        default: return std::nullopt;
    }
}

bool StartsWithIgnoringCase(const std::string& text, const char* prefix) {
    for (size_t i = 0; prefix[i] != '\0'; ++i) {
        if (i >= text.size() || std::tolower(static_cast<unsigned char>(text[i])) != prefix[i]) return false;
    }
    return true;
}

}  // namespace

std::optional<uint32_t> ParseColour(const std::string& text) {
    if (!text.empty() && text[0] == '#') return ParseCss(text.substr(1));
    for (const NamedColour& colour : kNamedColours) {
        if (text.size() == std::strlen(colour.name) && StartsWithIgnoringCase(text, colour.name)) return colour.value;
    }
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

const char* ColourForms() { return "#RGB, #RRGGBB, #RRGGBBAA, a colour name, &cRRGGBB[AA] or 0xAARRGGBB"; }

std::string ColourNames() {
    std::string names;
    for (const NamedColour& colour : kNamedColours) names += (names.empty() ? "" : ", ") + std::string(colour.name);
    return names;
}

std::string ColourLiteral(uint32_t value) {
    char text[16];
    std::snprintf(text, sizeof text, "&c%06X%02X", static_cast<unsigned>(value & 0xFFFFFF),
                  static_cast<unsigned>(value >> 24));
    return text;
}

}  // namespace pixturn
