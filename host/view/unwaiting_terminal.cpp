#include "host/view/unwaiting_terminal.h"

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>
#include <cerrno>

#include <array>

namespace pelagrim_host {
namespace {

// A terminal that has room for anything takes this much at once.
constexpr size_t kSmallPiece = 128;

int openAgain(const char* name) {
  return ::open(name, O_WRONLY | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
}

/// As write(2) on the inherited terminal, but nothing is written where that would wait.
ssize_t sendInherited(std::string_view text) {
  pollfd terminal = {STDOUT_FILENO, POLLOUT, 0};
  if (poll(&terminal, 1, 0) != 1) {
    errno = EAGAIN;  // poll leaves it as it was when it waits for nothing
    return -1;
  }
  text = text.substr(0, kSmallPiece);
  return ::write(STDOUT_FILENO, text.data(), text.size());
}

}  // namespace

void UnwaitingTerminal::open() {
  std::array<char, 256> name = {};
  if (ttyname_r(STDOUT_FILENO, name.data(), name.size()) == 0) descriptor_ = openAgain(name.data());
  // Its name may be unknown here (a container), or belong to another user (after su).
  const bool controls_us = tcgetsid(STDOUT_FILENO) == getsid(0);
  if (descriptor_ < 0 && controls_us) descriptor_ = openAgain("/dev/tty");
}

void UnwaitingTerminal::close() {
  if (descriptor_ >= 0) ::close(descriptor_);
  descriptor_ = -1;
}

size_t UnwaitingTerminal::send(std::string_view text) const {
  size_t sent = 0;
  while (sent < text.size()) {
    const auto rest = text.substr(sent);
    const ssize_t taken =
        descriptor_ >= 0 ? ::write(descriptor_, rest.data(), rest.size()) : sendInherited(rest);
    if (taken < 0 && errno == EINTR) continue;
    if (taken <= 0) break;
    sent += static_cast<size_t>(taken);
  }
  return sent;
}

}  // namespace pelagrim_host
