#pragma once

#include <string>
#include <string_view>

namespace pelagrim_host {

/// Any bytes as text that can be shown: valid UTF-8 in which control characters stand as their
/// symbols, and what is no character or would turn the direction of the writing around as U+FFFD.
std::string displayText(std::string_view bytes);

/// `text`, with what XML and HTML take for markup replaced, for element content and for values
/// between double quotes.
std::string markupText(std::string_view text);

}  // namespace pelagrim_host
