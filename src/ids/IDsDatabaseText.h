#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace korvane {

// One ids database (pci.ids or usb.ids) held as text, searched by the line
// walk of the ids format: the first top-level line that starts with the
// vendor's hex opens its block, the block's first tab-indented line that
// starts with the device's hex names the device, and the next other top-level
// line closes the block.
//
// A search gives exactly what walking every line from the top would give, but
// starts at the vendor's first line: an index of the lines that can matter is
// built on the first search (once, whichever thread gets there first) and
// shared by all later ones. Immutable once made; safe to search from any
// number of threads.
class IDsDatabaseText {
  public:
    // Real databases are a few MiB at most; beyond this a file is not one.
    static constexpr std::size_t maximumTextBytes = 32u * 1024u * 1024u;

    // Takes a file's bytes. Bytes that aren't valid UTF-8 as a whole, or more
    // than maximumTextBytes of them, count as no database at all.
    explicit IDsDatabaseText(std::string_view bytes);

    IDsDatabaseText(const IDsDatabaseText&) = delete;
    IDsDatabaseText& operator=(const IDsDatabaseText&) = delete;

    // "Vendor Device", the vendor's name alone when the device isn't listed
    // under it, or "" when the vendor isn't listed. Never fails.
    std::string name(std::int64_t vendorID, std::int64_t deviceID) const;

  private:
    // A line that can change a walk's course: a top-level line (it opens or
    // closes a block) or a tab-indented one that starts with a hex key. Lines
    // the walk skips, and tab-indented ones that can never match, are left out.
    struct Line {
        std::uint32_t begin = 0; // the trimmed line, in text_
        std::uint32_t length = 0;
        std::uint64_t key = 0; // hexKey of its leading hex field, 0 for none
        bool isDeviceCandidate = false;
    };

    struct Index {
        std::vector<Line> lines;
        std::unordered_map<std::uint64_t, std::uint32_t> firstVendorLine;
    };

    const Index& index() const;
    void buildIndex() const;
    std::string_view nameField(const Line& line) const;

    std::string text_;
    mutable std::once_flag indexOnce_;
    mutable Index index_;
};

} // namespace korvane
