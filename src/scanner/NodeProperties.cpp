#include "scanner/NodeProperties.h"

namespace korvane {

void UnparsedPropertyText::add(std::string_view key, std::string_view value) {
    entries_.push_back({offset(key), static_cast<std::uint32_t>(key.size()), offset(value),
                        static_cast<std::uint32_t>(value.size())});
}

std::string_view UnparsedPropertyText::key(std::size_t index) const {
    const Entry& entry = entries_[index];
    return std::string_view(text_).substr(entry.keyStart, entry.keyLength);
}

std::optional<PropertyValue> UnparsedPropertyText::value(std::size_t index) const {
    const Entry& entry = entries_[index];
    return parseValue_(std::string_view(text_).substr(entry.valueStart, entry.valueLength));
}

std::optional<PropertyValue> NodeProperties::value(std::string_view key) const {
    if (!text_) {
        const auto found = dictionary_.find(key);
        return found == dictionary_.end() ? std::nullopt : std::optional(found->second);
    }
    for (std::size_t index = first_ + count_; index-- > first_;) {
        if (text_->key(index) == key) {
            if (auto value = text_->value(index)) {
                return value;
            }
        }
    }
    return std::nullopt;
}

bool NodeProperties::contains(std::string_view key) const {
    return text_ ? value(key).has_value() : dictionary_.contains(key);
}

bool NodeProperties::empty() const {
    if (!text_) {
        return dictionary_.empty();
    }
    for (std::size_t index = first_; index < first_ + count_; ++index) {
        if (text_->value(index)) {
            return false;
        }
    }
    return true;
}

PropertyDictionary NodeProperties::dictionary() const {
    if (!text_) {
        return dictionary_;
    }
    PropertyDictionary values;
    for (std::size_t index = first_; index < first_ + count_; ++index) {
        if (auto value = text_->value(index)) {
            values.insert_or_assign(std::string(text_->key(index)), std::move(*value));
        }
    }
    return values;
}

PropertyDictionary& NodeProperties::editableDictionary() {
    if (text_) {
        dictionary_ = dictionary();
        text_.reset();
    }
    return dictionary_;
}

} // namespace korvane
