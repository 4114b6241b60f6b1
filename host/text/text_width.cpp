#include "host/text/text_width.h"

#include <unistr.h>
#include <uniwidth.h>

#include <limits>

namespace pelagrim_host {

FittedText fitText(std::string_view text, size_t columns) {
  FittedText fitted;
  while (!text.empty()) {
    ucs4_t character = 0;
    const auto* const bytes = reinterpret_cast<const uint8_t*>(text.data());
    const auto length = static_cast<size_t>(u8_mbtouc(&character, bytes, text.size()));
    int width = uc_width(character, "UTF-8");
    std::string shown(text.substr(0, length));
    if (width < 0 || character == 0) shown = "?", width = 1;  // a control character
    if (character == 0xFFFD) shown = "\xEF\xBF\xBD";
    if (fitted.columns + static_cast<size_t>(width) > columns) break;
    fitted.text += shown;
    fitted.columns += static_cast<size_t>(width);
    text.remove_prefix(length);
  }
  return fitted;
}

size_t textWidth(std::string_view text) {
  return fitText(text, std::numeric_limits<size_t>::max()).columns;
}

}  // namespace pelagrim_host
