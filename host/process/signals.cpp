#include "host/process/signals.h"

#include <fcntl.h>
#include <unistd.h>
#include <csignal>

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

void onStopSignal(int signal_number) {
  if (!g_stop_requested.exchange(true)) return;
  if (void (*const tidy)() = g_tidy) tidy();
  _exit(128 + signal_number);
}

void onHangUp(int) {
  g_rescan_requested = true;
}

/// Whether the process has a controlling terminal; one that was hung up cannot be opened.
bool hasTerminal() {
  const int terminal = open("/dev/tty", O_RDONLY | O_NOCTTY | O_CLOEXEC);
  if (terminal >= 0) close(terminal);
  return terminal >= 0;
}

}  // namespace

void installSignalHandlers() {
  struct sigaction action = {};
  action.sa_handler = onStopSignal;
  sigaction(SIGINT, &action, nullptr);
  sigaction(SIGTERM, &action, nullptr);
  action.sa_handler = SIG_IGN;
  sigaction(SIGPIPE, &action, nullptr);
  g_had_terminal = hasTerminal();
  struct sigaction inherited = {};
  sigaction(SIGHUP, nullptr, &inherited);
  action.sa_handler = onHangUp;
  action.sa_flags = SA_RESTART;  // no hurry: it is looked at between blocks
  if (inherited.sa_handler != SIG_IGN) sigaction(SIGHUP, &action, nullptr);  // else: nohup
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

void setTidyBeforeExit(void (*tidy)()) {
  g_tidy = tidy;
}

}  // namespace pelagrim_host
