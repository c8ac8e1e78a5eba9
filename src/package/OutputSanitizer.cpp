#include "package/OutputSanitizer.h"

#include "base/ASCIIText.h"
#include "base/FileIO.h"
#include "base/Text.h"
#include "package/SensitiveTextRedaction.h"
#include "tools/ProcessRunner.h"

#include <array>
#include <string_view>
#include <system_error>
#include <vector>

namespace korvane {

namespace {

constexpr double plutilTimeout = 60;

// Far below any real work folder's nesting, far above what a loop of bind
// mounts could make endless.
constexpr int maximumDepth = 64;

constexpr std::array<std::string_view, 3> propertyListExtensions = {"plist", "spx", "xml"};
constexpr std::array<std::string_view, 2> plainTextExtensions = {"txt", "log"};

// ASCII lower-casing is enough: no other scalar lower-cases onto a letter of
// the extensions we look for.
std::string lowercasedExtension(const std::filesystem::path& file) {
    std::string extension = file.extension().string();
    if (!extension.empty()) {
        extension.erase(0, 1);
    }
    return asciiLowercased(extension);
}

template <std::size_t N>
bool isOneOf(std::string_view extension, const std::array<std::string_view, N>& extensions) {
    for (const auto candidate : extensions) {
        if (extension == candidate) {
            return true;
        }
    }
    return false;
}

bool isHidden(const std::filesystem::path& entry) {
    return entry.filename().string().starts_with('.');
}

} // namespace

void sanitizeTextLikeFile(const std::filesystem::path& file, const std::string& plutilPath) {
    if (isOneOf(lowercasedExtension(file), propertyListExtensions)) {
        try {
            runProcess(plutilPath, {"-convert", "xml1", file.string()}, std::nullopt, plutilTimeout);
        } catch (const std::exception&) {
            // Not a property list, or the tool is gone: mask the file as it is.
        }
    }
    // Only a regular file is read: opening a pipe or a device that merely
    // bears a text name could block the pass for good.
    std::error_code error;
    if (!std::filesystem::is_regular_file(std::filesystem::status(file, error))) {
        return;
    }
    const auto bytes = readFileBytes(file);
    if (!bytes || !isValidUTF8(*bytes)) {
        return;
    }
    writeFileAtomically(file, redactSensitiveText(*bytes));
}

void sanitizeDirectory(const std::filesystem::path& folder, const std::string& plutilPath) {
    // Our own walk rather than recursive_directory_iterator, which ends the
    // whole walk on the first folder it can't open; here such a folder only
    // loses its own entries.
    struct Pending {
        std::filesystem::path folder;
        int depth;
    };
    std::vector<Pending> pending{{folder, 0}};
    while (!pending.empty()) {
        const Pending current = std::move(pending.back());
        pending.pop_back();
        std::error_code error;
        std::filesystem::directory_iterator entries(current.folder, error);
        for (; !error && entries != std::filesystem::directory_iterator(); entries.increment(error)) {
            const auto& path = entries->path();
            if (isHidden(path)) {
                continue;
            }
            // A link is taken as what it is, not what it points at: a link to
            // a folder is never walked into, which also rules out cycles.
            std::error_code statusError;
            if (entries->symlink_status(statusError).type() == std::filesystem::file_type::directory) {
                if (current.depth < maximumDepth) {
                    pending.push_back({path, current.depth + 1});
                }
                continue;
            }
            const std::string extension = lowercasedExtension(path);
            if (!isOneOf(extension, propertyListExtensions) && !isOneOf(extension, plainTextExtensions)) {
                continue;
            }
            try {
                sanitizeTextLikeFile(path, plutilPath);
            } catch (const std::exception&) {
                // A file that can't be written goes into the ZIP as it was.
            }
        }
    }
}

} // namespace korvane
