#include "savedregistry/IORegTextParser.h"

#include "savedregistry/IORegValueParser.h"
#include "savedregistry/NodeIdentity.h"
#include "savedregistry/RegistryText.h"
#include "savedregistry/SavedRegistryLimits.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace korvane {
namespace {

constexpr std::string_view kNodeMarker = "+-o ";
constexpr std::string_view kKeyEnd = "\" = ";

enum class LineKind { Node, BlockEdge, Property, Blank, Other };

struct Line {
    LineKind kind = LineKind::Other;
    std::size_t indent = 0; // leading '|' and ' ' characters
    std::string_view rest;  // the line behind them
};

Line classify(std::string_view line) {
    Line result;
    std::size_t indent = 0;
    while (indent < line.size() && (line[indent] == ' ' || line[indent] == '|')) {
        ++indent;
    }
    result.indent = indent;
    result.rest = line.substr(indent);
    const std::string_view rest = result.rest;
    if (rest.empty()) {
        result.kind = LineKind::Blank;
    } else if (rest.substr(0, kNodeMarker.size()) == kNodeMarker && indent % 2 == 0) {
        result.kind = LineKind::Node;
    } else if ((rest == "{" || rest == "}") && indent >= 2) {
        result.kind = LineKind::BlockEdge;
    } else if (rest.front() == '"' && indent >= 4 && rest.find(kKeyEnd, 1) != std::string_view::npos) {
        // Text values run over several lines when they hold line feeds; their
        // later lines start at column 0 and rarely look like this.
        result.kind = LineKind::Property;
    }
    return result;
}

struct NodeLine {
    std::string name;
    std::string location;
    std::string className;
};

// A value as it stands in the text: its lines were cut at line feeds, each
// without its carriage return, and are read joined by line feeds. Only a
// value over several lines of a CRLF text needs a copy.
std::optional<PropertyValue> parseValueLines(std::string_view lines) {
    if (lines.find("\r\n") == std::string_view::npos) {
        return parseIORegValue(lines);
    }
    std::string joined;
    joined.reserve(lines.size());
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (lines[i] != '\r' || i + 1 >= lines.size() || lines[i + 1] != '\n') {
            joined.push_back(lines[i]);
        }
    }
    return parseIORegValue(joined);
}

std::string validTextOrEmpty(std::string_view bytes) {
    return isRegistryText(bytes) ? std::string(bytes) : std::string();
}

// "NAME[@LOCATION]  <class CLASS, id ..., ...>"
NodeLine parseNodeLine(std::string_view text) {
    NodeLine result;
    std::string_view namePart = text;
    const std::size_t classStart = text.rfind(" <class ");
    if (classStart != std::string_view::npos) {
        namePart = text.substr(0, classStart);
        if (!namePart.empty() && namePart.back() == ' ') {
            namePart.remove_suffix(1);
        }
        std::string_view classPart = text.substr(classStart + 8);
        classPart = classPart.substr(0, classPart.find_first_of(",>"));
        result.className = validTextOrEmpty(classPart);
    }
    const std::size_t at = namePart.rfind('@');
    if (at != std::string_view::npos) {
        result.location = validTextOrEmpty(namePart.substr(at + 1));
        namePart = namePart.substr(0, at);
    }
    result.name = validTextOrEmpty(namePart);
    return result;
}

// Builds the nodes from the node lines and leaves their values unparsed:
// each property line only marks where its key and value stand in the text,
// which the tree keeps.
class TreeBuilder {
  public:
    explicit TreeBuilder(std::string bytes)
        : values_(std::make_shared<UnparsedPropertyText>(std::move(bytes), parseValueLines)) {}

    std::unique_ptr<NativeUSBNode> build() {
        const std::string_view bytes = values_->text();
        std::size_t position = 0;
        while (position < bytes.size()) {
            std::size_t end = bytes.find('\n', position);
            if (end == std::string_view::npos) {
                end = bytes.size();
            }
            std::string_view line = bytes.substr(position, end - position);
            if (!line.empty() && line.back() == '\r') {
                line.remove_suffix(1);
            }
            takeLine(line);
            position = end + 1;
        }
        flushProperty();
        finishNode();
        values_->shrinkToFit();
        return takeRoot();
    }

