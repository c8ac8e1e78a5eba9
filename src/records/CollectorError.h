#pragma once

#include <exception>
#include <string>

namespace korvane {

// The one error type of the operations that throw. Its description is the
// carried text exactly, with no prefix, whichever case it is.
class CollectorError : public std::exception {
  public:
    enum class Kind { missingTool, operationFailed };

    static CollectorError missingTool(std::string text) { return {Kind::missingTool, std::move(text)}; }
    static CollectorError operationFailed(std::string text) {
        return {Kind::operationFailed, std::move(text)};
    }

    Kind kind() const noexcept { return kind_; }
    const std::string& description() const noexcept { return text_; }
    const char* what() const noexcept override { return text_.c_str(); }

    bool operator==(const CollectorError& other) const {
        return kind_ == other.kind_ && text_ == other.text_;
    }

  private:
    CollectorError(Kind kind, std::string text) : kind_(kind), text_(std::move(text)) {}

    Kind kind_;
    std::string text_;
};

// What a failure says to the user: a CollectorError's text, the platform's own
// words for a system or file error (without the library's framing), else
// what() of any other exception.
std::string errorDescription(const std::exception_ptr& failure);

} // namespace korvane
