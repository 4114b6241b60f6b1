#pragma once

#include <algorithm>
#include <cctype>
#include <string>

namespace pelagrim_host {

/// `text` with its ASCII letters in lower case; other bytes stay as they are.
inline std::string lowerCase(std::string text) {
  const auto lower = [](unsigned char c) { return c < 0x80 ? std::tolower(c) : c; };
  std::transform(text.begin(), text.end(), text.begin(), lower);
  return text;
}

/// The same in capitals.
inline std::string upperCase(std::string text) {
  const auto upper = [](unsigned char c) { return c < 0x80 ? std::toupper(c) : c; };
  std::transform(text.begin(), text.end(), text.begin(), upper);
  return text;
}

}  // namespace pelagrim_host
