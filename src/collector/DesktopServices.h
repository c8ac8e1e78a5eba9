#pragma once

#include <filesystem>
#include <string>

namespace korvane {

// What the model asks of the desktop around it. The window gives the real
// ones (a sound theme, the file manager, the browser), the command line a
// quiet set, tests a recording fake.
//
// Contract: called on the main thread; each returns at once and never fails:
// a sound that doesn't exist plays nothing, a file manager that can't be
// reached shows nothing.
class DesktopServices {
  public:
    virtual ~DesktopServices() = default;

    // "Glass" after a successful run, "Basso" after a failed one.
    virtual void playSound(const std::string& name) = 0;
    // False when the desktop has nothing that could show the file (no file
    // manager, no handler for folders); true once it is handed over.
    virtual bool revealInFileManager(const std::filesystem::path& file) = 0;
    virtual void openURL(const std::string& address) = 0;
};

} // namespace korvane
