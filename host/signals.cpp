#include "host/signals.h"

#include <unistd.h>
#include <csignal>

#include <atomic>

namespace pelagrim_host {
namespace {

std::atomic<bool> g_stop_requested = false;
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler may not take a lock");

void onStopSignal(int signal_number) {
  if (g_stop_requested.exchange(true)) _exit(128 + signal_number);
}

}  // namespace

void installSignalHandlers() {
  struct sigaction action = {};
  action.sa_handler = onStopSignal;
  sigaction(SIGINT, &action, nullptr);
  sigaction(SIGTERM, &action, nullptr);
  action.sa_handler = SIG_IGN;
  sigaction(SIGPIPE, &action, nullptr);
}

bool stopRequested() {
  return g_stop_requested;
}

}  // namespace pelagrim_host
