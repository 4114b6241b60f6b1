#pragma once

#include <cstdio>
#include <string_view>

namespace pelagrim_host {

/// Standard output or error. What cannot be written is lost in silence at first: the survey goes on
/// and is saved. requireOutput tells of it at the end.
class TextOutput {
 public:
  explicit TextOutput(std::FILE* stream) : stream_(stream) {}

  /// Writes and flushes, so that lines come out as they arise.
  void write(std::string_view text);

 private:
  std::FILE* stream_;
};

/// Throws std::runtime_error when something could not be written to standard output, but for a pipe
/// whose reader has gone: that one had what it wanted.
void requireOutput();

}  // namespace pelagrim_host
