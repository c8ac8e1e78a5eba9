#pragma once

#include <cstdint>
#include <string_view>

namespace korvane {

// libplist expands every reference of a binary property list into a copy of
// its own and recurses once per level, so a few kilobytes whose objects share
// children (or nest very deep) take exponential time or overflow the stack.
// This walks the object table without expanding it and says whether the
// expanded tree stays within `maxNodes` objects and `maxDepth` levels, with no
// reference cycle and no dictionary key holding a NUL (libplist asserts on
// those). Malformed tables give false.
bool binaryPlistFitsBudget(std::string_view bytes, std::uint64_t maxNodes, int maxDepth);

} // namespace korvane
