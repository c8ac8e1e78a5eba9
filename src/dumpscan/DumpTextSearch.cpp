#include "dumpscan/DumpTextSearch.h"

#include <array>
#include <cstddef>

namespace korvane {

namespace {

constexpr unsigned char lowered(unsigned char c) { return c >= 'A' && c <= 'Z' ? static_cast<unsigned char>(c + 32) : c; }

} // namespace

bool hasNonASCII(std::string_view text) {
    for (const char c : text) {
        if (static_cast<unsigned char>(c) >= 0x80) {
            return true;
        }
    }
    return false;
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
    // whole needle's length; whole port blocks are searched this way.
    std::array<std::size_t, 256> shift{};
    shift.fill(n);
    for (std::size_t i = 0; i + 1 < n; ++i) {
        const auto c = static_cast<unsigned char>(lowerNeedle[i]);
        shift[c] = n - 1 - i;
        if (c >= 'a' && c <= 'z') {
            shift[static_cast<unsigned char>(c - 32)] = n - 1 - i;
        }
    }
    std::size_t at = 0;
    while (at + n <= text.size()) {
        std::size_t i = n;
        while (i > 0 && lowered(static_cast<unsigned char>(text[at + i - 1])) ==
                            static_cast<unsigned char>(lowerNeedle[i - 1])) {
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
