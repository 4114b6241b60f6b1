#pragma once

#include <string>
#include <string_view>

namespace pelagrim_host {

/// A field of comma-separated values, quoted if it has to be (RFC 4180). `text` has no line
/// ends.
std::string csvField(std::string_view text);

/// `text`, which is UTF-8, without the signs of a formula that it begins with, also where blanks
/// and characters without width come before them.
std::string_view withoutFormulaSigns(std::string_view text);

/// Text that no spreadsheet takes for a formula: with an apostrophe before it where it begins like
/// one.
std::string noFormula(std::string_view text);

}  // namespace pelagrim_host
