#pragma once

#include <string>
#include <string_view>

namespace pelagrim_host {

/// Any bytes as text that can be shown: valid UTF-8, with control characters replaced by their
/// symbols. Bytes that are not UTF-8, and characters that change the writing direction, become
/// U+FFFD.
std::string displayText(std::string_view bytes);

/// `text` with the characters that XML and HTML take for markup replaced: for element content and
/// for values between double quotes.
std::string markupText(std::string_view text);

}  // namespace pelagrim_host
