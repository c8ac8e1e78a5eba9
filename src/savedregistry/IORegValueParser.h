#pragma once

#include "scanner/PropertyValue.h"

#include <optional>
#include <string_view>

namespace korvane {

// One property value as `ioreg -l` prints it, the whole text being that one
// value: "text" (quotes inside are not escaped), decimal or 0x numbers, Yes and
// No (1 and 0), <hex> and <"a","b"> data, (arrays), [sets] as arrays and
// {"key"=value} dictionaries, nested up to maximumSavedValueDepth. Text must be
// valid UTF-8. Anything that can't be read as a whole gives no value; it never
// throws and runs in time linear in the text.
std::optional<PropertyValue> parseIORegValue(std::string_view text);

} // namespace korvane
