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
/// Nothing here waits for the terminal, except the destructor. The old contents come back when the
/// object is destroyed, when the process leaves at once or dies of a signal, and while it is
/// suspended. Only one object at a time, used on one thread.
class TerminalScreen {
 public:
  TerminalScreen();

  /// A terminal that takes nothing is waited for as TextOutput waits, and no longer.
  ~TerminalScreen();
  TerminalScreen(const TerminalScreen&) = delete;
  TerminalScreen& operator=(const TerminalScreen&) = delete;

  /// The current size.
  WindowSize size() const;

  /// Replaces the picture: lines[0] at the top, each as wide as the window. What the terminal does
  /// not take now is kept for sendRest; until then other pictures are skipped.
  void draw(const std::vector<std::string>& lines);

  /// Sends more of the last picture. Returns whether the terminal has all of it.
  bool sendRest();

  /// A key that was pressed, if there is one.
  std::optional<char> readKey();

  /// Whether keys are read.
  bool hasKeys() const;

 private:
  bool sendHeld();

  std::string unsent_;           ///< of the last picture
  unsigned int sent_after_ = 0;  ///< how often the terminal had been taken over
};

}  // namespace pelagrim_host
