// Colours as people type them (CSS's #RGB, #RRGGBB, #RRGGBBAA and colour names),
// as a Xojo program writes them (&cRRGGBB, &cRRGGBBAA) or as the host passes them
// to a method (the 32-bit value 0xAARRGGBB). Every form becomes that value, whose
// top byte the plug-in stores as the pixels' alpha (255 opaque, 0 transparent).
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace pixturn {

// #RRGGBB and the names are opaque (alpha FF), #RRGGBBAA takes AA as the alpha,
// #RGB is #RRGGBB with each digit doubled. &cRRGGBBAA gives 0xAARRGGBB: the
// literal's fourth byte becomes the alpha byte as it is, so AA = 00 is
// transparent (Xojo's own colour literals read it the other way round), and
// &cRRGGBB leaves it 00. Hex digits and names in either case. Empty when the
// text is none of these.
std::optional<uint32_t> ParseColour(const std::string& text);

// The forms ParseColour reads, for messages and help: "#RRGGBB, ...".
const char* ColourForms();
// The colour names ParseColour knows, separated by ", ".
std::string ColourNames();

// The value written as the Xojo literal with all four bytes: &cRRGGBBAA.
std::string ColourLiteral(uint32_t value);

}  // namespace pixturn
