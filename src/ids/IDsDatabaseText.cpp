#include "ids/IDsDatabaseText.h"

#include "base/Text.h"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

namespace korvane {

namespace {

// "%04x" of an ID: the low 32 bits as unsigned, at least four digits. Its
// digit count is part of the key, because "0001" and "00001" are different
// texts to compare against.
std::uint64_t hexKey(std::uint32_t value, unsigned digits) {
    return (static_cast<std::uint64_t>(digits) << 32) | value;
}

std::uint64_t idKey(std::int64_t id) {
    const auto value = static_cast<std::uint32_t>(id);
    unsigned digits = 4;
    while (digits < 8 && (value >> (4 * digits)) != 0) {
        ++digits;
    }
    return hexKey(value, digits);
}

// The line walk trims blanks, tabs and the other Unicode space separators;
// line ends are gone by then.
bool isSpaceSeparator(UChar32 c) {
    if (c < 0x80) {
        return c == ' ' || c == '\t';
    }
    return u_charType(c) == U_SPACE_SEPARATOR;
}

// "Begins with" is a comparison of user-perceived characters: a "#" or the
// blank after the hex field that carries a combining mark is another
// character, and the line doesn't begin with the plain one.
bool extendsPreviousCharacter(UChar32 c) {
    if (c < 0x80) {
        return false;
    }
    const auto kind = u_getIntPropertyValue(c, UCHAR_GRAPHEME_CLUSTER_BREAK);
    return kind == U_GCB_EXTEND || kind == U_GCB_ZWJ || kind == U_GCB_SPACING_MARK;
}

class Utf8View {
  public:
    explicit Utf8View(std::string_view text)
        : bytes_(reinterpret_cast<const std::uint8_t*>(text.data())),
          size_(static_cast<std::int32_t>(text.size())) {}

    UChar32 scalarAt(std::int32_t position) const {
        UChar32 c;
        U8_NEXT_UNSAFE(bytes_, position, c);
        return c;
    }

    // Ends of the line [begin, end) without leading and trailing separators.
    std::pair<std::int32_t, std::int32_t> trim(std::int32_t begin, std::int32_t end) const {
        while (begin < end) {
            std::int32_t next = begin;
            UChar32 c;
            U8_NEXT_UNSAFE(bytes_, next, c);
            if (!isSpaceSeparator(c)) {
                break;
            }
            begin = next;
        }
        while (end > begin) {
            std::int32_t previous = end;
            UChar32 c;
            U8_PREV_UNSAFE(bytes_, previous, c);
            if (!isSpaceSeparator(c)) {
                break;
            }
            end = previous;
        }
        return {begin, end};
    }

    // Length in bytes of the line end starting at position, 0 if none: line
    // feed, vertical tab, form feed, carriage return, U+0085, U+2028, U+2029.
    // A CR LF pair counts as two ends; the empty line between is skipped.
    std::int32_t lineEndLength(std::int32_t position) const {
        const std::uint8_t byte = bytes_[position];
        if (byte >= 0x0A && byte <= 0x0D) {
            return 1;
        }
        if (byte == 0xC2 && position + 1 < size_ && bytes_[position + 1] == 0x85) {
            return 2;
        }
        if (byte == 0xE2 && position + 2 < size_ && bytes_[position + 1] == 0x80 &&
            (bytes_[position + 2] == 0xA8 || bytes_[position + 2] == 0xA9)) {
            return 3;
        }
        return 0;
    }

    std::int32_t size() const { return size_; }

