#pragma once

#include <cstdio>
#include <string_view>

namespace pelagrim_host {

/// Standard output or error. A failed write does not stop the survey, which is still saved;
/// requireOutput reports it at the end.
class TextOutput {
 public:
  explicit TextOutput(std::FILE* stream) : stream_(stream) {}

  /// Writes and flushes, so that every line is seen at once.
  void write(std::string_view text);

 private:
  std::FILE* stream_;
};

/// Throws std::runtime_error if something could not be written to standard output. A pipe whose
/// reader has gone does not count: the reader has all that it wanted.
void requireOutput();

}  // namespace pelagrim_host
