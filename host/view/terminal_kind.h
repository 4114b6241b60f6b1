#pragma once

namespace pelagrim_host {

/// What a terminal can do, according to the terminal database and the user's environment.
struct TerminalKind {
  bool redraws = false;  ///< a terminal whose cursor moves by the ANSI sequences (ECMA-48)
  bool colours = false;  ///< it has eight colours or more, and NO_COLOR is not set
  bool unicode = false;  ///< the user's locale is UTF-8
};

/// The terminal behind `descriptor`. All false if that is not a terminal, or one that this process
/// may not draw on because it runs in the background.
TerminalKind terminalKind(int descriptor);

}  // namespace pelagrim_host
