#pragma once

#include <string>
#include <string_view>

namespace pelagrim_host {

/// A field of comma-separated values, quoted if it has to be (RFC 4180). `text` has no line
/// ends.
inline std::string csvField(std::string_view text) {
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

}  // namespace pelagrim_host
