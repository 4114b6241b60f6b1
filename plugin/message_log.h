#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace pelagrim {

/// The message lines that wait for the host, oldest first. Bounded: while it is full, new lines are
/// dropped, so a host that never polls costs nothing. Under the lock of State.
struct MessageLog {
  static constexpr size_t kMaxLines = 32;
  std::vector<std::string> lines;

  /// Queues a line, or drops it when 32 are waiting. May throw std::bad_alloc; the log is then as
  /// it was.
  void logLine(std::string line);

  /// Moves the oldest line into buf, cut to len - 1 bytes and a NUL. False, with buf untouched,
  /// when none waits. len is at least 1.
  bool takeLine(char* buf, size_t len) noexcept;
};

/// A message text as printf formats it, with a decimal point whatever the host's locale, cut to
/// `buffer_bytes` - 1 (of at most 256). May throw std::bad_alloc.
std::string messageText(size_t buffer_bytes, const char* format, ...)
    __attribute__((format(printf, 2, 3)));

/// The ending that a count of things takes in a message.
inline const char* pluralEnding(size_t count) {
  return count == 1 ? "" : "s";
}

}  // namespace pelagrim
