#include "host/sources/wav_recording.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <vector>

#include "host/quantity_text.h"

namespace pelagrim_host {
namespace {

constexpr const char* kHeader = "the header";
constexpr const char* kAuxi = "the auxi chunk";

uint32_t littleEndian(std::span<const std::byte> bytes) {
  uint32_t value = 0;
  for (size_t i = bytes.size(); i > 0; --i)
    value = (value << 8U) | std::to_integer<uint32_t>(bytes[i - 1]);
  return value;
}

/// The name of a sample format of WAV files that I/Q comes in, or null.
const char* sampleKind(int format) {
  switch (format & SF_FORMAT_SUBMASK) {
    case SF_FORMAT_PCM_U8:
      return "8 bit";
    case SF_FORMAT_PCM_16:
      return "16 bit";
    case SF_FORMAT_PCM_24:
      return "24 bit";
    case SF_FORMAT_PCM_32:
      return "32 bit";
    case SF_FORMAT_FLOAT:
      return "32 bit float";
    case SF_FORMAT_DOUBLE:
      return "64 bit float";
    default:
      return nullptr;
  }
}

AuxiChunk readAuxi(SNDFILE* sound) {
  constexpr uint32_t kMostBytes = 4096;  // a usual one has 64 to 164
  SF_CHUNK_INFO chunk = {};
  std::memcpy(chunk.id, "auxi", 4);
  chunk.id_size = 4;
  SF_CHUNK_ITERATOR* const found = sf_get_chunk_iterator(sound, &chunk);
  if (found == nullptr || sf_get_chunk_size(found, &chunk) != SF_ERR_NO_ERROR) return {};
  std::vector<std::byte> bytes(std::min<uint32_t>(chunk.datalen, kMostBytes));
  chunk.datalen = static_cast<uint32_t>(bytes.size());
  chunk.data = bytes.data();
  if (sf_get_chunk_data(found, &chunk) != SF_ERR_NO_ERROR) return {};
  return parseAuxi(bytes);
}

}  // namespace

AuxiChunk parseAuxi(std::span<const std::byte> chunk) {
  constexpr size_t kCentreByte = 32;
  AuxiChunk auxi;
  if (chunk.size() >= 16) {
    std::array<uint32_t, 8> time = {};
    for (size_t i = 0; i < time.size(); ++i) time[i] = littleEndian(chunk.subspan(2 * i, 2));
    const auto [year, month, weekday, day, hour, minute, second, millisecond] = time;
    const auto start = parseMoment(fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}.{:03}", year,
                                               month, day, hour, minute, second, millisecond));
    if (start && *start > 0) auxi.start_unix_ms = start;
  }
  if (chunk.size() >= kCentreByte + 4) {
    const uint32_t centre_hz = littleEndian(chunk.subspan(kCentreByte, 4));
    if (centre_hz != 0) auxi.centre_hz = centre_hz;
  }
  return auxi;
}

WavRecording::WavRecording(const std::filesystem::path& path, const RecordingFacts& told)
    : Recording(path.filename().string()), sound_(nullptr, sf_close) {
  file_ = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file_ < 0) {
    throw SourceError(fmt::format("cannot open {}: {}", path.string(), std::strerror(errno)));
  }
  try {
    sound_.reset(sf_open_fd(file_, SFM_READ, &info_, SF_FALSE));
    if (!sound_) {
      std::string reason = sf_strerror(nullptr);
      while (!reason.empty() && (reason.back() == '.' || reason.back() == '\n')) reason.pop_back();
      throw SourceError(fmt::format("{}: cannot be read as WAV: {}", name(), reason));
    }
    const char* const kind = sampleKind(info_.format);
    if (kind == nullptr) {
      throw SourceError(
          fmt::format("{}: its samples are coded in a way that I/Q is not; 8, 16, 24, 32 bit and "
                      "float are read",
                      name()));
    }
    if (info_.channels != 2) {
      throw SourceError(fmt::format("{}: it has {} channel{}; I/Q takes two", name(),
                                    info_.channels, info_.channels == 1 ? "" : "s"));
    }
    RecordingFacts facts;
    facts.format = {fmt::format("WAV {}", kind), kHeader};
    facts.rate_hz = {static_cast<double>(info_.samplerate), kHeader};
    const AuxiChunk auxi = readAuxi(sound_.get());
    if (auxi.centre_hz) facts.centre_hz = {*auxi.centre_hz, kAuxi};
    if (auxi.start_unix_ms) facts.start_unix_ms = {*auxi.start_unix_ms, kAuxi};
    facts = firstKnown(told, facts);
    setFacts(firstKnown(facts, factsOfName(name())));
  } catch (...) {
    sound_.reset();
    close(file_);
    throw;
  }
}

WavRecording::~WavRecording() {
  sound_.reset();
  close(file_);
}

size_t WavRecording::read(std::span<std::complex<float>> block) {
  auto* const components = reinterpret_cast<float*>(block.data());
  const auto frames =
      sf_readf_float(sound_.get(), components, static_cast<sf_count_t>(block.size()));
  if (sf_error(sound_.get()) != SF_ERR_NO_ERROR) {
    throw SourceError(fmt::format("cannot read {}: {}", name(), sf_strerror(sound_.get())));
  }
  const auto samples = static_cast<size_t>(std::max<sf_count_t>(frames, 0));
  if ((info_.format & SF_FORMAT_SUBMASK) == SF_FORMAT_PCM_U8) {
    // Bytes have their zero between 127 and 128, as in raw cu8; the library puts it at 128.
    for (size_t i = 0; i < 2 * samples; ++i) components[i] += 0.5F / 128.0F;
  }
  return samples;
}

uint64_t WavRecording::skip(uint64_t samples) {
  const sf_count_t here = sf_seek(sound_.get(), 0, SF_SEEK_CUR);
  if (here < 0 || here > info_.frames) return Recording::skip(samples);
  const uint64_t skipped = std::min(samples, static_cast<uint64_t>(info_.frames - here));
  if (sf_seek(sound_.get(), static_cast<sf_count_t>(skipped), SF_SEEK_CUR) < 0) {
    throw SourceError(fmt::format("cannot read {}: {}", name(), sf_strerror(sound_.get())));
  }
  return skipped;
}

std::optional<uint64_t> WavRecording::lengthSamples() const {
  return static_cast<uint64_t>(std::max<sf_count_t>(info_.frames, 0));
}

}  // namespace pelagrim_host
