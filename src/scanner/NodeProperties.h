#pragma once

#include "scanner/PropertyValue.h"

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korvane {

// The property values of a whole saved tree, kept as the text they were saved
// in and read one at a time as a reader asks: a whole-machine dump holds
// hundreds of thousands of values, of which a scan reads a few per node.
// Owns the text; the nodes name their entries by index. Filled while the tree
// is built, read-only after.
class UnparsedPropertyText {
  public:
    // One value's text as it stands in `text()`; no value when it can't be read.
    using ParseValue = std::optional<PropertyValue> (*)(std::string_view valueText);

    // Offsets into the text: saved registries are read only up to a size
    // well below 4 GiB.
    struct Entry {
        std::uint32_t keyStart;
        std::uint32_t keyLength;
        std::uint32_t valueStart;
        std::uint32_t valueLength;
    };

    UnparsedPropertyText(std::string text, ParseValue parseValue)
        : text_(std::move(text)), parseValue_(parseValue) {}

    const std::string& text() const { return text_; }
    std::size_t size() const { return entries_.size(); }

    // Both views must lie in text().
    void add(std::string_view key, std::string_view value);
    void shrinkToFit() { entries_.shrink_to_fit(); }

    std::string_view key(std::size_t index) const;
    std::optional<PropertyValue> value(std::size_t index) const;

  private:
    std::uint32_t offset(std::string_view part) const {
        return static_cast<std::uint32_t>(part.data() - text_.data());
    }

    std::string text_;
    ParseValue parseValue_;
    std::vector<Entry> entries_;
};

// A registry entry's properties: a dictionary, as the live registries and
// snapshots give them, or a run of entries of an UnparsedPropertyText.
// Readers ask for one value at a time and never see which. Reading changes
// nothing, so readers on several threads are safe; editableDictionary() is a
// change.
class NodeProperties {
  public:
    NodeProperties() = default;
    NodeProperties(PropertyDictionary dictionary) : dictionary_(std::move(dictionary)) {}
    NodeProperties(std::initializer_list<PropertyDictionary::value_type> values) : dictionary_(values) {}
    NodeProperties(std::shared_ptr<const UnparsedPropertyText> text, std::size_t first, std::size_t count)
        : text_(std::move(text)), first_(first), count_(count) {}

    // The value under `key`; none when there is none or it can't be read. Of
    // a key given twice, the last readable value counts.
    std::optional<PropertyValue> value(std::string_view key) const;
    bool contains(std::string_view key) const;
    // True when no value can be read.
    bool empty() const;
    // Every readable value.
    PropertyDictionary dictionary() const;
    // The values as a dictionary to change, any saved text read first.
    PropertyDictionary& editableDictionary();

    bool operator==(const NodeProperties& other) const { return dictionary() == other.dictionary(); }

  private:
    PropertyDictionary dictionary_;
    std::shared_ptr<const UnparsedPropertyText> text_;
    std::size_t first_ = 0;
    std::size_t count_ = 0;
};

} // namespace korvane
