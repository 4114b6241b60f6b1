#include "host/sources/wav_file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "host/sources/iq_source.h"

namespace pelagrim_host {
namespace {

constexpr uint64_t kRateByte = 4;  // in the chunk "fmt "

// libsndfile lets the samples run to the end of the file if their length is 0 and the total length
// is 8, as one recorder leaves them. Others leave other numbers there, so it is shown these.
constexpr sf_count_t kAllLengthByte = 4;
constexpr unsigned char kAllLengthShown[4] = {8, 0, 0, 0};
constexpr unsigned char kDataLengthShown[4] = {0, 0, 0, 0};

/// Puts `shown` for what was read where `from` lies in the `got` bytes read at `byte`.
void show(const unsigned char (&shown)[4], sf_count_t from, void* bytes, sf_count_t byte,
          sf_count_t got) {
  for (sf_count_t i = std::max(byte, from); i < std::min(byte + got, from + 4); ++i) {
    static_cast<unsigned char*>(bytes)[i - byte] = shown[i - from];
  }
}

WavFile::Position& positionOf(void* user) {
  return *static_cast<WavFile::Position*>(user);
}

sf_count_t fileLength(void* user) {
  struct stat status = {};
  return fstat(positionOf(user).file, &status) == 0 ? status.st_size : 0;
}

sf_count_t seekFile(sf_count_t offset, int whence, void* user) {
  sf_count_t& byte = positionOf(user).byte;
  if (whence == SEEK_CUR) offset += byte;
  if (whence == SEEK_END) offset += fileLength(user);
  return byte = std::max<sf_count_t>(offset, 0);
}

sf_count_t readFile(void* bytes, sf_count_t count, void* user) {
  auto& [file, byte, data_length_byte] = positionOf(user);
  const ssize_t got = pread(file, bytes, static_cast<size_t>(count), byte);
  show(kAllLengthShown, kAllLengthByte, bytes, byte, got);
  if (data_length_byte > 0) show(kDataLengthShown, data_length_byte, bytes, byte, got);
  byte += std::max<ssize_t>(got, 0);
  return std::max<ssize_t>(got, 0);
}

sf_count_t tellFile(void* user) {
  return positionOf(user).byte;
}

}  // namespace

WavFile::WavFile(const std::filesystem::path& path, const std::string& name)
    : position_{open(path.c_str(), O_RDONLY | O_CLOEXEC), 0, 0},
      chunks_(position_.file),
      sound_(nullptr, sf_close) {
  if (position_.file < 0) {
    throw SourceError(fmt::format("cannot open {}: {}", path.string(), std::strerror(errno)));
  }
  struct stat status = {};
  if (fstat(position_.file, &status) == 0 && S_ISDIR(status.st_mode)) {
    close(position_.file);
    throw SourceError(fmt::format("{} is a directory; name a recording", path.string()));
  }
  // A separate descriptor, because the library closes it on failure, asked to or not.
  const int for_library = fcntl(position_.file, F_DUPFD_CLOEXEC, 0);
  sound_.reset(sf_open_fd(for_library, SFM_READ, &info_, SF_TRUE));
  if (sound_ && lengthIsUnknown()) {
    SF_VIRTUAL_IO mended = {fileLength, seekFile, readFile, nullptr, tellFile};
    info_ = {};
    sound_.reset(sf_open_virtual(&mended, SFM_READ, &info_, &position_));
  }
  if (sound_) return;
  std::string reason = sf_strerror(nullptr);
  while (!reason.empty() && (reason.back() == '.' || reason.back() == '\n')) reason.pop_back();
  uint32_t rate_hz = 0;
  const std::string format = chunks_.content("fmt ");
  if (format.size() >= kRateByte + 4) std::memcpy(&rate_hz, format.data() + kRateByte, 4);
  if (reason.starts_with("Internal error") && (rate_hz == 0 || rate_hz > INT32_MAX)) {
    reason = fmt::format("its header gives a sample rate of {} Hz", rate_hz);
  }
  close(position_.file);
  throw SourceError(fmt::format("{}: cannot be read as WAV: {}", name, reason));
}

WavFile::~WavFile() {
  sound_.reset();
  close(position_.file);
}

bool WavFile::lengthIsUnknown() {
  const auto promised = chunks_.promisedBytes();
  if (info_.frames == 0 && promised == 0U) return true;
  const auto data = chunks_.find("data");
  if (!data) return false;
  const uint64_t data_bytes = std::min(promised.value_or(data->bytes), chunks_.fileBytes());
  const uint64_t after = chunks_.strayBytes(data->first_byte + data_bytes);
  if (promised || after == 0) {
    bytes_after_ = after;
    return false;
  }
  position_.data_length_byte = static_cast<sf_count_t>(data->first_byte - 4);
  return true;
}

}  // namespace pelagrim_host
