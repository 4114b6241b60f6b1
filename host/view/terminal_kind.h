#pragma once

namespace pelagrim_host {

/// What a terminal can do, by its entry in the terminal database and what the user wishes.
struct TerminalKind {
  bool redraws = false;  ///< a terminal whose cursor moves by the ANSI sequences (ECMA-48)
  bool colours = false;  ///< it has eight colours or more, and NO_COLOR is not set
  bool unicode = false;  ///< the user's locale is a UTF-8 one
};

/// What `descriptor` leads to; nothing of the above when that is no terminal, or one that this
/// process may not draw on, as it runs in the background.
TerminalKind terminalKind(int descriptor);

}  // namespace pelagrim_host
