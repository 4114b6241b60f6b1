#include "host/process/text_output.h"

#include <fmt/format.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstring>
#include <mutex>
#include <optional>
#include <stdexcept>

#include "host/process/signals.h"

namespace pelagrim_host {
namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kPatience = std::chrono::seconds(2);  // after an orderly end has been asked for
constexpr int kNapMs = 50;                           // between two looks at that request

std::mutex g_failure_mutex;
std::string g_failure;  ///< the first one; empty if there is none

// By descriptor; only those of standard output and standard error are ever set.
std::array<std::atomic<bool>, 3> g_given_up = {};

bool isGivenUp(int descriptor) {
  return descriptor > STDIN_FILENO && descriptor <= STDERR_FILENO &&
         g_given_up[static_cast<size_t>(descriptor)];
}

/// Both streams may lead to one place.
void giveUp(int descriptor) {
  struct stat given_up = {};
  struct stat other = {};
  fstat(descriptor, &given_up);
  for (const int stream : {STDOUT_FILENO, STDERR_FILENO}) {
    const bool is_same = fstat(stream, &other) == 0 && other.st_dev == given_up.st_dev &&
                         other.st_ino == given_up.st_ino;
    if (is_same) g_given_up[static_cast<size_t>(stream)] = true;
  }
}

/// What is behind a descriptor, as far as it matters for writing without waiting in the system.
struct Sink {
  explicit Sink(int written_to) : descriptor(written_to) {
    struct stat facts = {};
    if (fstat(descriptor, &facts) != 0) return;
    is_socket = S_ISSOCK(facts.st_mode);
    // Of a pipe that has room for anything, PIPE_BUF is free; a terminal gives no such promise, but
    // takes at least half a block of 256.
    if (isatty(descriptor) == 1) max_piece = 128;
    if (S_ISREG(facts.st_mode)) max_piece = SIZE_MAX;
  }

  /// As write(2), a piece of the text.
  ssize_t put(std::string_view text) const {
    text = text.substr(0, max_piece);
    if (is_socket) return send(descriptor, text.data(), text.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    return ::write(descriptor, text.data(), text.size());
  }

  int descriptor;
  bool is_socket = false;
  size_t max_piece = PIPE_BUF;
};

bool isPassing(int error) {
  return error == EINTR || error == EAGAIN || error == EWOULDBLOCK;
}

/// Waits until a write would be taken or fail. Returns whether it would; if not, it is given up.
bool hasRoom(int descriptor) {
  std::optional<Clock::time_point> leaving_since;
  pollfd waiting = {descriptor, POLLOUT, 0};
  while (poll(&waiting, 1, kNapMs) <= 0) {
    if (!stopRequested()) continue;
    const auto now = Clock::now();
    if (!leaving_since) leaving_since = now;
    if (now - *leaving_since >= kPatience) return false;
  }
  return true;
}

/// Returns 0 or the error; ETIMEDOUT when the text, or the rest of it, has been given up.
int writeWhole(int descriptor, std::string_view text) {
  const Sink sink(descriptor);
  while (!text.empty()) {
    if (!hasRoom(descriptor)) return ETIMEDOUT;
    const ssize_t taken = sink.put(text);
    if (taken > 0) text.remove_prefix(static_cast<size_t>(taken));
    if (taken < 0 && !isPassing(errno)) return errno;
    if (taken <= 0) poll(nullptr, 0, 1);  // the room went to somebody else
  }
  return 0;
}

}  // namespace

void TextOutput::write(std::string_view text) {
  const int descriptor = fileno(stream_);
  if (!isGivenUp(descriptor)) report(writeWhole(descriptor, text));
}

void TextOutput::waitForRoom() {
  const int descriptor = fileno(stream_);
  if (!isGivenUp(descriptor) && !hasRoom(descriptor)) report(ETIMEDOUT);
}

void TextOutput::report(int error) {
  if (error == ETIMEDOUT) giveUp(fileno(stream_));
  if (error == 0 || error == EPIPE || stream_ != stdout) return;
  reportOutputFailure(error == ETIMEDOUT ? "nobody has read it, so the last lines were left out"
                                         : std::strerror(error));
}

void reportOutputFailure(const std::string& why) {
  const std::lock_guard lock(g_failure_mutex);
  if (g_failure.empty()) g_failure = why;
}

void requireOutput() {
  const std::lock_guard lock(g_failure_mutex);
  if (g_failure.empty()) return;
  throw std::runtime_error(fmt::format("cannot write to standard output: {}", g_failure));
}

}  // namespace pelagrim_host
