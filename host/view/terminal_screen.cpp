#include "host/view/terminal_screen.h"

#include <fmt/format.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>
#include <cerrno>
#include <csignal>
#include <cstdio>

#include <array>
#include <atomic>
#include <string_view>

#include "host/process/signals.h"
#include "host/process/text_output.h"
#include "host/view/unwaiting_terminal.h"

namespace pelagrim_host {
namespace {

// The alternate screen, no cursor, no wrap at the right edge; and back. What comes before it may be
// half a sequence, which its escape character ends, and may have set attributes.
constexpr std::string_view kTakeOver = "\x1b[?1049h\x1b[?25l\x1b[?7l\x1b[2J";
constexpr std::string_view kGiveBack = "\x1b[0m\x1b[?7h\x1b[?25h\x1b[?1049l";

// For the signal handlers; written only while none of them is installed.
UnwaitingTerminal g_terminal;
bool g_has_keys = false;
termios g_line_mode = {};
termios g_key_mode = {};

// Of whoever holds the terminal.
std::atomic<bool> g_taken = false;
std::atomic<size_t> g_take_over_sent = 0;  ///< bytes of kTakeOver
std::atomic<unsigned int> g_times_taken = 0;

std::atomic<bool> g_held = false;
std::atomic<bool> g_must_suspend = false;  ///< once it is no longer held

constexpr std::array kDeadlySignals = {SIGQUIT, SIGABRT, SIGSEGV, SIGBUS,
                                       SIGFPE,  SIGILL,  SIGTRAP, SIGSYS};

/// Held while pictures are sent and while the terminal changes hands, on whatever thread: a signal
/// handler must not come in between.
class Hold {
 public:
  Hold() : holds_(!g_held.exchange(true)) {}
  ~Hold() {
    if (!holds_) return;
    g_held = false;
    // To the process: this thread may leave signals to others.
    if (g_must_suspend.exchange(false)) kill(getpid(), SIGTSTP);
  }
  Hold(const Hold&) = delete;
  Hold& operator=(const Hold&) = delete;

  explicit operator bool() const { return holds_; }

 private:
  bool holds_;
};

/// In the background the terminal belongs to another job; setting it up from there would stop the
/// survey.
bool isInForeground() {
  return tcgetpgrp(STDOUT_FILENO) == getpgrp();
}

/// Returns whether the terminal has all of it.
bool sendTakeOver() {
  g_take_over_sent += g_terminal.send(kTakeOver.substr(g_take_over_sent));
  return g_take_over_sent == kTakeOver.size();
}

void takeOver() {
  if (!isInForeground()) return;
  if (g_has_keys) tcsetattr(STDIN_FILENO, TCSANOW, &g_key_mode);
  g_taken = true;
  ++g_times_taken;
  sendTakeOver();
}

/// Waits for nothing: a terminal that is full first loses what it has not shown yet.
void giveBack() {
  if (!g_taken.exchange(false)) return;
  const bool took_any = g_take_over_sent.exchange(0) > 0;
  if (took_any && g_terminal.send(kGiveBack) < kGiveBack.size()) {
    if (isInForeground()) tcflush(STDOUT_FILENO, TCOFLUSH);
    g_terminal.send(kGiveBack);
  }
  if (g_has_keys) tcsetattr(STDIN_FILENO, TCSANOW, &g_line_mode);
}

/// For good. Another thread may be sending a picture, which takes no time worth mentioning; if it
/// is this one, it never ends.
void leave() {
  for (int i = 0; i < 10 && g_held.exchange(true); ++i) poll(nullptr, 0, 5);
  giveBack();
}

void onDeadlySignal(int signal_number) {
  leave();
  raise(signal_number);  // the default action is restored and happens on return
}

void onSuspend(int) {
  const int kept_errno = errno;
  if (g_held.exchange(true)) {
    g_must_suspend = true;
  } else {
    giveBack();
    raise(SIGSTOP);
    takeOver();
    g_held = false;
  }
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
  const Hold hold;
  g_has_keys = isatty(STDIN_FILENO) == 1 && tcgetattr(STDIN_FILENO, &g_line_mode) == 0;
  g_key_mode = g_line_mode;
  // Keys arrive one by one, and Ctrl-S must not hold up the picture.
  g_key_mode.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
  g_key_mode.c_iflag &= ~static_cast<tcflag_t>(IXON);
  g_key_mode.c_cc[VMIN] = 0;
  g_key_mode.c_cc[VTIME] = 0;
  g_terminal.open();
  takeOver();
  setTidyBeforeExit(leave);
  setSignals(true);
}

TerminalScreen::~TerminalScreen() {
  TextOutput(stdout).waitForRoom();
  setSignals(false);
  setTidyBeforeExit(nullptr);
  while (g_held.exchange(true)) poll(nullptr, 0, 1);  // until a handler on another thread is done
  giveBack();
  g_terminal.close();
  g_held = false;
}

WindowSize TerminalScreen::size() const {
  winsize size = {};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0 || size.ws_row == 0) {
    return {};
  }
  return {size.ws_col, size.ws_row};
}

void TerminalScreen::draw(const std::vector<std::string>& lines) {
  const Hold hold;
  // It was continued in the background and may now be in the foreground.
  if (!hold || !isInForeground()) return;
  if (!g_taken) takeOver();
  if (!sendHeld()) return;
  for (size_t i = 0; i < lines.size(); ++i) {
    unsent_ += fmt::format("\x1b[{};1H{}", i + 1, lines[i]);
  }
  sent_after_ = g_times_taken;
  sendHeld();
}

bool TerminalScreen::sendRest() {
  const Hold hold;
  return hold && (!g_taken || !isInForeground() || sendHeld());
}

bool TerminalScreen::sendHeld() {
  // The screen has been given back in between and is empty.
  if (sent_after_ != g_times_taken) unsent_.clear();
  if (!sendTakeOver()) return false;
  unsent_.erase(0, g_terminal.send(unsent_));
  return unsent_.empty();
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
