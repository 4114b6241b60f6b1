#include "host/process/signals.h"

#include <fcntl.h>
#include <unistd.h>
#include <csignal>

#include <array>
#include <atomic>

namespace pelagrim_host {
namespace {

std::atomic<bool> g_stop_requested = false;
std::atomic<bool> g_rescan_requested = false;
std::atomic<void (*)()> g_tidy = nullptr;
bool g_had_terminal = false;
static_assert(std::atomic<bool>::is_always_lock_free &&
                  std::atomic<void (*)()>::is_always_lock_free,
              "a signal handler may not take a lock");

// Sent by people, who send a second one when the first took too long.
constexpr std::array kLeavingSignals = {SIGINT, SIGTERM};

// All others that end a process and leave no core: limits, timers, other programs. Some come again
// and again, so a second one is no more than the first.
constexpr std::array kEndingSignals = {SIGALRM, SIGVTALRM, SIGPROF, SIGXCPU,  SIGUSR1,
                                       SIGUSR2, SIGPOLL,   SIGPWR,  SIGSTKFLT};

// Those that are no reason to end: what they tell of fails, and that is dealt with where it is
// done. A file that has reached the size limit is like a full disk.
constexpr std::array kFailingSignals = {SIGPIPE, SIGXFSZ};

// Raised by what a thread does itself. While blocked they end the process without their handlers.
constexpr std::array kCrashes = {SIGABRT, SIGBUS, SIGFPE, SIGILL, SIGSEGV, SIGSYS, SIGTRAP};

void onLeavingSignal(int signal_number) {
  if (!g_stop_requested.exchange(true)) return;
  if (void (*const tidy)() = g_tidy) tidy();
  _exit(128 + signal_number);
}

void onEndingSignal(int) {
  g_stop_requested = true;
}

void onHangUp(int) {
  g_rescan_requested = true;
}

/// Unless the process was started with the signal ignored: then it stays so.
void handle(int signal_number, void (*handler)(int), int flags = 0) {
  struct sigaction inherited = {};
  sigaction(signal_number, nullptr, &inherited);
  if (inherited.sa_handler == SIG_IGN) return;
  struct sigaction action = {};
  action.sa_handler = handler;
  action.sa_flags = flags;
  sigaction(signal_number, &action, nullptr);
}

/// Whether the process has a controlling terminal; one that was hung up cannot be opened.
bool hasTerminal() {
  const int terminal = open("/dev/tty", O_RDONLY | O_NOCTTY | O_CLOEXEC);
  if (terminal >= 0) close(terminal);
  return terminal >= 0;
}

}  // namespace

void installSignalHandlers() {
  for (const int number : kLeavingSignals) handle(number, onLeavingSignal);
  for (const int number : kEndingSignals) handle(number, onEndingSignal);
  for (const int number : kFailingSignals) handle(number, SIG_IGN);
  g_had_terminal = hasTerminal();
  handle(SIGHUP, onHangUp, SA_RESTART);  // no hurry: it is looked at between blocks
}

bool stopRequested() {
  return g_stop_requested;
}

void requestStop() {
  g_stop_requested = true;
}

void requestRescan() {
  g_rescan_requested = true;
}

bool takeRescanRequest() {
  if (!g_rescan_requested || !g_rescan_requested.exchange(false)) return false;
  if (!g_had_terminal || hasTerminal()) return true;
  requestStop();
  return false;
}

void leaveSignalsToOtherThreads() {
  sigset_t others = {};
  sigfillset(&others);
  for (const int number : kCrashes) sigdelset(&others, number);
  pthread_sigmask(SIG_BLOCK, &others, nullptr);
}

void setTidyBeforeExit(void (*tidy)()) {
  g_tidy = tidy;
}

}  // namespace pelagrim_host
