#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace pelagrim {

/// The message lines that wait for the host, oldest first. Once it is full, new lines are dropped,
/// so a host that never polls costs no memory. Guarded by the lock of State.
struct MessageLog {
  static constexpr size_t kMaxLines = 32;
  std::vector<std::string> lines;

  /// Queues a line, or drops it if 32 are waiting. May throw std::bad_alloc, and then leaves the
  /// log as it was.
  void logLine(std::string line);

  /// Moves the oldest line into buf, cut to len - 1 bytes and a NUL. Returns false and leaves buf
  /// alone if none waits. len is at least 1.
  bool takeLine(char* buf, size_t len) noexcept;
};

/// A message formatted as by printf, with a decimal point whatever the host's locale, cut to
/// `buffer_bytes` - 1 (of at most 256). May throw std::bad_alloc.
std::string messageText(size_t buffer_bytes, const char* format, ...)
    __attribute__((format(printf, 2, 3)));

/// The plural ending of a counted noun in a message.
inline const char* pluralEnding(size_t count) {
  return count == 1 ? "" : "s";
}

}  // namespace pelagrim
