#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace pelagrim_host {

/// UTF-8 text in `columns` character cells of a terminal.
struct FittedText {
  std::string text;
  size_t columns = 0;
};

/// As much of `text` as fits into `columns` cells. Control characters become '?' and bytes that are
/// not UTF-8 the replacement character, so that the result cannot steer the terminal and has a
/// known width.
FittedText fitText(std::string_view text, size_t columns);

/// The number of cells that all of `text` takes, treated the same way.
size_t textWidth(std::string_view text);

}  // namespace pelagrim_host
