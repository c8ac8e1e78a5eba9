#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

namespace korvane {

// An `ioreg -l` text the size of a whole machine's: the real controller
// subtrees of two corpus dumps (a Comet Lake hackintosh's XHC@14 and an iMac
// Pro's XHC1@14, each with its PCI IDs copied onto the xHCI node so that
// every scanner reads every port and device below it) repeated under one root
// until the text reaches `bytes`. Written to a temporary file that goes with
// the object.
class WholeMachineDump {
  public:
    explicit WholeMachineDump(std::size_t bytes = std::size_t{50} << 20);
    ~WholeMachineDump();
    WholeMachineDump(const WholeMachineDump&) = delete;
    WholeMachineDump& operator=(const WholeMachineDump&) = delete;

    const std::string& text() const { return text_; }
    std::size_t size() const { return size_; }
    // Frees the text and keeps the file, for a bench whose own memory must
    // not show in the children it measures.
    void dropText() { std::string().swap(text_); }
    const std::filesystem::path& path() const { return path_; }

  private:
    std::string text_;
    std::size_t size_ = 0;
    std::filesystem::path path_;
};

} // namespace korvane
