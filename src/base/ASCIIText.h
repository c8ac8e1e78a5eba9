#pragma once

#include <string>
#include <string_view>

namespace korvane {

// Case and blank tests for ASCII alone. Registry names, keys and the words the
// scanners look for are ASCII; a caller for whom a non-ASCII letter could
// stand for an ASCII one under full Unicode rules ("ß" upper-cases to "SS")
// checks isASCII() first and takes uppercased() (Text.h) otherwise.

constexpr char asciiLowercased(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

constexpr char asciiUppercased(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

// Blank, tab, line feed, vertical tab, form feed or carriage return.
constexpr bool isASCIISpace(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

std::string asciiLowercased(std::string_view text);
std::string asciiUppercased(std::string_view text);

// True when no byte is outside ASCII.
bool isASCII(std::string_view text);

// ASCII case-insensitive search; `lowerNeedle` must be lower-case ASCII.
bool containsIgnoringASCIICase(std::string_view text, std::string_view lowerNeedle);

} // namespace korvane
