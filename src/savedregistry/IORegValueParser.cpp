#include "savedregistry/IORegValueParser.h"

#include "base/Text.h"
#include "savedregistry/RegistryText.h"
#include "savedregistry/SavedRegistryLimits.h"

#include <cstdint>
#include <limits>

namespace korvane {
namespace {

// Where a value stands decides which characters may end it. ioreg escapes
// nothing, so a quote only closes a text when one of these follows it.
enum class Context { TopLevel, DictionaryKey, DictionaryValue, ArrayElement, SetElement, DataText };

bool isTerminator(char c, Context context) {
    switch (context) {
    case Context::TopLevel:
        return false;
    case Context::DictionaryKey:
        return c == '=';
    case Context::DictionaryValue:
        return c == ',' || c == '}';
    case Context::ArrayElement:
        return c == ',' || c == ')';
    case Context::SetElement:
        return c == ',' || c == ']';
    case Context::DataText:
        return c == ',' || c == '>';
    }
    return false;
}

// A single forward pass: the position only ever moves on, and every search for
// a closing quote starts where the last one stopped.
class ValueReader {
  public:
    explicit ValueReader(std::string_view text) : text_(text) {}

    std::optional<PropertyValue> readWhole() {
        auto value = readValue(Context::TopLevel, 0);
        if (!value || pos_ != text_.size()) {
            return std::nullopt;
        }
        return value;
    }

  private:
    bool atEnd() const { return pos_ >= text_.size(); }
    bool at(char c) const { return pos_ < text_.size() && text_[pos_] == c; }

    // After a value: the end for a top-level value, else a character that
    // closes or separates in the enclosing container.
    bool endsHere(Context context) const {
        if (context == Context::TopLevel) {
            return atEnd();
        }
        return !atEnd() && isTerminator(text_[pos_], context);
    }

    std::optional<PropertyValue> readValue(Context context, int depth) {
        if (depth > maximumSavedValueDepth || atEnd()) {
            return std::nullopt;
        }
        switch (text_[pos_]) {
        case '"': {
            auto text = readText(context);
            if (!text || !isRegistryText(*text)) {
                return std::nullopt;
            }
            return PropertyValue(std::string(*text));
        }
        case '<':
            return readData(context);
        case '{':
            return readDictionary(context, depth);
        case '(':
            return readList(')', Context::ArrayElement, context, depth);
        case '[':
            return readList(']', Context::SetElement, context, depth);
        case 'Y':
            return readWord("Yes", 1, context);
        case 'N':
            return readWord("No", 0, context);
        default:
            return readNumber(context);
        }
    }

    // The raw bytes between the quotes; the position ends behind the closing
    // quote.
    std::optional<std::string_view> readText(Context context) {
        const std::size_t start = pos_ + 1;
        if (context == Context::TopLevel) {
            // The line is the value, so the last quote of the line closes it.
            if (text_.size() < start + 1 || text_.back() != '"') {
                return std::nullopt;
            }
            pos_ = text_.size();
            return text_.substr(start, text_.size() - 1 - start);
        }
        std::size_t search = start;
        while (true) {
            const std::size_t quote = text_.find('"', search);
            if (quote == std::string_view::npos || quote + 1 >= text_.size()) {
                return std::nullopt;
            }
            const char next = text_[quote + 1];
            bool closes = isTerminator(next, context);
            // Dictionary keys and data texts are always quoted, so a comma
            // that really separates is followed by a quote.
            if (closes && next == ',' &&
                (context == Context::DictionaryValue || context == Context::DataText)) {
                closes = quote + 2 < text_.size() && text_[quote + 2] == '"';
            }
            if (closes) {
                pos_ = quote + 1;
                return text_.substr(start, quote - start);
            }
            search = quote + 1;
        }
    }

    std::optional<PropertyValue> readWord(std::string_view word, std::int64_t value, Context context) {
        if (text_.substr(pos_, word.size()) != word) {
            return std::nullopt;
        }
        pos_ += word.size();
        if (!endsHere(context)) {
            return std::nullopt;
        }
        return PropertyValue(value);
    }

