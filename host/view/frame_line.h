#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace pelagrim_host {

/// What a stretch of text is, as it shows on the terminal.
enum class Ink { kPlain, kTitle, kHeading, kStrong, kFaint, kBar, kWarning };

/// One line of a frame, filled from the left.
class FrameLine {
 public:
  /// `colours`: else the inks differ by weight, underlining and reversal alone.
  FrameLine(size_t columns, bool colours) : columns_(columns), colours_(colours) {}

  /// Adds as much of `text` as there is room for.
  FrameLine& add(std::string_view text, Ink ink = Ink::kPlain);

  /// Adds blanks up to `column`, where the line has not come so far.
  FrameLine& padTo(size_t column, Ink ink = Ink::kPlain);

  /// Adds `text` at the right end, where it fits.
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
