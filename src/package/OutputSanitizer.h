#pragma once

#include <filesystem>
#include <string>

namespace korvane {

// The last pass over the work folder before it is zipped: masks identifiers in
// the text-like files (by extension, compared case-insensitively: plist, spx,
// xml, txt, log) with redactSensitiveText. Property-list kinds are converted
// to XML first with `plutil -convert xml1`, so binary ones get masked too.

// Walks every entry below `folder` at any depth, leaving out hidden entries
// (names starting with ".") and all that lies below a hidden folder. Reports
// nothing: a file that can't be converted, read or written stays as it was,
// and the walk goes on. Blocks its thread for the tool runs.
void sanitizeDirectory(const std::filesystem::path& folder, const std::string& plutilPath);

// Masks one file in place, written back atomically also when nothing changed.
// A failed conversion or read is no failure (the file is taken as it is or
// left alone); a file that isn't UTF-8 is left byte for byte. Throws
// std::system_error when the masked text can't be written.
void sanitizeTextLikeFile(const std::filesystem::path& file, const std::string& plutilPath);

} // namespace korvane
