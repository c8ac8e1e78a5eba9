#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace korvane {

// What the repository ships under tests/data. Shipped files are never
// optional: a missing or unreadable one throws (and so fails the test) with
// its path, so a broken path can't turn into a quiet skip.
std::filesystem::path testDataPath(std::string_view relative);
std::string testDataBytes(std::string_view relative);

// The rows of a table of cases under tests/data: one row a line, its fields
// apart by tabs, with "\n", "\r", "\t", "\\" and "\xHH" for the bytes they name.
// Lines that are blank or begin with "#" are notes.
std::vector<std::vector<std::string>> testDataRows(std::string_view relative);

// A test name for a row named by a file or path: its letters and digits.
std::string testNameOf(std::string_view path);

} // namespace korvane
