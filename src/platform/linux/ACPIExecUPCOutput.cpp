#include "platform/linux/ACPIExecUPCOutput.h"

#include <limits>
#include <vector>

namespace korvane {

namespace {

// Far above a real run: a machine's full "All _UPC" prints a few kilobytes
// per hundred ports.
constexpr std::size_t maxOutputBytes = std::size_t{16} * 1024 * 1024;
constexpr std::size_t maxEntries = 4096;
constexpr std::size_t maxPathBytes = 256;

constexpr std::string_view upcSuffix = "._UPC";
constexpr std::string_view evaluationPrefix = "Evaluation of ";
constexpr std::string_view tablesLoadedPrefix = "ACPI: ";
constexpr std::string_view tablesLoadedSuffix = " ACPI AML tables successfully acquired and loaded";
constexpr std::string_view packagePrefix = "[Package] Contains ";
constexpr std::string_view integerPrefix = "[Integer] = ";
constexpr std::string_view notAPackage = "returned no package of two integers";

std::size_t indentOf(std::string_view line) {
    std::size_t indent = 0;
    while (indent < line.size() && (line[indent] == ' ' || line[indent] == '\t')) {
        ++indent;
    }
    return indent;
}

std::string_view withoutTrailingSpace(std::string_view line) {
    while (!line.empty() && (line.back() == ' ' || line.back() == '\t' || line.back() == '\r')) {
        line.remove_suffix(1);
    }
    return line;
}

// "\_SB_.PCI0.XHC_.RHUB.HS01._UPC" -> "\_SB_.PCI0.XHC_.RHUB.HS01".
std::optional<std::string_view> devicePathOf(std::string_view object) {
    if (!object.ends_with(upcSuffix)) {
        return std::nullopt;
    }
    const std::string_view device = object.substr(0, object.size() - upcSuffix.size());
    if (device.size() < 2 || device.size() > maxPathBytes || device.front() != '\\') {
        return std::nullopt;
    }
    for (char c : device) {
        const bool isNameCharacter = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
                                     (c >= '0' && c <= '9') || c == '_' || c == '.' || c == '\\' || c == '^';
        if (!isNameCharacter) {
            return std::nullopt;
        }
    }
    return device;
}

std::optional<std::uint64_t> parseNumber(std::string_view text, unsigned base, std::size_t maxDigits) {
    if (text.empty() || text.size() > maxDigits) {
        return std::nullopt;
    }
    std::uint64_t value = 0;
    for (char c : text) {
        unsigned digit = 0;
        if (c >= '0' && c <= '9') {
            digit = static_cast<unsigned>(c - '0');
        } else if (base == 16 && c >= 'A' && c <= 'F') {
            digit = static_cast<unsigned>(c - 'A' + 10);
        } else if (base == 16 && c >= 'a' && c <= 'f') {
            digit = static_cast<unsigned>(c - 'a' + 10);
        } else {
            return std::nullopt;
        }
        value = value * base + digit;
    }
    return value;
}

// The object that an "Evaluation of" line opened, until its listing ends.
struct PendingObject {
    std::string path;
    bool isPackage = false;
    std::size_t elementIndent = 0;
    std::vector<std::optional<std::uint64_t>> firstElements{}; // the two that _UPC defines
};

class Parser {
  public:
    ACPIExecUPCOutput result;

    void line(std::string_view text) {
        text = withoutTrailingSpace(text);
        if (pending_) {
            const std::size_t indent = indentOf(text);
            if (!text.empty() && indent > 0) {
                objectLine(text.substr(indent), indent);
                return;
            }
            finish();
        }
        topLine(text);
    }

    void finish() {
        if (!pending_) {
            return;
        }
        const auto& elements = pending_->firstElements;
        if (pending_->isPackage && elements.size() == 2 && elements[0] && elements[1] &&
            *elements[1] <= static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) {
            add(result.answers, pending_->path,
                FirmwareUPC{*elements[0] != 0, static_cast<std::int64_t>(*elements[1])});
        } else {
            add(result.failures, pending_->path, std::string(notAPackage));
        }
        pending_.reset();
    }

  private:
    template <typename Value>
    void add(std::map<std::string, Value, std::less<>>& entries, std::string_view path, Value value) {
        if (result.answers.size() + result.failures.size() >= maxEntries || result.answers.contains(path) ||
            result.failures.contains(path)) {
            return;
        }
        entries.emplace(std::string(path), std::move(value));
    }

    void objectLine(std::string_view text, std::size_t indent) {
        if (!pending_->isPackage) {
            if (text.starts_with(packagePrefix) && text.ends_with(" Elements:")) {
                pending_->isPackage = true;
                pending_->elementIndent = indent + 2;
            }
            return;
        }
        if (indent != pending_->elementIndent || pending_->firstElements.size() == 2) {
            return; // a nested package's lines, or elements past the two we need
        }
        pending_->firstElements.push_back(text.starts_with(integerPrefix)
                                              ? parseNumber(text.substr(integerPrefix.size()), 16, 16)
                                              : std::nullopt);
    }

    void topLine(std::string_view text) {
        if (text.starts_with(tablesLoadedPrefix) && text.ends_with(tablesLoadedSuffix)) {
            const auto count =
                text.substr(tablesLoadedPrefix.size(),
                            text.size() - tablesLoadedPrefix.size() - tablesLoadedSuffix.size());
            if (auto value = parseNumber(count, 10, 9)) {
                result.loadedTables = static_cast<std::uint32_t>(*value);
            }
            return;
        }
        if (text.starts_with(evaluationPrefix)) {
            const std::string_view rest = text.substr(evaluationPrefix.size());
            const std::size_t space = rest.find(' ');
            const auto path = devicePathOf(rest.substr(0, space));
            if (!path || space == std::string_view::npos) {
                return;
            }
            const std::string_view outcome = rest.substr(space + 1);
            if (outcome.starts_with("returned object")) {
                pending_ = PendingObject{std::string(*path)};
            } else if (constexpr std::string_view failed = "failed with status ";
                       outcome.starts_with(failed)) {
                add(result.failures, *path, std::string(outcome.substr(failed.size())));
            }
            return;
        }
        // "\_SB_.PCI0.XHC_.RHUB.HS05._UPC   returned AE_AML_DIVIDE_BY_ZERO"
        const std::size_t space = text.find(' ');
        const std::size_t word = text.find_first_not_of(' ', space);
        if (space == std::string_view::npos || word == std::string_view::npos) {
            return;
        }
        const auto path = devicePathOf(text.substr(0, space));
        const std::string_view outcome = text.substr(word);
        if (path && outcome.starts_with("returned AE_") && outcome != "returned AE_OK") {
            add(result.failures, *path, std::string(outcome.substr(9)));
        }
    }

    std::optional<PendingObject> pending_;
};

} // namespace

ACPIExecUPCOutput ACPIExecUPCOutput::parse(std::string_view output) {
    output = output.substr(0, maxOutputBytes);
    Parser parser;
    std::size_t start = 0;
    while (start < output.size()) {
        const std::size_t end = std::min(output.find('\n', start), output.size());
        parser.line(output.substr(start, end - start));
        start = end + 1;
    }
    parser.finish();
    return std::move(parser.result);
}

} // namespace korvane
