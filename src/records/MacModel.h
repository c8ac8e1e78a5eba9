#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace korvane {

// The Mac model a package is made for: the SMBIOS product name (iMac19,1,
// MacBookPro15,2) that macOS compares with each merge personality's `model`.

// What a package says when no model is known. macOS applies it on no Mac.
inline constexpr std::string_view fallbackMacModel = "Mac";

// Letters, digits, a comma, digits: the shape of every Mac model name. A
// firmware product name of this shape means a Mac (or a machine set up as
// one); anything else ("Standard PC (Q35 + ICH9, 2009)") is no Mac model.
bool hasMacModelShape(std::string_view text);

// What the window and the command line tell of a chosen model that isn't of
// that shape (the user may know better, so it is kept); empty when it is.
std::string macModelShapeNote(std::string_view model);

// SMBIOS keeps the product name in at most 64 bytes.
inline constexpr std::size_t maxMacModelBytes = 64;

// Why a typed model can't name a Mac: a control character, or more bytes
// than SMBIOS holds. Empty when it can.
std::string macModelProblem(std::string_view model);

} // namespace korvane
