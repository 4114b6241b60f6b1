#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace pelagrim_host {

/// The size of a window in characters.
struct WindowSize {
  size_t columns = 80;
  size_t rows = 24;
};

/// The terminal on standard output, taken over: a screen of its own without a cursor, and, where
/// standard input is the same terminal, keys that arrive without Enter and without an echo.
///
/// What was there before comes back with the object's end, when the process leaves at once or dies
/// of a signal, and while it is suspended. One object at a time.
class TerminalScreen {
 public:
  TerminalScreen();
  ~TerminalScreen();
  TerminalScreen(const TerminalScreen&) = delete;
  TerminalScreen& operator=(const TerminalScreen&) = delete;

  /// The size as it is now.
  WindowSize size() const;

  /// Replaces what is shown, in one write: lines[0] at the top, each as wide as the window. Left
  /// out while the terminal takes nothing.
  void draw(const std::vector<std::string>& lines);

  /// A key that was pressed, if any waits.
  std::optional<char> readKey();

  /// Whether keys are read.
  bool hasKeys() const;
};

}  // namespace pelagrim_host
