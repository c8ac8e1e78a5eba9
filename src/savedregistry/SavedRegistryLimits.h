#pragma once

#include <cstddef>

namespace korvane {

// Bounds for reading saved registries and dumps, which come from anywhere.
// Real registries are about 30 levels deep with values nested a handful of
// levels, and whole-machine dumps run to tens of megabytes; these leave ample
// room while keeping the recursive walks over the tree and over values, and
// memory, bounded.
inline constexpr int maximumSavedTreeDepth = 256;
inline constexpr int maximumSavedValueDepth = 256;
inline constexpr std::size_t maximumSavedRegistryBytes = std::size_t{256} * 1024 * 1024;

} // namespace korvane
