// Colours as a Xojo program writes them (&cRRGGBB, &cRRGGBBAA) or as the host
// passes them to a method (the 32-bit value 0xAARRGGBB).
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace pixturn {

// &cRRGGBBAA gives 0xAARRGGBB: the literal's fourth byte is the value's top
// byte, which the plug-in carries as the pixels' fourth channel. &cRRGGBB leaves
// it 0. Hex digits in either case. Empty when the text is neither form.
std::optional<uint32_t> ParseColour(const std::string& text);

// The value written as the Xojo literal with all four bytes: &cRRGGBBAA.
std::string ColourLiteral(uint32_t value);

}  // namespace pixturn
