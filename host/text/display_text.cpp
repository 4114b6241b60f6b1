#include "host/text/display_text.h"

#include <unistr.h>

#include <cstddef>
#include <cstdint>

namespace pelagrim_host {
namespace {

constexpr ucs4_t kNoCharacter = 0xFFFD;

/// Takes one character off the front of `bytes`; kNoCharacter, and one byte, if it is not
/// well-formed UTF-8.
ucs4_t takeCharacter(std::string_view& bytes) {
  ucs4_t character = 0;
  const auto* const begin = reinterpret_cast<const uint8_t*>(bytes.data());
  const int length = u8_mbtoucr(&character, begin, bytes.size());
  bytes.remove_prefix(length > 0 ? static_cast<size_t>(length) : 1);
  return length > 0 ? character : kNoCharacter;
}

ucs4_t visible(ucs4_t character) {
  if (character < 0x20) return 0x2400 + character;
  if (character == 0x7F) return 0x2421;
  const auto within = [character](ucs4_t low, ucs4_t high) {
    return low <= character && character <= high;
  };
  const bool turns_direction =
      within(0x200E, 0x200F) || within(0x2028, 0x202E) || within(0x2066, 0x2069);
  const bool is_control = within(0x80, 0x9F) || within(0xFFFE, 0xFFFF);
  return turns_direction || is_control ? kNoCharacter : character;
}

void append(std::string& text, ucs4_t character) {
  uint8_t bytes[6];
  const int length = u8_uctomb(bytes, character, sizeof bytes);
  text.append(reinterpret_cast<const char*>(bytes), static_cast<size_t>(length));
}

}  // namespace

std::string displayText(std::string_view bytes) {
  std::string text;
  while (!bytes.empty()) append(text, visible(takeCharacter(bytes)));
  return text;
}

std::string markupText(std::string_view text) {
  std::string safe;
  for (const char character : text) {
    switch (character) {
      case '&':
        safe += "&amp;";
        break;
      case '<':
        safe += "&lt;";
        break;
      case '>':
        safe += "&gt;";
        break;
      case '"':
        safe += "&quot;";
        break;
      default:
        safe += character;
    }
  }
  return safe;
}

}  // namespace pelagrim_host
