#pragma once

#include <filesystem>
#include <fstream>
#include <string>

namespace korvane {

// Small hand-made sysfs trees for the cases the real captures don't show.
class SysfsFixtureWriter {
  public:
    explicit SysfsFixtureWriter(std::filesystem::path root) : root_(std::move(root)) {}

    const std::filesystem::path& root() const { return root_; }

    // Writes `value` plus the line feed the kernel adds.
    void attribute(const std::filesystem::path& relative, const std::string& value) const {
        std::filesystem::create_directories((root_ / relative).parent_path());
        std::ofstream(root_ / relative, std::ios::binary) << value << '\n';
    }

    void link(const std::filesystem::path& relative, const std::filesystem::path& target) const {
        std::filesystem::create_directories((root_ / relative).parent_path());
        std::filesystem::create_symlink(target, root_ / relative);
    }

    void folder(const std::filesystem::path& relative) const {
        std::filesystem::create_directories(root_ / relative);
    }

    // A PCI function with its IDs and class.
    void pciFunction(const std::filesystem::path& relative, const std::string& vendor,
                     const std::string& device, const std::string& classCode) const {
        attribute(relative / "vendor", vendor);
        attribute(relative / "device", device);
        attribute(relative / "subsystem_vendor", "0x106b");
        attribute(relative / "subsystem_device", "0x0001");
        attribute(relative / "revision", "0x10");
        attribute(relative / "class", classCode);
    }

    // An ACPI node with a path and an address, and the link to it.
    void firmwareNode(const std::filesystem::path& device, const std::string& acpiNode,
                      const std::string& path, const std::string& address) const {
        const auto node = std::filesystem::path("devices/LNXSYSTM:00") / acpiNode;
        attribute(node / "path", path);
        if (!address.empty()) {
            attribute(node / "adr", address);
        }
        link(device / "firmware_node", std::filesystem::relative(root_ / node, root_ / device));
    }

  private:
    std::filesystem::path root_;
};

} // namespace korvane