  private:
    const std::uint8_t* bytes_;
    std::int32_t size_;
};

} // namespace

IDsDatabaseText::IDsDatabaseText(std::string_view bytes) {
    if (bytes.size() <= maximumTextBytes && isValidUTF8(bytes)) {
        text_.assign(bytes);
    }
}

const IDsDatabaseText::Index& IDsDatabaseText::index() const {
    std::call_once(indexOnce_, [this] { buildIndex(); });
    return index_;
}

void IDsDatabaseText::buildIndex() const {
    const Utf8View view(text_);
    const std::int32_t size = view.size();
    std::int32_t lineBegin = 0;
    while (lineBegin <= size) {
        std::int32_t lineEnd = lineBegin;
        std::int32_t endLength = 0;
        while (lineEnd < size && (endLength = view.lineEndLength(lineEnd)) == 0) {
            ++lineEnd;
        }
        const std::int32_t nextBegin = lineEnd + (lineEnd < size ? endLength : 1);

        const bool isComment =
            lineEnd > lineBegin && text_[static_cast<std::size_t>(lineBegin)] == '#' &&
            !(lineBegin + 1 < lineEnd && extendsPreviousCharacter(view.scalarAt(lineBegin + 1)));
        const auto [begin, end] = view.trim(lineBegin, lineEnd);
        if (isComment || begin == end) {
            lineBegin = nextBegin;
            continue;
        }

        Line line;
        line.begin = static_cast<std::uint32_t>(begin);
        line.length = static_cast<std::uint32_t>(end - begin);
        line.isDeviceCandidate = text_[static_cast<std::size_t>(lineBegin)] == '\t';

        // The lower-cased line "begins with the hex followed by one blank, or
        // equals the hex": its leading hex digits are the whole hex, and after
        // them comes the end or a plain blank.
        std::uint32_t value = 0;
        unsigned digits = 0;
        std::int32_t position = begin;
        while (position < end && digits <= 8) {
            const int digit = hexDigitValue(text_[static_cast<std::size_t>(position)]);
            if (digit < 0) {
                break;
            }
            value = (value << 4) | static_cast<std::uint32_t>(digit);
            ++digits;
            ++position;
        }
        const bool isFieldEnd =
            position == end ||
            (text_[static_cast<std::size_t>(position)] == ' ' &&
             !(position + 1 < end && extendsPreviousCharacter(view.scalarAt(position + 1))));
        if (digits >= 4 && digits <= 8 && isFieldEnd) {
            line.key = hexKey(value, digits);
        }

        if (line.isDeviceCandidate && line.key == 0) {
            lineBegin = nextBegin;
            continue;
        }
        if (!line.isDeviceCandidate && line.key != 0) {
            index_.firstVendorLine.emplace(line.key, static_cast<std::uint32_t>(index_.lines.size()));
        }
        index_.lines.push_back(line);
        lineBegin = nextBegin;
    }
}

std::string_view IDsDatabaseText::nameField(const Line& line) const {
    // Only keyed lines get here: their first four characters are ASCII digits.
    const std::string_view trimmedLine = std::string_view(text_).substr(line.begin, line.length);
    const Utf8View view(trimmedLine);
    const auto [begin, end] = view.trim(4, view.size());
    return trimmedLine.substr(static_cast<std::size_t>(begin), static_cast<std::size_t>(end - begin));
}

std::string IDsDatabaseText::name(std::int64_t vendorID, std::int64_t deviceID) const {
    if (text_.empty()) {
        return {};
    }
    const Index& lines = index();
    const std::uint64_t vendorKey = idKey(vendorID);
    const std::uint64_t deviceKey = idKey(deviceID);
    const auto first = lines.firstVendorLine.find(vendorKey);
    if (first == lines.firstVendorLine.end()) {
        return {};
    }
    // Every line before the vendor's first one leaves the walk as it began, so
    // starting here changes nothing. Further lines of the same vendor continue
    // its block and rename it.
    std::string_view vendorName;
    for (std::size_t i = first->second; i < lines.lines.size(); ++i) {
        const Line& line = lines.lines[i];
        if (line.isDeviceCandidate) {
            if (line.key != deviceKey) {
                continue;
            }
            const std::string_view deviceName = nameField(line);
            if (vendorName.empty()) {
                return std::string(deviceName);
            }
            if (deviceName.empty()) {
                return std::string(vendorName);
            }
            std::string result;
            result.reserve(vendorName.size() + 1 + deviceName.size());
            result.append(vendorName).append(1, ' ').append(deviceName);
            return result;
        }
        if (line.key != vendorKey) {
            break;
        }
        vendorName = nameField(line);
    }
    return std::string(vendorName);
}

} // namespace korvane
