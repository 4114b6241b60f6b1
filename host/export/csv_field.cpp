#include "host/export/csv_field.h"

#include <unistr.h>

#include <algorithm>
#include <cstdint>

namespace pelagrim_host {
namespace {

/// What some spreadsheets pass over before they look for a formula's sign: blanks, and characters
/// that have no width.
bool isPassedOver(ucs4_t character) {
  const auto within = [character](ucs4_t low, ucs4_t high) {
    return low <= character && character <= high;
  };
  return character <= ' ' || character == 0xA0 || character == 0xAD || character == 0x34F ||
         character == 0x61C || character == 0x115F || character == 0x1160 ||
         within(0x17B4, 0x17B5) || within(0x180B, 0x180F) || within(0x2000, 0x200F) ||
         within(0x2028, 0x202F) || within(0x205F, 0x206F) || character == 0x3000 ||
         character == 0x3164 || within(0xFE00, 0xFE0F) || character == 0xFEFF ||
         character == 0xFFA0 || within(0xE0000, 0xE0FFF);
}

bool isFormulaSign(ucs4_t character) {
  constexpr ucs4_t kSigns[] = {
      '=',    '+',    '-',    '@',     //
      0xFF1D, 0xFF0B, 0xFF0D, 0xFF20,  // the same, full width
      0xFE66, 0xFE62, 0xFE63, 0xFE6B,  // small
      0x2212,                          // minus
  };
  return std::find(std::begin(kSigns), std::end(kSigns), character) != std::end(kSigns);
}

}  // namespace

std::string csvField(std::string_view text) {
  const bool plain = text.find_first_of(",\"") == std::string_view::npos &&
                     (text.empty() || (text.front() != ' ' && text.back() != ' '));
  if (plain) return std::string(text);
  std::string quoted = "\"";
  for (const char character : text) {
    if (character == '"') quoted += '"';
    quoted += character;
  }
  return quoted + '"';
}

std::string_view withoutFormulaSigns(std::string_view text) {
  std::string_view rest = text;
  while (!rest.empty()) {
    ucs4_t character = 0;
    const int length =
        u8_mbtoucr(&character, reinterpret_cast<const uint8_t*>(rest.data()), rest.size());
    if (length <= 0) break;
    if (!isPassedOver(character) && !isFormulaSign(character)) break;
    rest.remove_prefix(static_cast<size_t>(length));
    if (isFormulaSign(character)) text = rest;
  }
  return text;
}

std::string noFormula(std::string_view text) {
  const bool is_formula = withoutFormulaSigns(text).size() < text.size();
  return (is_formula ? "'" : "") + std::string(text);
}

}  // namespace pelagrim_host
