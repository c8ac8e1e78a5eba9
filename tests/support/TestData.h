#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace korvane {

// What the repository ships under tests/data. Shipped files are never
// optional: a missing or unreadable one throws (and so fails the test) with
// its path, so a broken path can't turn into a quiet skip.
std::filesystem::path testDataPath(std::string_view relative);
std::string testDataBytes(std::string_view relative);

} // namespace korvane
