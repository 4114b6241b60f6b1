#pragma once

#include <string>
#include <string_view>

namespace pelagrim_host {

/// Any bytes as text that is safe to show: valid UTF-8, with control characters replaced by their
/// symbols. Bytes that are not UTF-8, and characters that change the writing direction, become
/// U+FFFD.
std::string displayText(std::string_view bytes);

/// `text` with the characters of XML and HTML markup replaced, for element content and for values
/// in double quotes.
std::string markupText(std::string_view text);

}  // namespace pelagrim_host
