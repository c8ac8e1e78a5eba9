#include "platform/linux/SysfsReading.h"

#include "base/Text.h"
#include "scanner/PropertyReaders.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace korvane::sysfs {

namespace {

class FileDescriptor {
  public:
    explicit FileDescriptor(int fd) : fd_(fd) {}
    ~FileDescriptor() {
        if (fd_ >= 0) {
            ::close(fd_);
        }
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    int get() const { return fd_; }

  private:
    int fd_;
};

std::optional<std::uint32_t> parseIn(std::string_view text, int base) {
    if (text.empty()) {
        return std::nullopt;
    }
    std::uint64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
    if (error != std::errc() || end != text.data() + text.size() || value > 0xffffffffULL) {
        return std::nullopt;
    }
    return static_cast<std::uint32_t>(value);
}

} // namespace

std::optional<std::string> readAttribute(const std::filesystem::path& file) {
    // O_NONBLOCK: a FIFO planted in a fixture must not stall the scan.
    FileDescriptor fd(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (fd.get() < 0) {
        return std::nullopt;
    }
    struct stat info {};
    if (::fstat(fd.get(), &info) != 0 || !S_ISREG(info.st_mode)) {
        return std::nullopt;
    }
    std::string bytes(maxAttributeBytes, '\0');
    std::size_t filled = 0;
    while (filled < bytes.size()) {
        const ssize_t count = ::read(fd.get(), bytes.data() + filled, bytes.size() - filled);
        if (count < 0) {
            if (errno == EINTR) {
                continue;
            }
            return std::nullopt;
        }
        if (count == 0) {
            break;
        }
        filled += static_cast<std::size_t>(count);
    }
    bytes.resize(filled);
    while (!bytes.empty() && (bytes.back() == '\n' || bytes.back() == ' ' || bytes.back() == '\t' ||
                              bytes.back() == '\r' || bytes.back() == '\0')) {
        bytes.pop_back();
    }
    return bytes;
}

std::optional<std::string> readText(const std::filesystem::path& file) {
    auto bytes = readAttribute(file);
    if (!bytes || !isValidUTF8(*bytes)) {
        return std::nullopt;
    }
    std::string text = trimmed(*bytes);
    if (text.empty()) {
        return std::nullopt;
    }
    return text;
}

std::optional<std::uint32_t> parseHex(std::string_view text) {
    if (text.starts_with("0x") || text.starts_with("0X")) {
        text.remove_prefix(2);
    }
    return parseIn(text, 16);
}

std::optional<std::uint32_t> parseDecimal(std::string_view text) {
    return parseIn(text, 10);
}

std::optional<std::uint32_t> readHex(const std::filesystem::path& file) {
    const auto text = readText(file);
    return text ? parseHex(*text) : std::nullopt;
}

std::optional<std::uint32_t> readDecimal(const std::filesystem::path& file) {
    const auto text = readText(file);
    return text ? parseDecimal(*text) : std::nullopt;
}

std::optional<std::string> linkTargetName(const std::filesystem::path& link) {
    std::error_code error;
    const auto target = std::filesystem::read_symlink(link, error);
    if (error) {
        return std::nullopt;
    }
    auto name = target.filename().string();
    if (name.empty() || name == "." || name == "..") {
        return std::nullopt;
    }
    return name;
}

std::vector<std::string> subdirectories(const std::filesystem::path& directory) {
    std::vector<std::string> names;
    // readdir's own entry type spares a stat per entry; sysfs folders hold
    // dozens of attribute files for each subfolder.
    std::unique_ptr<DIR, int (*)(DIR*)> stream(::opendir(directory.c_str()), ::closedir);
    if (!stream) {
        return names;
    }
    while (names.size() < maxDirectoryEntries) {
        const dirent* entry = ::readdir(stream.get());
        if (!entry) {
            break;
        }
        const std::string_view name = entry->d_name;
        if (name == "." || name == "..") {
            continue;
        }
        bool isDirectory = entry->d_type == DT_DIR;
        if (entry->d_type == DT_UNKNOWN) {
            struct stat info {};
            isDirectory = ::fstatat(::dirfd(stream.get()), entry->d_name, &info, AT_SYMLINK_NOFOLLOW) == 0 &&
                          S_ISDIR(info.st_mode);
        }
        if (isDirectory) {
            names.emplace_back(name);
        }
    }
    std::sort(names.begin(), names.end(),
              [](const std::string& a, const std::string& b) { return localizedStandardLess(a, b); });
    return names;
}

} // namespace korvane::sysfs
