#include "savedregistry/BinaryPlistGuard.h"

#include <optional>
#include <vector>

namespace korvane {
namespace {

constexpr std::size_t kTrailerSize = 32;
constexpr std::size_t kHeaderSize = 8;

std::optional<std::uint64_t> readBigEndian(std::string_view bytes, std::uint64_t offset, std::size_t width) {
    if (width == 0 || width > 8 || offset > bytes.size() || bytes.size() - offset < width) {
        return std::nullopt;
    }
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < width; ++i) {
        value = (value << 8) | static_cast<std::uint8_t>(bytes[offset + i]);
    }
    return value;
}

class ExpansionCounter {
  public:
    ExpansionCounter(std::string_view bytes, std::uint64_t maxNodes, int maxDepth)
        : bytes_(bytes), maxNodes_(maxNodes), maxDepth_(maxDepth) {}

    bool fits() {
        if (bytes_.size() < kHeaderSize + kTrailerSize) {
            return false;
        }
        const std::uint64_t trailer = bytes_.size() - kTrailerSize;
        offsetWidth_ = static_cast<std::uint8_t>(bytes_[trailer + 6]);
        refWidth_ = static_cast<std::uint8_t>(bytes_[trailer + 7]);
        const auto objectCount = readBigEndian(bytes_, trailer + 8, 8);
        const auto top = readBigEndian(bytes_, trailer + 16, 8);
        tableOffset_ = readBigEndian(bytes_, trailer + 24, 8).value_or(0);
        if (!objectCount || !top || offsetWidth_ < 1 || offsetWidth_ > 8 || refWidth_ < 1 || refWidth_ > 8 ||
            *objectCount == 0 || *objectCount > bytes_.size() || *top >= *objectCount ||
            tableOffset_ < kHeaderSize || tableOffset_ > trailer ||
            (trailer - tableOffset_) / offsetWidth_ < *objectCount) {
            return false;
        }
        objectCount_ = *objectCount;
        expanded_.assign(objectCount_, kUnknown);
        const auto total = expandedSize(*top, 0);
        return total && *total <= maxNodes_;
    }

  private:
    static constexpr std::uint64_t kUnknown = 0;
    static constexpr std::uint64_t kInProgress = ~std::uint64_t{0};

    struct ObjectHeader {
        unsigned type = 0;
        std::uint64_t count = 0;
        std::uint64_t contentStart = 0;
    };

    // The marker's type nibble and the object's element count, with the
    // count's extension when the low nibble is 0xF.
    std::optional<ObjectHeader> header(std::uint64_t object) const {
        const auto offset = readBigEndian(bytes_, tableOffset_ + object * offsetWidth_, offsetWidth_);
        if (!offset || *offset < kHeaderSize || *offset >= tableOffset_) {
            return std::nullopt;
        }
        const auto marker = static_cast<std::uint8_t>(bytes_[*offset]);
        ObjectHeader result{static_cast<unsigned>(marker >> 4), marker & 0x0Fu, *offset + 1};
        const bool hasLength =
            result.type == 0x4 || result.type == 0x5 || result.type == 0x6 || result.type >= 0xA;
        if (result.count == 0x0F && hasLength) {
            if (result.contentStart >= tableOffset_) {
                return std::nullopt;
            }
            const auto intMarker = static_cast<std::uint8_t>(bytes_[result.contentStart]);
            const std::size_t width = std::size_t{1} << (intMarker & 0x0F);
            if ((intMarker >> 4) != 0x1 || width > 8) {
                return std::nullopt;
            }
            const auto wide = readBigEndian(bytes_, result.contentStart + 1, width);
            if (!wide) {
                return std::nullopt;
            }
            result.count = *wide;
            result.contentStart += 1 + width;
        }
        return result;
    }

    // libplist asserts when it hands out a dictionary key that holds a NUL.
    bool isUsableKey(std::uint64_t object) const {
        if (object >= objectCount_) {
            return false;
        }
        const auto key = header(object);
        if (!key || (key->type != 0x5 && key->type != 0x6)) {
            return key.has_value();
        }
        const std::uint64_t unit = key->type == 0x6 ? 2 : 1;
        if (key->count > bytes_.size() || key->contentStart > tableOffset_ ||
            (tableOffset_ - key->contentStart) / unit < key->count) {
            return false;
        }
        for (std::uint64_t i = 0; i < key->count; ++i) {
            const std::uint64_t at = key->contentStart + i * unit;
            if (bytes_[at] == 0 && (unit == 1 || bytes_[at + 1] == 0)) {
                return false;
            }
        }
        return true;
    }

    // Objects in the expanded tree under and including `object`; none when
    // over budget, too deep, cyclic or malformed. Each object is counted once,
    // so time stays linear in the table.
    std::optional<std::uint64_t> expandedSize(std::uint64_t object, int depth) {
        if (depth > maxDepth_ || object >= objectCount_) {
            return std::nullopt;
        }
        std::uint64_t& known = expanded_[object];
        if (known == kInProgress) {
            return std::nullopt;
        }
        if (known != kUnknown) {
            return known;
        }
        const auto entry = header(object);
        if (!entry) {
            return std::nullopt;
        }
        const unsigned type = entry->type;
        const bool isContainer = type == 0xA || type == 0xB || type == 0xC || type == 0xD;
        if (!isContainer) {
            known = 1;
            return known;
        }
        const std::uint64_t count = entry->count;
        const std::uint64_t refsStart = entry->contentStart;
        const std::uint64_t refs = type == 0xD ? count * 2 : count;
        if (count > bytes_.size() || refsStart > tableOffset_ ||
            (tableOffset_ - refsStart) / refWidth_ < refs) {
            return std::nullopt;
        }
        known = kInProgress;
        std::uint64_t total = 1;
        for (std::uint64_t i = 0; i < refs; ++i) {
            const auto child = readBigEndian(bytes_, refsStart + i * refWidth_, refWidth_);
            if (!child || (type == 0xD && i < count && !isUsableKey(*child))) {
                return std::nullopt;
            }
            const auto size = expandedSize(*child, depth + 1);
            if (!size) {
                return std::nullopt;
            }
            total += *size;
            if (total > maxNodes_) {
                return std::nullopt;
            }
        }
        expanded_[object] = total;
        return total;
    }

    std::string_view bytes_;
    std::uint64_t maxNodes_;
    int maxDepth_;
    std::size_t offsetWidth_ = 0;
    std::size_t refWidth_ = 0;
    std::uint64_t objectCount_ = 0;
    std::uint64_t tableOffset_ = 0;
    std::vector<std::uint64_t> expanded_;
};

} // namespace

bool binaryPlistFitsBudget(std::string_view bytes, std::uint64_t maxNodes, int maxDepth) {
    return ExpansionCounter(bytes, maxNodes, maxDepth).fits();
}

} // namespace korvane
