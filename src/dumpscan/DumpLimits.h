#pragma once

#include <cstddef>
#include <cstdint>

namespace korvane::dumplimits {

// Whole-machine `ioreg -l -w0` dumps run to tens of megabytes; a file many
// times that size is no dump, and reading it would only exhaust memory.
inline constexpr std::uintmax_t maxDumpBytes = std::uintmax_t{1} << 30;

// Node lines of real dumps stay under 300 characters (property lines reach
// 640 KB). The node expressions backtrack over a line once per "+-o" in it, so
// a long line packed with them would take quadratic time; such a line is
// taken for a property line and no expression looks at it.
inline constexpr std::size_t maxNodeLineBytes = 16 * 1024;

// Each port is looked at together with everything below it, so the work grows
// with how many port lines enclose one another. Real trees nest ports only
// through hubs (USB allows five tiers); a port line inside more port blocks
// than this is taken for no port, which keeps the parse linear in the text.
inline constexpr std::size_t maxPortNesting = 32;

} // namespace korvane::dumplimits
