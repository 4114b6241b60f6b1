#include "host/raw_recording.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "host/signals.h"

namespace pelagrim_host {
namespace {

/// Waits for something to read. False when the user asks for the end first: a signal that arrives
/// just before the wait does not interrupt it, hence the short one.
bool waitForBytes(int file) {
  constexpr int kWaitMs = 100;
  pollfd waiting = {file, POLLIN, 0};
  while (!stopRequested()) {
    if (poll(&waiting, 1, kWaitMs) > 0) return true;
  }
  return false;
}

}  // namespace

RawRecording::RawRecording(const std::filesystem::path& path, const SampleFormat& format,
                           double rate_hz, double centre_hz, RemarkSink remark)
    : name_(path == "-" ? "standard input" : path.filename().string()),
      format_(format),
      rate_hz_(rate_hz),
      centre_hz_(centre_hz),
      remark_(std::move(remark)),
      file_(path == "-" ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
  if (file_ < 0) {
    throw SourceError(fmt::format("cannot open {}: {}", path.string(), std::strerror(errno)));
  }
  struct stat status = {};
  const bool known = fstat(file_, &status) == 0;
  if (known && S_ISDIR(status.st_mode)) {
    close(file_);
    throw SourceError(fmt::format("{} is a directory; name a recording", path.string()));
  }
  seekable_ = known && S_ISREG(status.st_mode);
}

RawRecording::~RawRecording() {
  if (file_ != STDIN_FILENO) close(file_);
}

size_t RawRecording::read(std::span<std::complex<float>> block) {
  bytes_.resize(block.size() * format_.sampleBytes());
  const size_t got = readBytes(bytes_);
  const size_t samples = got / format_.sampleBytes();
  const size_t left_over = got % format_.sampleBytes();
  if (left_over != 0 && !stopRequested()) {
    remark_(fmt::format("{}: the last {} of its bytes make no whole {} sample and are dropped",
                        name_, left_over, format_.name));
  }
  // An array of complex numbers is an array of their parts.
  format_.convert(bytes_.data(), 2 * samples, reinterpret_cast<float*>(block.data()));
  return samples;
}

uint64_t RawRecording::skip(uint64_t samples) {
  if (!seekable_) return IqSource::skip(samples);
  struct stat status = {};
  const off_t here = lseek(file_, 0, SEEK_CUR);
  if (here < 0 || fstat(file_, &status) != 0) return IqSource::skip(samples);
  const uint64_t waiting =
      static_cast<uint64_t>(std::max<off_t>(status.st_size - here, 0)) / format_.sampleBytes();
  const uint64_t skipped = std::min(samples, waiting);
  lseek(file_, static_cast<off_t>(skipped * format_.sampleBytes()), SEEK_CUR);
  return skipped;
}

/// Fills `bytes` as far as the stream goes.
size_t RawRecording::readBytes(std::span<std::byte> bytes) {
  size_t got = 0;
  while (got < bytes.size()) {
    if (!seekable_ && !waitForBytes(file_)) break;
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

}  // namespace pelagrim_host
