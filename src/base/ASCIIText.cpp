#include "base/ASCIIText.h"

#include <algorithm>
#include <array>

namespace korvane {

std::string asciiLowercased(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(), [](char c) { return asciiLowercased(c); });
    return result;
}

std::string asciiUppercased(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(), [](char c) { return asciiUppercased(c); });
    return result;
}

bool isASCII(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

bool containsIgnoringASCIICase(std::string_view text, std::string_view lowerNeedle) {
    const std::size_t n = lowerNeedle.size();
    if (n == 0) {
        return true;
    }
    if (text.size() < n) {
        return false;
    }
    // Horspool: the words looked for are long and rare, so most steps skip a
    // whole needle's length; whole port blocks of dumps are searched this way.
    std::array<std::size_t, 256> shift{};
    shift.fill(n);
    for (std::size_t i = 0; i + 1 < n; ++i) {
        const char c = lowerNeedle[i];
        shift[static_cast<unsigned char>(c)] = n - 1 - i;
        shift[static_cast<unsigned char>(asciiUppercased(c))] = n - 1 - i;
    }
    std::size_t at = 0;
    while (at + n <= text.size()) {
        std::size_t i = n;
        while (i > 0 && asciiLowercased(text[at + i - 1]) == lowerNeedle[i - 1]) {
            --i;
        }
        if (i == 0) {
            return true;
        }
        at += shift[static_cast<unsigned char>(text[at + n - 1])];
    }
    return false;
}

} // namespace korvane
