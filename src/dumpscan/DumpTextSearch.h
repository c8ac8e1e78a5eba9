#pragma once

#include <string_view>

namespace korvane {

// Byte-level helpers that let the dump parsers skip lines an expression can't
// match before paying for a regular expression.

// True when some byte is outside ASCII. Case-insensitive ICU matching lets a
// few non-ASCII letters (long s, Kelvin sign) stand for ASCII ones, so such a
// line always goes to the expression itself.
bool hasNonASCII(std::string_view text);

// ASCII case-insensitive search; `lowerNeedle` must be lower-case ASCII.
bool containsIgnoringASCIICase(std::string_view text, std::string_view lowerNeedle);

} // namespace korvane
