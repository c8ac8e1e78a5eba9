#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korvane {

// Bounded, non-throwing reads of sysfs attributes and links. sysfs is outside
// input like any file: an attribute may be unreadable (EIO on some power
// files), a link may dangle or loop, a fixture may hold anything.
namespace sysfs {

// No attribute the tree reads is longer than a page; anything longer is not
// what we expect and is cut off.
inline constexpr std::size_t maxAttributeBytes = 4096;
// Entries taken from one directory; a real machine has a few hundred at most.
inline constexpr std::size_t maxDirectoryEntries = 4096;

// The attribute's bytes with trailing white space and line ends removed.
// Only regular files are read, without blocking; anything else gives no value.
std::optional<std::string> readAttribute(const std::filesystem::path& file);

// The attribute as text when it is valid UTF-8 and not empty after trimming.
std::optional<std::string> readText(const std::filesystem::path& file);

// "0x1b36", "1b36" or "0x0c0330" as an unsigned number in base 16.
std::optional<std::uint32_t> readHex(const std::filesystem::path& file);

// A decimal attribute such as busnum or maxchild.
std::optional<std::uint32_t> readDecimal(const std::filesystem::path& file);

// The last component of a symbolic link's target, without following it.
std::optional<std::string> linkTargetName(const std::filesystem::path& link);

// Names of the real subdirectories (symbolic links excluded, so a walk can't
// loop), sorted as `ls -v` would put them: digit runs by value.
std::vector<std::string> subdirectories(const std::filesystem::path& directory);

// Parses hexadecimal text with an optional "0x"; no value on anything else.
std::optional<std::uint32_t> parseHex(std::string_view text);
std::optional<std::uint32_t> parseDecimal(std::string_view text);

} // namespace sysfs
} // namespace korvane
