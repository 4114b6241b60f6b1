#pragma once

#include <fmt/format.h>

#include <string>
#include <string_view>

namespace pelagrim_host {

/// A count and its noun: "1 channel", "2 channels", "0 channels". `noun` takes an s.
template <typename Count>
std::string countedText(Count count, std::string_view noun) {
  return fmt::format("{} {}{}", count, noun, count == 1 ? "" : "s");
}

}  // namespace pelagrim_host
