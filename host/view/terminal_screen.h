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

/// Takes over the terminal on standard output: a separate screen without a cursor and, if standard
/// input is the same terminal, keys that arrive without Enter and without echo.
///
/// The old contents come back when the object is destroyed, when the process leaves at once or dies
/// of a signal, and while it is suspended. Only one object at a time.
class TerminalScreen {
 public:
  TerminalScreen();
  ~TerminalScreen();
  TerminalScreen(const TerminalScreen&) = delete;
  TerminalScreen& operator=(const TerminalScreen&) = delete;

  /// The current size.
  WindowSize size() const;

  /// Replaces the picture, in one write: lines[0] at the top, each as wide as the window. Skipped
  /// while the terminal accepts nothing.
  void draw(const std::vector<std::string>& lines);

  /// A key that was pressed, if there is one.
  std::optional<char> readKey();

  /// Whether keys are read.
  bool hasKeys() const;
};

}  // namespace pelagrim_host