    std::optional<PropertyValue> readNumber(Context context) {
        const bool isNegative = at('-');
        if (isNegative) {
            ++pos_;
        }
        unsigned base = 10;
        if (text_.substr(pos_, 2) == "0x" || text_.substr(pos_, 2) == "0X") {
            base = 16;
            pos_ += 2;
        }
        std::uint64_t magnitude = 0;
        std::size_t digits = 0;
        while (!atEnd()) {
            const int digit = hexDigitValue(text_[pos_]);
            if (digit < 0 || static_cast<unsigned>(digit) >= base) {
                break;
            }
            if (magnitude >
                (std::numeric_limits<std::uint64_t>::max() - static_cast<unsigned>(digit)) / base) {
                return std::nullopt;
            }
            magnitude = magnitude * base + static_cast<unsigned>(digit);
            ++pos_;
            ++digits;
        }
        if (digits == 0 || !endsHere(context)) {
            return std::nullopt;
        }
        if (isNegative) {
            if (magnitude > std::uint64_t{1} << 63) {
                return std::nullopt;
            }
            return PropertyValue(static_cast<std::int64_t>(0 - magnitude));
        }
        // ioreg prints numbers unsigned, so a negative one arrives as its
        // two's complement; the cast gives it back.
        return PropertyValue(static_cast<std::int64_t>(magnitude));
    }

    std::optional<PropertyValue> readData(Context context) {
        ++pos_;
        ByteBuffer bytes;
        if (at('"')) {
            // Texts stand for NUL-terminated strings one after another.
            while (true) {
                auto text = readText(Context::DataText);
                if (!text) {
                    return std::nullopt;
                }
                bytes.insert(bytes.end(), text->begin(), text->end());
                bytes.push_back(0);
                if (at('>')) {
                    break;
                }
                ++pos_; // the comma
            }
        } else {
            while (!atEnd() && text_[pos_] != '>') {
                const int high = hexDigitValue(text_[pos_]);
                const int low = pos_ + 1 < text_.size() ? hexDigitValue(text_[pos_ + 1]) : -1;
                if (high < 0 || low < 0) {
                    return std::nullopt;
                }
                bytes.push_back(static_cast<std::uint8_t>(high * 16 + low));
                pos_ += 2;
            }
            if (atEnd()) {
                return std::nullopt;
            }
        }
        ++pos_; // the '>'
        if (!endsHere(context)) {
            return std::nullopt;
        }
        return PropertyValue(std::move(bytes));
    }

    std::optional<PropertyValue> readDictionary(Context context, int depth) {
        ++pos_;
        PropertyDictionary dictionary;
        if (at('}')) {
            ++pos_;
        } else {
            while (true) {
                if (!at('"')) {
                    return std::nullopt;
                }
                auto key = readText(Context::DictionaryKey);
                if (!key || !isRegistryText(*key)) {
                    return std::nullopt;
                }
                ++pos_; // the '='
                auto value = readValue(Context::DictionaryValue, depth + 1);
                if (!value) {
                    return std::nullopt;
                }
                dictionary.insert_or_assign(std::string(*key), std::move(*value));
                if (at('}')) {
                    ++pos_;
                    break;
                }
                ++pos_; // the comma
            }
        }
        if (!endsHere(context)) {
            return std::nullopt;
        }
        return PropertyValue(std::move(dictionary));
    }

    std::optional<PropertyValue> readList(char close, Context elementContext, Context context, int depth) {
        ++pos_;
        PropertyArray array;
        if (at(close)) {
            ++pos_;
        } else {
            while (true) {
                auto value = readValue(elementContext, depth + 1);
                if (!value) {
                    return std::nullopt;
                }
                array.push_back(std::move(*value));
                if (at(close)) {
                    ++pos_;
                    break;
                }
                ++pos_; // the comma
            }
        }
        if (!endsHere(context)) {
            return std::nullopt;
        }
        return PropertyValue(std::move(array));
    }

    std::string_view text_;
    std::size_t pos_ = 0;
};

} // namespace

std::optional<PropertyValue> parseIORegValue(std::string_view text) {
    return ValueReader(text).readWhole();
}

} // namespace korvane
