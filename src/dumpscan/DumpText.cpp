#include "dumpscan/DumpText.h"

#include <algorithm>
#include <cstring>
#include <map>

namespace korvane {

namespace {

constexpr std::string_view marker = "+-o";

// Length of the newline character that starts at `i`, or 0.
std::size_t newlineLength(std::string_view text, std::size_t i) {
    const auto c = static_cast<unsigned char>(text[i]);
    if (c >= 0x0A && c <= 0x0D) {
        return 1;
    }
    if (c == 0xC2 && i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) == 0x85) {
        return 2;
    }
    if (c == 0xE2 && i + 2 < text.size() && static_cast<unsigned char>(text[i + 1]) == 0x80 &&
        (static_cast<unsigned char>(text[i + 2]) == 0xA8 ||
         static_cast<unsigned char>(text[i + 2]) == 0xA9)) {
        return 3;
    }
    return 0;
}

bool hasOnlyLineFeeds(std::string_view text) {
    for (const char c : {'\v', '\f', '\r'}) {
        if (std::memchr(text.data(), c, text.size()) != nullptr) {
            return false;
        }
    }
    return text.find("\xC2\x85") == std::string_view::npos &&
           text.find("\xE2\x80\xA8") == std::string_view::npos &&
           text.find("\xE2\x80\xA9") == std::string_view::npos;
}

// Columns count characters, not bytes: every byte that doesn't continue a
// UTF-8 sequence starts one.
std::int64_t characterCount(std::string_view text) {
    std::int64_t count = 0;
    for (const char c : text) {
        count += (static_cast<unsigned char>(c) & 0xC0) != 0x80 ? 1 : 0;
    }
    return count;
}

} // namespace

std::size_t findNodeMarker(std::string_view text, std::size_t from) {
    while (from < text.size()) {
        const std::size_t at = text.find("+-", from);
        if (at == std::string_view::npos || at + 2 >= text.size()) {
            return std::string_view::npos;
        }
        if (text[at + 2] == 'o' || text[at + 2] == 'O') {
            return at;
        }
        from = at + 1;
    }
    return std::string_view::npos;
}

DumpLines::DumpLines(std::string_view text) {
    // Real dumps hold line feeds only; memchr over them is several times
    // faster than looking at every byte for the rarer newline characters.
    if (hasOnlyLineFeeds(text)) {
        std::size_t start = 0;
        while (true) {
            const void* found = std::memchr(text.data() + start, '\n', text.size() - start);
            if (found == nullptr) {
                lines_.push_back(text.substr(start));
                break;
            }
            const auto end = static_cast<std::size_t>(static_cast<const char*>(found) - text.data());
            lines_.push_back(text.substr(start, end - start));
            start = end + 1;
        }
    } else {
        std::size_t start = 0;
        std::size_t i = 0;
        while (i < text.size()) {
            if (const std::size_t length = newlineLength(text, i); length > 0) {
                lines_.push_back(text.substr(start, i - start));
                i += length;
                start = i;
            } else {
                ++i;
            }
        }
        lines_.push_back(text.substr(start));
    }
    index();
}

void DumpLines::index() {
    // Lines whose block is still open, by depth: a node line closes every one
    // that is not shallower than itself.
    std::multimap<std::int64_t, std::size_t> open;
    for (std::size_t i = 0; i < lines_.size(); ++i) {
        const std::string_view text = lines_[i];
        if (findNodeMarker(text, 0) == std::string_view::npos) {
            continue;
        }
        // Depth and node lines go by the exact characters; the expressions,
        // being case-insensitive, also take "+-O", so such lines are marked
        // too, as deepest of all.
        const std::size_t at = text.find(marker);
        const std::int64_t depth =
            at == std::string_view::npos ? deepest : characterCount(text.substr(0, at));
        const bool isNode = at != std::string_view::npos && text.find("+-o ", at) != std::string_view::npos;
        if (isNode) {
            for (auto it = open.lower_bound(depth); it != open.end(); it = open.erase(it)) {
                marks_[it->second].blockEnd = i;
            }
            nodeLines_.push_back(i);
        }
        open.emplace(depth, marks_.size());
        markedLines_.push_back(i);
        marks_.push_back(Mark{depth, lines_.size()});
    }
}

const DumpLines::Mark* DumpLines::mark(std::size_t index) const {
    const auto it = std::lower_bound(markedLines_.begin(), markedLines_.end(), index);
    if (it == markedLines_.end() || *it != index) {
        return nullptr;
    }
    return &marks_[static_cast<std::size_t>(it - markedLines_.begin())];
}

std::size_t DumpLines::firstMarkedAtOrAfter(std::size_t index) const {
    return static_cast<std::size_t>(std::lower_bound(markedLines_.begin(), markedLines_.end(), index) -
                                    markedLines_.begin());
}

std::int64_t DumpLines::depth(std::size_t index) const {
    const Mark* found = mark(index);
    return found ? found->depth : deepest;
}

std::size_t DumpLines::blockEnd(std::size_t index) const {
    if (const Mark* found = mark(index)) {
        return found->blockEnd;
    }
    // The deepest line: every node line after it closes its block.
    const auto next = std::upper_bound(nodeLines_.begin(), nodeLines_.end(), index);
    return next == nodeLines_.end() ? lines_.size() : *next;
}

std::size_t DumpLines::propertiesEnd(std::size_t index) const {
    const auto next = std::upper_bound(nodeLines_.begin(), nodeLines_.end(), index);
    const std::size_t firstChild = next == nodeLines_.end() ? lines_.size() : *next;
    return std::min(firstChild, blockEnd(index));
}

std::string DumpLines::joined(std::size_t begin, std::size_t end) const {
    std::size_t length = 0;
    for (std::size_t i = begin; i < end; ++i) {
        length += lines_[i].size() + 1;
    }
    std::string text;
    text.reserve(length);
    for (std::size_t i = begin; i < end; ++i) {
        if (i > begin) {
            text.push_back('\n');
        }
        text.append(lines_[i]);
    }
    return text;
}

} // namespace korvane
