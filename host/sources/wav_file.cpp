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

SF_CHUNK_ITERATOR* findChunk(SNDFILE* sound, const char* id, SF_CHUNK_INFO& chunk) {
  std::memcpy(chunk.id, id, 4);
  chunk.id_size = 4;
  SF_CHUNK_ITERATOR* const found = sf_get_chunk_iterator(sound, &chunk);
  const bool has_size = found != nullptr && sf_get_chunk_size(found, &chunk) == SF_ERR_NO_ERROR;
  return has_size ? found : nullptr;
}

// libsndfile lets the samples run to the file's end where their length is 0 and that of all is 8, as
// one recorder leaves it; others leave another number there. So it is shown that 8.
constexpr sf_count_t kLengthByte = 4;
constexpr unsigned char kLengthShown[4] = {8, 0, 0, 0};

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
  auto& [file, byte] = positionOf(user);
  const ssize_t got = pread(file, bytes, static_cast<size_t>(count), byte);
  for (sf_count_t i = std::max(byte, kLengthByte); i < std::min(byte + got, kLengthByte + 4); ++i) {
    static_cast<unsigned char*>(bytes)[i - byte] = kLengthShown[i - kLengthByte];
  }
  byte += std::max<ssize_t>(got, 0);
  return std::max<ssize_t>(got, 0);
}

sf_count_t tellFile(void* user) {
  return positionOf(user).byte;
}

}  // namespace

WavFile::WavFile(const std::filesystem::path& path, const std::string& name)
    : position_{open(path.c_str(), O_RDONLY | O_CLOEXEC), 0}, sound_(nullptr, sf_close) {
  if (position_.file < 0) {
    throw SourceError(fmt::format("cannot open {}: {}", path.string(), std::strerror(errno)));
  }
  sound_.reset(sf_open_fd(position_.file, SFM_READ, &info_, SF_FALSE));
  if (sound_ && info_.frames == 0 && promisedBytes() == 0U) {
    SF_VIRTUAL_IO mended = {fileLength, seekFile, readFile, nullptr, tellFile};
    info_ = {};
    sound_.reset(sf_open_virtual(&mended, SFM_READ, &info_, &position_));
  }
  if (sound_) return;
  std::string reason = sf_strerror(nullptr);
  while (!reason.empty() && (reason.back() == '.' || reason.back() == '\n')) reason.pop_back();
  close(position_.file);
  throw SourceError(fmt::format("{}: cannot be read as WAV: {}", name, reason));
}

WavFile::~WavFile() {
  sound_.reset();
  close(position_.file);
}

std::optional<uint64_t> WavFile::promisedBytes() const {
  // What streaming writers put there: the most that 32 bits hold, signed or not, less a header.
  constexpr uint64_t kUnknownFrom = 0x7FFF0000;
  SF_CHUNK_INFO data = {};
  if (findChunk(sound_.get(), "data", data) == nullptr) return std::nullopt;
  if (data.datalen < kUnknownFrom) return data.datalen;
  const auto sizes = chunk("ds64");
  if (!sizes || sizes->size() < 16) return std::nullopt;
  uint64_t bytes = 0;
  std::memcpy(&bytes, sizes->data() + 8, 8);  // little-endian, as this machine is
  return bytes;
}

std::optional<std::string> WavFile::chunk(const char (&id)[5]) const {
  constexpr uint32_t kMostBytes = 4096;
  SF_CHUNK_INFO chunk = {};
  SF_CHUNK_ITERATOR* const found = findChunk(sound_.get(), id, chunk);
  if (found == nullptr) return std::nullopt;
  std::string bytes(std::min(chunk.datalen, kMostBytes), '\0');
  chunk.datalen = static_cast<uint32_t>(bytes.size());
  chunk.data = bytes.data();
  if (sf_get_chunk_data(found, &chunk) != SF_ERR_NO_ERROR) return std::nullopt;
  return bytes;
}

}  // namespace pelagrim_host
