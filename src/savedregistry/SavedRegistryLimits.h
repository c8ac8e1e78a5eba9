#pragma once

#include <cstddef>

namespace korvane {

// Bounds for reading saved registries, which come from anywhere. Real
// registries are about 30 levels deep with values nested a handful of levels
// and dumps of a few megabytes; these leave ample room while keeping the
// recursive walks over the tree and over values, and memory, bounded.
inline constexpr int kMaxSavedTreeDepth = 256;
inline constexpr int kMaxSavedValueDepth = 256;
inline constexpr std::size_t kMaxSavedRegistryBytes = std::size_t{256} * 1024 * 1024;

} // namespace korvane
