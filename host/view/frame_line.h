#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace pelagrim_host {

/// What a piece of text is, which decides how it looks on the terminal.
enum class Ink { kPlain, kTitle, kHeading, kStrong, kFaint, kBar, kWarning };

/// One line of a frame, filled from the left.
class FrameLine {
 public:
  /// `colours`: without them the inks differ only by weight, underlining and reversal.
  FrameLine(size_t columns, bool colours) : columns_(columns), colours_(colours) {}

  /// Adds as much of `text` as fits.
  FrameLine& add(std::string_view text, Ink ink = Ink::kPlain);

  /// Adds blanks up to `column`, unless the line is already longer.
  FrameLine& padTo(size_t column, Ink ink = Ink::kPlain);

  /// Adds `text` at the right end, if it fits.
  FrameLine& addRight(std::string_view text, Ink ink = Ink::kPlain);

  size_t used() const { return used_; }

  /// The line, padded to its full width.
  std::string text();

 private:
  size_t columns_;
  bool colours_;
  size_t used_ = 0;
  std::string text_;
};

}  // namespace pelagrim_host
