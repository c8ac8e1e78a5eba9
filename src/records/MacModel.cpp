#include "records/MacModel.h"

#include "records/RegularExpression.h"

namespace korvane {

bool hasMacModelShape(std::string_view text) {
    static const RegularExpression shape("^[A-Za-z]+[0-9]+,[0-9]+\\z");
    return text.size() <= 64 && shape.isFoundIn(text);
}

} // namespace korvane