  private:
    void takeLine(std::string_view raw) {
        const Line line = classify(raw);
        switch (line.kind) {
        case LineKind::Node:
            flushProperty();
            finishNode();
            startNode(line.indent / 2, parseNodeLine(line.rest.substr(kNodeMarker.size())));
            break;
        case LineKind::Property:
            flushProperty();
            startProperty(line.rest);
            break;
        case LineKind::BlockEdge:
        case LineKind::Blank:
            flushProperty();
            break;
        case LineKind::Other:
            continueProperty(raw);
            break;
        }
    }

    void startNode(std::size_t depth, NodeLine nodeLine) {
        // A line deeper than one below its predecessor is malformed; hang it
        // under the deepest node rather than lose it.
        depth = std::min(depth, path_.size());
        if (depth >= static_cast<std::size_t>(maximumSavedTreeDepth)) {
            current_ = nullptr;
            return;
        }
        path_.resize(depth);
        NativeUSBNode& parent = depth == 0 ? top_ : *path_.back();
        current_ = &parent.addChild({}, {}, std::move(nodeLine.className), {});
        firstValue_ = values_->size();
        path_.push_back(current_);
        entryName_ = std::move(nodeLine.name);
        entryLocation_ = std::move(nodeLine.location);
    }

    void finishNode() {
        if (current_) {
            current_->properties = NodeProperties(values_, firstValue_, values_->size() - firstValue_);
            assignNodeIdentity(*current_, entryName_, entryLocation_);
            current_ = nullptr;
        }
    }

    void startProperty(std::string_view rest) {
        const std::size_t keyEnd = rest.find(kKeyEnd, 1);
        key_ = rest.substr(1, keyEnd - 1);
        value_ = rest.substr(keyEnd + kKeyEnd.size());
        hasProperty_ = true;
    }

    // A text value's further lines: the lines of a text lie one after
    // another, so the value grows to the end of this one.
    void continueProperty(std::string_view raw) {
        if (hasProperty_) {
            value_ = std::string_view(value_.data(),
                                      static_cast<std::size_t>(raw.data() + raw.size() - value_.data()));
        }
    }

    void flushProperty() {
        if (!hasProperty_) {
            return;
        }
        hasProperty_ = false;
        if (current_ && isRegistryText(key_)) {
            values_->add(key_, value_);
        }
    }

    std::unique_ptr<NativeUSBNode> takeRoot() {
        if (top_.children.empty()) {
            return nullptr;
        }
        if (top_.children.size() == 1) {
            std::unique_ptr<NativeUSBNode> root = std::move(top_.children.front());
            top_.children.clear();
            root->parent = nullptr;
            return root;
        }
        auto root = std::make_unique<NativeUSBNode>(std::string(), std::string(), std::string(),
                                                    PropertyDictionary(), nullptr);
        root->children = std::move(top_.children);
        for (auto& child : root->children) {
            child->parent = root.get();
        }
        return root;
    }

    // Holds the top-level entries until the end shows whether there is one.
    NativeUSBNode top_{{}, {}, {}, {}, nullptr};
    std::vector<NativeUSBNode*> path_;
    NativeUSBNode* current_ = nullptr;
    std::string entryName_;
    std::string entryLocation_;

    std::shared_ptr<UnparsedPropertyText> values_;
    std::size_t firstValue_ = 0;
    bool hasProperty_ = false;
    std::string_view key_;
    std::string_view value_;
};

} // namespace

std::unique_ptr<NativeUSBNode> parseIORegText(std::string bytes) {
    // The tree's values name places in the text by 32-bit offsets.
    static_assert(maximumSavedRegistryBytes <= UINT32_MAX);
    if (bytes.size() > maximumSavedRegistryBytes) {
        return nullptr;
    }
    return TreeBuilder(std::move(bytes)).build();
}

bool looksLikeIORegText(std::string_view bytes) {
    std::size_t search = 0;
    while (true) {
        const std::size_t marker = bytes.find(kNodeMarker, search);
        if (marker == std::string_view::npos) {
            return false;
        }
        std::size_t lineStart = marker;
        while (lineStart > 0 && (bytes[lineStart - 1] == ' ' || bytes[lineStart - 1] == '|')) {
            --lineStart;
        }
        if (lineStart == 0 || bytes[lineStart - 1] == '\n') {
            return true;
        }
        search = marker + 1;
    }
}

} // namespace korvane
