#pragma once

#include <algorithm>
#include <filesystem>
#include <string>
#include <unistd.h>
#include <vector>

namespace korvane {

// A fresh folder under the system's temporary folder, removed with everything
// in it when the test ends.
class TempFolder {
  public:
    TempFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "korvane-test-XXXXXX").string();
        if (!mkdtemp(pattern.data())) {
            throw std::runtime_error("cannot make a temporary folder");
        }
        path_ = pattern;
    }
    ~TempFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }

    // Names directly in the folder, sorted.
    std::vector<std::string> entries() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(path_)) {
            names.push_back(entry.path().filename().string());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

  private:
    std::filesystem::path path_;
};

} // namespace korvane
