#pragma once

#include <cstdio>
#include <string_view>

namespace pelagrim_host {

/// Standard output or error. A failed write stops nothing: the survey goes on and is saved.
/// requireOutput tells of it at the end.
class TextOutput {
 public:
  explicit TextOutput(std::FILE* stream) : stream_(stream) {}

  /// Writes and flushes, so that every line is seen at once.
  void write(std::string_view text);

 private:
  std::FILE* stream_;
};

/// Throws std::runtime_error when something could not be written to standard output. A pipe whose
/// reader has left does not count: the reader has read all that it wanted.
void requireOutput();

}  // namespace pelagrim_host
