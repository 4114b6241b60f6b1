#pragma once

#include <cstddef>
#include <string_view>

namespace pelagrim_host {

/// Output to the terminal on standard output that never waits for it.
///
/// The terminal is opened a second time for that: whether writes wait is a property of an open
/// file, and the inherited one belongs to the shell and to its other children, too.
class UnwaitingTerminal {
 public:
  void open();
  void close();

  /// Returns how much of `text` the terminal has taken. Safe in a signal handler.
  size_t send(std::string_view text) const;

 private:
  int descriptor_ = -1;  ///< -1: it could not be opened again
};

}  // namespace pelagrim_host
