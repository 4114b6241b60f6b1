#include "host/view/terminal_kind.h"

#include <langinfo.h>
#include <locale.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <string_view>

// After the others, because it defines macros with everyday names.
#include <curses.h>
#include <term.h>

namespace pelagrim_host {
namespace {

bool movesByAnsiSequences() {
  const char* const move = tigetstr("cup");
  // A null pointer means "none", a pointer of -1 "no such capability".
  const bool known = move != nullptr && reinterpret_cast<intptr_t>(move) != -1;
  return known && std::string_view(move).starts_with("\x1b[");
}

bool userReadsUnicode() {
  const locale_t locale = newlocale(LC_CTYPE_MASK, "", nullptr);
  if (locale == nullptr) return false;
  const bool utf8 = std::string_view(nl_langinfo_l(CODESET, locale)) == "UTF-8";
  freelocale(locale);
  return utf8;
}

}  // namespace

TerminalKind terminalKind(int descriptor) {
  int found = 0;
  if (isatty(descriptor) != 1 || tcgetpgrp(descriptor) != getpgrp()) return {};
  if (setupterm(nullptr, descriptor, &found) != OK) return {};
  const char* const no_colour = std::getenv("NO_COLOR");
  TerminalKind kind;
  kind.redraws = movesByAnsiSequences();
  kind.colours = tigetnum("colors") >= 8 && (no_colour == nullptr || *no_colour == '\0');
  kind.unicode = userReadsUnicode();
  return kind;
}

}  // namespace pelagrim_host
