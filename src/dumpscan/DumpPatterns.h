#pragma once

// The node lines of a dump as the line scanner's expressions see them, and the
// byte-level tests that keep each expression off the lines it can't match.
// The expressions are ICU's, case-insensitive, and backtrack; each helper here
// says what it does to keep a crafted line or block linear.

#include "base/RegularExpression.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korvane {

// "+-o NAME@LOCATION  <class AppleUSBXHCI...": an xHCI driver node. Groups:
// name, location, class.
const RegularExpression& xhciNodeExpression();

// "+-o NAME@LOCATION  <class IOPCIDevice": a PCI device node. Groups: name,
// location.
const RegularExpression& pciNodeExpression();

// A port node by its name and a port class, and, tried second, by its name
// alone. Groups: name, location (and class for the first).
const RegularExpression& portNodeExpression();
const RegularExpression& loosePortNodeExpression();

// Whether a line can match a node expression whose class part is `lowerClass`
// (lower-case ASCII), without running it.
bool mayHoldNode(std::string_view line, std::string_view lowerClass);

// Whether either port expression could match: some "+-o", blanks, then a name
// beginning as one of the port prefixes does.
bool mayHoldPort(std::string_view line);

// The first match on one line of an expression that begins "\+-o\s+(.+?)",
// as its groups, or none. The group takes in any later "+-o", so if the first
// "+-o" followed by a blank starts no match, none after it does, and searching
// stops there: a line stuffed with "+-o " stays linear instead of quadratic.
std::optional<std::vector<std::string>> firstNodeLineMatch(const RegularExpression& expression,
                                                           const icu::UnicodeString& line);

// Every match, in order, of the case-insensitive expression
//   \+-o\s+([^@<]+)@?[A-Za-z0-9,]*\s+<class\s+([^,>]+)
// over a whole block of dump text, as ICU's repeated find() gives them, with
// both groups trimmed. `visit` returns true to stop.
//
// Written out by hand because the expression backtracks: each "+-o" that
// starts no match costs ICU the run of text up to the next "@" or "<" times
// the run of letters before it, which makes a crafted block quadratic. Here
// each start is decided in one look at that run, and a failed start passes
// over every later start the first one's name group could have absorbed.
void forEachAnyNode(std::string_view text, const std::function<bool(std::string, std::string)>& visit);

} // namespace korvane
