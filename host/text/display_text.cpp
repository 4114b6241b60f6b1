#include "host/text/display_text.h"

#include <cstddef>
#include <cstdint>

namespace pelagrim_host {
namespace {

constexpr char32_t kNoCharacter = 0xFFFD;

/// Takes one character off the front of `bytes`: kNoCharacter, and one byte, when it is not well
/// formed UTF-8 (shortest form, no surrogates, no more than U+10FFFF).
char32_t takeCharacter(std::string_view& bytes) {
  const auto at = [&bytes](size_t index) { return static_cast<uint8_t>(bytes[index]); };
  const uint8_t lead = at(0);
  const size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  constexpr char32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
  bool well_formed = (lead < 0x80 || (lead >= 0xC2 && lead < 0xF5)) && bytes.size() >= length;
  char32_t character = length == 1 ? lead : lead & (0x7Fu >> length);
  for (size_t index = 1; well_formed && index < length; ++index) {
    well_formed = (at(index) & 0xC0) == 0x80;
    character = (character << 6) | (at(index) & 0x3Fu);
  }
  well_formed = well_formed && character >= kLeast[length] && character <= 0x10FFFF &&
                (character < 0xD800 || character > 0xDFFF);
  bytes.remove_prefix(well_formed ? length : 1);
  return well_formed ? character : kNoCharacter;
}

char32_t visible(char32_t character) {
  if (character < 0x20) return 0x2400 + character;
  if (character == 0x7F) return 0x2421;
  const auto within = [character](char32_t low, char32_t high) {
    return low <= character && character <= high;
  };
  const bool turns_direction =
      within(0x200E, 0x200F) || within(0x2028, 0x202E) || within(0x2066, 0x2069);
  const bool is_control = within(0x80, 0x9F) || within(0xFFFE, 0xFFFF);
  return turns_direction || is_control ? kNoCharacter : character;
}

void append(std::string& text, char32_t character) {
  const auto put = [&text](char32_t byte) { text += static_cast<char>(byte); };
  const auto follow = [&](int shift) { put(0x80 | ((character >> shift) & 0x3F)); };
  if (character < 0x80) {
    put(character);
  } else if (character < 0x800) {
    put(0xC0 | (character >> 6));
    follow(0);
  } else if (character < 0x10000) {
    put(0xE0 | (character >> 12));
    follow(6);
    follow(0);
  } else {
    put(0xF0 | (character >> 18));
    follow(12);
    follow(6);
    follow(0);
  }
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
