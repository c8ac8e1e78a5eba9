#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace korvane {

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
