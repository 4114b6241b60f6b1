#pragma once

#include <cstdio>
#include <string_view>

namespace pelagrim_host {

/// Standard output or error. What cannot be written, because the reader of a pipe has gone, is
/// lost in silence: the survey goes on and is saved.
class TextOutput {
 public:
  explicit TextOutput(std::FILE* stream);

  /// Whether lines can be redrawn in place.
  bool isTerminal() const { return is_terminal_; }

  /// The width of the terminal in characters, as it is now; 80 where it is not known.
  size_t columns() const;

  /// Writes and flushes, so that lines come out as they arise.
  void write(std::string_view text);

 private:
  std::FILE* stream_;
  bool is_terminal_;
};

}  // namespace pelagrim_host
