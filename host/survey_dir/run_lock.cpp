#include "host/survey_dir/run_lock.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <stdexcept>
#include <string_view>

#include "host/process/command_errors.h"
#include "host/text/display_text.h"
#include "host/text/quantity_text.h"

namespace pelagrim_host {
namespace {

std::filesystem::path lockPath(const std::filesystem::path& survey_dir) {
  return survey_dir / "survey.lock";
}

// The open file holds the lock, not the process: closing another descriptor of the file does not
// free it. Returns 0 or the error.
int lockFile(int file) {
  struct flock lock = {};
  lock.l_type = F_WRLCK;
  lock.l_whence = SEEK_SET;
  return fcntl(file, F_OFD_SETLK, &lock) == 0 ? 0 : errno;
}

/// What the holder has written about itself.
std::string holderText(int file) {
  std::array<char, 200> text = {};
  const ssize_t length = pread(file, text.data(), text.size(), 0);
  std::string_view holder(text.data(), length > 0 ? static_cast<size_t>(length) : 0);
  holder = holder.substr(0, holder.find('\n'));
  return holder.empty() ? "another run" : displayText(holder);
}

std::string ownText() {
  std::array<char, 256> host = {};
  gethostname(host.data(), host.size() - 1);
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  const auto now_ms = std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
  return fmt::format("process {} on {}, running since {}\n", getpid(), host.data(),
                     formatMoment(now_ms));
}

}  // namespace

RunLock::RunLock(const std::filesystem::path& survey_dir) {
  const auto path = lockPath(survey_dir);
  file_ = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0600);
  if (file_ < 0) {
    const bool is_foreign = errno == EACCES;
    throw std::runtime_error(fmt::format(
        "cannot lock {}: {}: {}{}", survey_dir.string(), path.string(), std::strerror(errno),
        is_foreign ? "; after a run with sudo the files there belong to root: give them back with "
                     "chown, or name another directory with --dir"
                   : ""));
  }
  const int error = lockFile(file_);
  if (error == EAGAIN || error == EACCES) {
    const std::string holder = holderText(file_);
    close(file_);
    throw TryAgainLater(fmt::format(
        "{} is being surveyed by {}; wait for it to end, or name another directory with --dir",
        survey_dir.string(), holder));
  }
  if (error != 0) {
    lack_ = fmt::format("{} cannot be locked ({}): make sure that only one run at a time uses it",
                        survey_dir.string(), std::strerror(error));
    return;
  }
  const std::string text = ownText();
  // Only for the other run's message, so a full disk is no reason to stop.
  [[maybe_unused]] const bool told =
      ftruncate(file_, 0) == 0 && pwrite(file_, text.data(), text.size(), 0) > 0;
}

RunLock::~RunLock() {
  close(file_);
}

}  // namespace pelagrim_host
