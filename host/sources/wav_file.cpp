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

// What streaming writers put for a length they cannot know: the most that 32 bits hold, signed or
// not, less a header.
constexpr uint64_t kUnknownFrom = 0x7FFF0000;

constexpr uint64_t kRateByte = 12;  // in the chunk "fmt "

/// A number of 32 bits at `byte`; 0 past the end.
uint32_t numberAt(int file, uint64_t byte) {
  uint32_t number = 0;  // little-endian, as this machine is
  const bool is_there = pread(file, &number, 4, static_cast<off_t>(byte)) == 4;
  return is_there ? number : 0;
}

/// The four letters at `byte` that name a chunk; empty where they are none.
std::string tagAt(int file, uint64_t byte) {
  std::string tag(4, '\0');
  const bool is_there = pread(file, tag.data(), 4, static_cast<off_t>(byte)) == 4;
  const auto is_printable = [](char c) { return c >= ' ' && c <= '~'; };
  return is_there && std::all_of(tag.begin(), tag.end(), is_printable) ? tag : "";
}

/// The byte behind a chunk that begins at `byte`; chunks are of even length.
uint64_t endOfChunk(int file, uint64_t byte) {
  const uint64_t length = numberAt(file, byte + 4);
  return byte + 8 + length + length % 2;
}

/// Where the chunk begins, which the library does not tell. 0: there is none.
uint64_t chunkBegin(int file, const char* id) {
  const std::string kind = tagAt(file, 0);
  if (kind != "RIFF" && kind != "RF64") return 0;
  for (uint64_t at = 12;; at = endOfChunk(file, at)) {
    const std::string tag = tagAt(file, at);
    if (tag == id) return at;
    if (tag.empty()) return 0;
  }
}

/// How many bytes follow the samples, which end at `end`, and are no chunks such as a title; none
/// where they are few.
uint64_t strayBytes(int file, uint64_t end, uint64_t file_bytes) {
  constexpr uint64_t kFewBytes = 4096;
  for (uint64_t at = end + end % 2; at + kFewBytes < file_bytes;) {
    const bool is_chunk = !tagAt(file, at).empty();
    at = endOfChunk(file, at);
    if (!is_chunk || at > file_bytes + 1) return file_bytes - end;
  }
  return 0;
}

// libsndfile lets the samples run to the file's end where their length is 0 and that of all is 8, as
// one recorder leaves it; others leave other numbers there. So it is shown these.
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
    : position_{open(path.c_str(), O_RDONLY | O_CLOEXEC), 0, 0}, sound_(nullptr, sf_close) {
  if (position_.file < 0) {
    throw SourceError(fmt::format("cannot open {}: {}", path.string(), std::strerror(errno)));
  }
  struct stat status = {};
  if (fstat(position_.file, &status) == 0 && S_ISDIR(status.st_mode)) {
    close(position_.file);
    throw SourceError(fmt::format("{} is a directory; name a recording", path.string()));
  }
  // One of its own, for where the library fails it closes it, asked to or not.
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
  const uint32_t rate_hz = numberAt(position_.file, chunkBegin(position_.file, "fmt ") + kRateByte);
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
  const auto promised = promisedBytes();
  if (info_.frames == 0 && promised == 0U) return true;
  const uint64_t begin = chunkBegin(position_.file, "data");
  if (begin == 0) return false;
  const uint32_t written = numberAt(position_.file, begin + 4);
  const auto file_bytes = static_cast<uint64_t>(fileLength(&position_));
  const uint64_t data_bytes = std::min(promised.value_or(written), file_bytes);
  const uint64_t after = strayBytes(position_.file, begin + 8 + data_bytes, file_bytes);
  if (promised || after == 0) {
    bytes_after_ = after;
    return false;
  }
  position_.data_length_byte = static_cast<sf_count_t>(begin + 4);
  return true;
}

std::optional<uint64_t> WavFile::promisedBytes() const {
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
