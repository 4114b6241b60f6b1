#pragma once

#include <cstdio>
#include <string>
#include <string_view>

namespace pelagrim_host {

/// Standard output or error. A failed write does not stop the survey, which is still saved;
/// requireOutput reports it at the end.
///
/// A reader that has stopped, of a pipe or at a terminal, is waited for. Once an orderly end has
/// been asked for (stopRequested) it has two more seconds to take something; then that text and all
/// later text to the same place is given up.
class TextOutput {
 public:
  /// Nothing else may write to `stream` through its buffer.
  explicit TextOutput(std::FILE* stream) : stream_(stream) {}

  /// Writes at once, so that every line is seen when it is written. Any thread may call it; texts
  /// of several threads may be mixed.
  void write(std::string_view text);

  /// Waits until the stream takes more; no longer than write does.
  void waitForRoom();

 private:
  void report(int error);

  std::FILE* stream_;
};

/// Has requireOutput report `why`, unless it has something to report already. For views that could
/// not show something. Any thread may call it.
void reportOutputFailure(const std::string& why);

/// Throws std::runtime_error if something could not be written to standard output. A pipe whose
/// reader has gone does not count: the reader has all that it wanted.
void requireOutput();

}  // namespace pelagrim_host
