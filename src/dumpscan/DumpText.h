#pragma once

// The text machinery of the line scanner: the dump's lines with their tree
// shape, the node marker, and the limits that keep every pass over a dump
// linear in its size.

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace korvane {

// Node lines of real dumps stay under 300 characters (property lines reach
// 640 KB). The node expressions backtrack over a line once per "+-o" in it, so
// a long line packed with them would take quadratic time; such a line is
// taken for a property line and no expression looks at it.
inline constexpr std::size_t maximumNodeLineBytes = 16 * 1024;

// Each port is looked at together with everything below it, so the work grows
// with how many port lines enclose one another. Real trees nest ports only
// through hubs (USB allows five tiers); a port line inside more port blocks
// than this is taken for no port, which keeps the parse linear in the text.
inline constexpr std::size_t maximumPortNesting = 32;

// The lines of a dump's text with the tree shape the dump parsers read from
// them: a line's depth is the column of its first "+-o" (no "+-o" is deepest
// of all), a node line holds "+-o " somewhere, and a line's block runs to the
// next node line that is not deeper. Built once in one pass, so that finding a
// block or a node's own property lines never rescans the text.
//
// Holds views into the text it was built from; the text must outlive it.
class DumpLines {
  public:
    static constexpr std::int64_t deepest = std::numeric_limits<std::int64_t>::max();

    // Splits at every newline character (LF, VT, FF, CR, NEL, LS, PS), each on its own.
    explicit DumpLines(std::string_view text);

    std::size_t size() const { return lines_.size(); }
    std::string_view line(std::size_t index) const { return lines_[index]; }

    std::int64_t depth(std::size_t index) const;

    // One past the last line of the block that starts at `index`.
    std::size_t blockEnd(std::size_t index) const;
    // One past the last of the block's own lines: the first child's node line,
    // or the block's end when it has no child.
    std::size_t propertiesEnd(std::size_t index) const;

    // Lines [begin, end) joined with line feeds.
    std::string joined(std::size_t begin, std::size_t end) const;

    // Indexes of the lines that hold "+-o" in any case, ascending: the only
    // lines any node expression can match.
    const std::vector<std::size_t>& markedLines() const { return markedLines_; }
    // The first entry of markedLines() at or after `index`.
    std::size_t firstMarkedAtOrAfter(std::size_t index) const;

  private:
    struct Mark {
        std::int64_t depth;
        std::size_t blockEnd;
    };

    void index();
    const Mark* mark(std::size_t index) const;

    std::vector<std::string_view> lines_;
    std::vector<std::size_t> markedLines_;
    std::vector<Mark> marks_; // parallel to markedLines_
    std::vector<std::size_t> nodeLines_;
};

// The first "+-o" or "+-O" at or after `from`, as the case-insensitive node
// expressions see the marker.
std::size_t findNodeMarker(std::string_view text, std::size_t from);

} // namespace korvane
