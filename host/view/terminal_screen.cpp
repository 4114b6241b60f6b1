#include "host/view/terminal_screen.h"

#include <fmt/format.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>
#include <cerrno>
#include <csignal>

#include <array>
#include <atomic>
#include <string_view>

#include "host/process/signals.h"

namespace pelagrim_host {
namespace {

// The alternate screen, no cursor, no wrap at the right edge; and back.
constexpr std::string_view kTakeOver = "\x1b[?1049h\x1b[?25l\x1b[?7l\x1b[2J";
constexpr std::string_view kGiveBack = "\x1b[?7h\x1b[?25h\x1b[?1049l";

// For the signal handlers; written only while none of them is installed.
std::atomic<bool> g_taken = false;
bool g_has_keys = false;
termios g_line_mode = {};
termios g_key_mode = {};

constexpr std::array kDeadlySignals = {SIGQUIT, SIGABRT, SIGSEGV, SIGBUS,
                                       SIGFPE,  SIGILL,  SIGTRAP, SIGSYS};

/// Safe in a signal handler. A failed write is ignored: the terminal may be gone.
void writeAll(std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = ::write(STDOUT_FILENO, text.data(), text.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return;
    text.remove_prefix(static_cast<size_t>(written));
  }
}

/// In the background the terminal belongs to another job; setting it up from there would stop the
/// survey.
bool isInForeground() {
  return tcgetpgrp(STDOUT_FILENO) == getpgrp();
}

void takeOver() {
  if (!isInForeground()) return;
  if (g_has_keys) tcsetattr(STDIN_FILENO, TCSANOW, &g_key_mode);
  writeAll(kTakeOver);
  g_taken = true;
}

void giveBack() {
  if (!g_taken.exchange(false)) return;
  writeAll(kGiveBack);
  if (g_has_keys) tcsetattr(STDIN_FILENO, TCSANOW, &g_line_mode);
}

void onDeadlySignal(int signal_number) {
  giveBack();
  raise(signal_number);  // the default action is restored and happens on return
}

void onSuspend(int) {
  const int kept_errno = errno;
  giveBack();
  raise(SIGSTOP);
  takeOver();
  errno = kept_errno;
}

/// A signal that the process was started with as ignored stays ignored.
void handle(int signal_number, void (*handler)(int), int flags) {
  struct sigaction before = {};
  sigaction(signal_number, nullptr, &before);
  if (before.sa_handler == SIG_IGN) return;
  struct sigaction action = {};
  action.sa_handler = handler;
  action.sa_flags = flags;
  sigaction(signal_number, &action, nullptr);
}

void setSignals(bool ours) {
  handle(SIGTSTP, ours ? onSuspend : SIG_DFL, SA_RESTART);
  for (const int signal_number : kDeadlySignals) {
    handle(signal_number, ours ? onDeadlySignal : SIG_DFL, static_cast<int>(SA_RESETHAND));
  }
}

}  // namespace

TerminalScreen::TerminalScreen() {
  g_has_keys = isatty(STDIN_FILENO) == 1 && tcgetattr(STDIN_FILENO, &g_line_mode) == 0;
  g_key_mode = g_line_mode;
  // Keys arrive one by one, and Ctrl-S must not hold up the survey.
  g_key_mode.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
  g_key_mode.c_iflag &= ~static_cast<tcflag_t>(IXON);
  g_key_mode.c_cc[VMIN] = 0;
  g_key_mode.c_cc[VTIME] = 0;
  takeOver();
  setTidyBeforeExit(giveBack);
  setSignals(true);
}

TerminalScreen::~TerminalScreen() {
  setSignals(false);
  setTidyBeforeExit(nullptr);
  giveBack();
}

WindowSize TerminalScreen::size() const {
  winsize size = {};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0 || size.ws_row == 0) {
    return {};
  }
  return {size.ws_col, size.ws_row};
}

void TerminalScreen::draw(const std::vector<std::string>& lines) {
  // It was continued in the background and may now be in the foreground.
  if (!isInForeground()) return;
  if (!g_taken) takeOver();
  pollfd terminal = {STDOUT_FILENO, POLLOUT, 0};
  if (poll(&terminal, 1, 0) != 1) return;
  std::string frame;
  for (size_t i = 0; i < lines.size(); ++i) frame += fmt::format("\x1b[{};1H{}", i + 1, lines[i]);
  writeAll(frame);
}

std::optional<char> TerminalScreen::readKey() {
  char key = 0;
  if (!g_has_keys || !isInForeground() || ::read(STDIN_FILENO, &key, 1) != 1) return std::nullopt;
  return key;
}

bool TerminalScreen::hasKeys() const {
  return g_has_keys;
}

}  // namespace pelagrim_host
