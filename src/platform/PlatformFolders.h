#pragma once

#include "platform/Environment.h"
#include "tools/ToolPaths.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace korvane {

// The folders the application reads and writes outside its work folder. Each
// has a form that takes the environment (for tests) and one that reads the
// process's. None of them creates anything or fails: a folder that isn't
// there is the caller's to make or report.

// The user's Desktop: where the ZIP goes.
//   Linux: the desktop entry of $XDG_CONFIG_HOME/user-dirs.dirs, else $HOME/Desktop.
//   macOS: ~/Desktop.
std::filesystem::path desktopURL(const Environment& environment);
std::filesystem::path desktopURL();

// The per-user application support folder (the ids databases live below it).
//   Linux: $XDG_DATA_HOME, else ~/.local/share.  macOS: ~/Library/Application Support.
std::filesystem::path applicationSupportDirectory(const Environment& environment);
std::filesystem::path applicationSupportDirectory();

// Where runs of the program keep their work folder locks: per user, never on
// the Desktop.
//   Linux: $XDG_RUNTIME_DIR/korvane-generator, else
//   $XDG_CACHE_HOME (or ~/.cache)/korvane-generator.
//   macOS: ~/Library/Caches/org.korvanegenerator.KorvaneGenerator.
std::filesystem::path lockDirectory(const Environment& environment);
std::filesystem::path lockDirectory();

// The per-user configuration folder (the window's settings live below it).
//   Linux: $XDG_CONFIG_HOME, else ~/.config.  macOS: ~/Library/Application Support.
std::filesystem::path configurationDirectory(const Environment& environment);
std::filesystem::path configurationDirectory();

// The user's home: $HOME, else the password database's entry.
std::filesystem::path homeDirectory(const Environment& environment);

// The folder holding the running program.
std::filesystem::path executableDirectory();

// The application's read-only resources, found relative to the running program:
//   Linux: ../share/korvane-generator (the build tree mirrors the installed one).
//   macOS: as bundleOrInstalledResourceDirectory says.
std::filesystem::path resourceDirectory(const std::filesystem::path& executableFolder);
std::filesystem::path resourceDirectory();

// A program in a bundle's Contents/MacOS reads Contents/Resources; one
// anywhere else (bin/korvane installed or in the build tree) reads
// ../share/korvane-generator. Decided by the path alone.
std::filesystem::path bundleOrInstalledResourceDirectory(const std::filesystem::path& executableFolder);

// Where the external tools are, found relative to the running program:
//   macOS: the system's own ditto, plutil and sysctl.
//   Linux: our stand-ins for ditto and plutil in ../libexec/korvane-generator
//   (build and installed trees alike), the system's sysctl, and acpiexec
//   from PATH (where acpica-tools puts it, /usr/bin, when it isn't there).
ToolPaths platformToolPaths(const std::filesystem::path& executableFolder);

// The first executable file `name` in the absolute folders of PATH.
std::optional<std::string> programOnPath(std::string_view name, const Environment& environment);

} // namespace korvane
