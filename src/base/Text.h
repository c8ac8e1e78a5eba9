#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace korvane {

// True when the bytes are well-formed UTF-8 as a whole.
bool isValidUTF8(std::string_view bytes);

// All or nothing: the bytes as text when they are valid UTF-8, else "". A
// partial or repaired text would pass off damaged output as real.
std::string strictUTF8(std::string_view bytes);

// Leading and trailing white space and line ends removed (Unicode white space,
// not only ASCII).
std::string trimmed(std::string_view text);

// The value of an ASCII hexadecimal digit, either case; -1 for anything else.
constexpr int hexDigitValue(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    return -1;
}

// The pieces with `separator` between each two.
std::string joined(const std::vector<std::string>& pieces, std::string_view separator);

// Full Unicode upper-casing, locale-independent ("ß" becomes "SS").
std::string uppercased(std::string_view text);

} // namespace korvane
