#include "host/sources/byte_stream.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <utility>
#include <vector>

#include "host/sources/iq_source.h"

namespace pelagrim_host {
namespace {

constexpr int kPipeBytes = 1 << 20;  // the maximum for ordinary users

// Opened without blocking: opening a named pipe that nobody writes to yet would block the program
// where it could not be asked to end. Reads do their own waiting.
class FileBytes final : public ByteStream {
 public:
  FileBytes(const std::filesystem::path& path, StopFunction stop,
            std::optional<double> stall_seconds)
      : stop_(std::move(stop)),
        stall_seconds_(stall_seconds),
        name_(path == "-" ? "standard input" : path.string()),
        file_(path == "-" ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {
    if (file_ < 0) {
      throw SourceError(fmt::format("cannot open {}: {}", name_, std::strerror(errno)));
    }
    struct stat status = {};
    const bool known = fstat(file_, &status) == 0;
    if (known && S_ISDIR(status.st_mode)) {
      closeFile();
      throw SourceError(fmt::format("{} is a directory; name a recording", name_));
    }
    seekable_ = known && S_ISREG(status.st_mode);
    if (seekable_) size_ = static_cast<uint64_t>(status.st_size);
    // More room for the writer while a dwell is evaluated, if the system allows it.
    if (known && S_ISFIFO(status.st_mode)) fcntl(file_, F_SETPIPE_SZ, kPipeBytes);
  }
  ~FileBytes() override { closeFile(); }

  size_t read(std::span<std::byte> bytes) override {
    size_t got = 0;
    while (got < bytes.size()) {
      if (!seekable_ && !waitForBytes()) break;
      const ssize_t count = ::read(file_, bytes.data() + got, bytes.size() - got);
      if (count == 0) break;
      if (count > 0) {
        got += static_cast<size_t>(count);
      } else if (errno != EINTR && errno != EAGAIN) {
        throw SourceError(fmt::format("cannot read {}: {}", name_, std::strerror(errno)));
      }
    }
    return got;
  }

  uint64_t skip(uint64_t count) override {
    const off_t here = seekable_ ? lseek(file_, 0, SEEK_CUR) : -1;
    if (here < 0) return ByteStream::skip(count);
    const uint64_t waiting = *size_ - std::min(*size_, static_cast<uint64_t>(here));
    const uint64_t skipped = std::min(count, waiting);
    lseek(file_, static_cast<off_t>(skipped), SEEK_CUR);
    return skipped;
  }

  std::optional<uint64_t> size() const override { return size_; }

 private:
  /// Waits for something to read. False if it has to stop first. The wait is short because a signal
  /// that arrives just before it does not interrupt it.
  bool waitForBytes() const {
    using Clock = std::chrono::steady_clock;
    constexpr int kWaitMs = 100;
    const auto begun = Clock::now();
    pollfd waiting = {file_, POLLIN, 0};
    while (!stop_()) {
      if (poll(&waiting, 1, kWaitMs) > 0) return true;
      const std::chrono::duration<double> waited = Clock::now() - begun;
      if (stall_seconds_ && waited.count() >= *stall_seconds_) {
        throw SourceError(fmt::format("{}: nothing has come for {:g} s", name_, *stall_seconds_));
      }
    }
    return false;
  }

  void closeFile() {
    if (file_ != STDIN_FILENO) close(file_);
  }

  StopFunction stop_;
  std::optional<double> stall_seconds_;
  std::string name_;
  int file_;
  bool seekable_ = false;
  std::optional<uint64_t> size_;
};

}  // namespace

uint64_t ByteStream::skip(uint64_t count) {
  std::vector<std::byte> passed(std::min<uint64_t>(count, 1 << 18));
  uint64_t skipped = 0;
  while (skipped < count) {
    const auto wanted = std::min<uint64_t>(count - skipped, passed.size());
    const size_t got = read(std::span(passed).first(wanted));
    skipped += got;
    if (got < wanted) break;
  }
  return skipped;
}

std::unique_ptr<ByteStream> openFileBytes(const std::filesystem::path& path, StopFunction stop,
                                          std::optional<double> stall_seconds) {
  return std::make_unique<FileBytes>(path, std::move(stop), stall_seconds);
}

}  // namespace pelagrim_host
