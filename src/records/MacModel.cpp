#include "records/MacModel.h"

#include "base/RegularExpression.h"

namespace korvane {

bool hasMacModelShape(std::string_view text) {
    static const RegularExpression shape("^[A-Za-z]+[0-9]+,[0-9]+\\z");
    return text.size() <= 64 && shape.isFoundIn(text);
}

std::string macModelShapeNote(std::string_view model) {
    if (hasMacModelShape(model)) {
        return {};
    }
    return "\u201C" + std::string(model) +
           "\u201D isn't shaped like a Mac model (iMac19,1, MacBookPro15,2): macOS applies this map only on "
           "a "
           "Mac whose model is exactly this text.";
}

std::string macModelProblem(std::string_view model) {
    for (const char c : model) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7f) {
            return "the model must be printable text: it holds a control character";
        }
    }
    if (model.size() > maxMacModelBytes) {
        return "the model must be at most " + std::to_string(maxMacModelBytes) + " bytes (it has " +
               std::to_string(model.size()) + ")";
    }
    return {};
}

} // namespace korvane
